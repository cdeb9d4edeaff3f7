#include "discovery/scan_follow_up.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/thread.h"
#include "session/device_session.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// Compatibility: the fixed model name is part of the protocol of a scan. Every printer answers the query whatever its
// model, so any name that is always configured will do.
constexpr char kModel[] = "KM451";

constexpr int64_t kPauseWhileConnecting = 200;
constexpr int64_t kPauseWhileReceiving = 20;

// The port connects up to two times on opening, and up to four times while it sends.
constexpr uint32_t kConnectsWhileOpening = 2;
constexpr uint32_t kConnectsWhileSending = 4;
constexpr uint32_t kTimeToReceiveMs = 200;

const Bytes kAddressQuestion = {0x12, 0x43, 0x45, 0x52};  // DC2 "CER"

// The queries of one scan, processed by several threads.
class FollowUps {
 public:
  explicit FollowUps(ScanList* list) {
    std::map<uint32_t, size_t> known;
    for (ScanRecord& record : list->records()) {
      const auto address = record.Address();
      if (!address) {
        continue;
      }
      const auto [entry, is_new] = known.emplace(*address, questions_.size());
      if (is_new) {
        questions_.push_back({record.DescriptorOfPrinter(), {}, {}});
      }
      questions_[entry->second].records.push_back(&record);
    }
  }

  void Ask() {
    std::array<platform::Thread, kMostFollowUps - 1> others;
    for (size_t i = 0; i < others.size() && i + 1 < questions_.size(); ++i) {
      // If no thread can be started, this one processes more of them.
      static_cast<void>(others[i].Start([](void* all) { static_cast<FollowUps*>(all)->AskInTurn(); }, this));
    }
    AskInTurn();
    for (platform::Thread& other : others) {
      other.Join();
    }
  }

  void FillRecords() const {
    for (const Question& question : questions_) {
      for (ScanRecord* const record : question.records) {
        record->TakeReply(question.reply);
      }
    }
  }

 private:
  struct Question {
    std::string descriptor;
    std::vector<ScanRecord*> records;
    Bytes reply;
  };

  // Returns 0 when the time is up.
  uint32_t LeftMs() const { return kFollowUpLimitMs - std::min(platform::TickCount() - started_, kFollowUpLimitMs); }

  void AskInTurn() {
    for (size_t i = next_++; i < questions_.size() && LeftMs() > kTimeToReceiveMs; i = next_++) {
      try {
        Ask(&questions_[i]);
      } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the records stay as they are.
      }
    }
  }

  void Ask(Question* question) const {
    DeviceSession session;
    session.set_pause(kPauseWhileConnecting);
    session.LimitConnecting(ConnectLimitMs(kConnectsWhileOpening));
    if (session.Connect(kModel, question->descriptor) != VEXO_OK) {
      return;
    }
    session.set_pause(kPauseWhileReceiving);
    session.LimitConnecting(ConnectLimitMs(kConnectsWhileSending));
    if (session.Send(kAddressQuestion) == VEXO_OK) {
      session.Receive();
    }
    session.Disconnect();
    question->reply = session.received();
  }

  // Keeps the session within the time limit even if it makes that many attempts.
  uint32_t ConnectLimitMs(uint32_t attempts) const {
    const uint32_t left = LeftMs();
    return std::max((left - std::min(left, kTimeToReceiveMs)) / attempts, 1U);
  }

  std::vector<Question> questions_;
  std::atomic<size_t> next_{0};
  const uint32_t started_ = platform::TickCount();
};

}  // namespace

void AskScannedPrinters(ScanList* list) {
  FollowUps follow_ups(list);
  follow_ups.Ask();
  follow_ups.FillRecords();
}

}  // namespace vexo
