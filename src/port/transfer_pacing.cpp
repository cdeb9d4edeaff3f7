#include "port/transfer_pacing.h"

#include <algorithm>
#include <limits>

#include "platform/clock.h"

namespace vexo {
namespace {

constexpr uint32_t kLongestBudget = std::numeric_limits<uint32_t>::max() - 1;
constexpr uint32_t kReadAttempts = 5;
constexpr uint32_t kWaitSlackMs = 10;  // A shorter rest is not worth another wait.
constexpr uint32_t kLongestPauseMs = 100;

}  // namespace

uint32_t TransferBudget(uint32_t multiplier, uint32_t length, uint32_t constant) {
  const uint64_t product = uint64_t{multiplier} * length;
  return static_cast<uint32_t>(
      std::min<uint64_t>(std::min<uint64_t>(product, kLongestBudget) + constant, kLongestBudget));
}

WritePacing::WritePacing(const VexoPortTimeouts& timeouts, uint32_t length)
    : timeouts_(timeouts),
      budget_(TransferBudget(timeouts.writeMultiplier, length, timeouts.writeConstant)),
      wait_left_(budget_) {}

uint32_t WritePacing::StartTransfer() {
  started_ = platform::TickCount();
  return wait_left_;
}

void WritePacing::EndTransfer() { ChargeElapsed(); }

bool WritePacing::EndPartialTransfer(uint32_t chunk_length) {
  spent_ += ChargeElapsed();
  const uint32_t chunk_budget = TransferBudget(timeouts_.writeMultiplier, chunk_length, timeouts_.writeConstant);
  return spent_ <= chunk_budget && spent_ <= budget_;
}

uint32_t WritePacing::ChargeElapsed() {
  const uint32_t elapsed = platform::TickCount() - started_;
  wait_left_ -= std::min(elapsed, wait_left_);
  return elapsed;
}

ReadPacing::ReadPacing(const VexoPortTimeouts& timeouts, uint32_t length)
    : budget_(TransferBudget(timeouts.readMultiplier, length, timeouts.readConstant)),
      interval_(std::min(timeouts.readInterval, kLongestBudget)),
      wait_(budget_),
      attempts_left_(kReadAttempts),
      last_attempt_ended_(platform::TickCount()) {}

bool ReadPacing::StartAttempt() {
  if (attempts_left_ == 0) {
    return false;
  }
  --attempts_left_;
  attempt_started_ = platform::TickCount();
  return true;
}

bool ReadPacing::EndAttempt(uint32_t bytes) {
  const uint32_t now = platform::TickCount();
  const uint32_t elapsed = now - last_attempt_ended_;
  last_attempt_ended_ = now;
  attempt_took_ = now - attempt_started_;
  wait_ = uint64_t{elapsed} + kWaitSlackMs > wait_ ? 0 : wait_ - elapsed;
  spent_ += elapsed;

  const bool wait_used_up = bytes == 0 && wait_ == 0;
  const bool gap_too_long = data_flows_ && attempt_took_ > interval_;
  if (wait_used_up || spent_ > budget_ || gap_too_long) {
    return false;
  }
  data_flows_ = data_flows_ || bytes > 0;
  if (data_flows_) {
    wait_ = interval_;
  }
  return true;
}

void ReadPacing::Pause() const {
  if (!data_flows_ && attempt_took_ < kLongestPauseMs && attempts_left_ > 0) {
    platform::SleepMs(std::min(wait_ / attempts_left_, kLongestPauseMs));
  }
}

}  // namespace vexo
