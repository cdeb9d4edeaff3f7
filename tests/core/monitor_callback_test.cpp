// Job events that go to the host's callbacks.
#include <algorithm>
#include <stdexcept>

#include "monitor_fixture.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

// Callbacks carry no context, so what they are to do and what they saw stands here.
std::vector<std::string> g_events;
std::function<void()> g_during;

template <int kIndex>
void Note(int32_t event, int32_t task, uint32_t value) {
  g_events.push_back("ABC"[kIndex] + " "s + std::to_string(event) + " " + std::to_string(task) + " " +
                     std::to_string(value));
  if (kIndex == 0 && g_during) {
    g_during();
  }
}

MonitorCallback const kA = Note<0>;
MonitorCallback const kB = Note<1>;
MonitorCallback const kC = Note<2>;

class MonitorCallbacks : public MonitorTest {
 protected:
  MonitorCallbacks() {
    g_events.clear();
    g_during = nullptr;
    Open();
  }

  int64_t Add(MonitorCallback callback) {
    int64_t id = 0;
    EXPECT_EQ(0, AddReprintMonitorFun(monitor_, callback, &id));
    return id;
  }

  // The events that `bytes` cause.
  Texts Events(const std::string& bytes) {
    g_events.clear();
    Hear(bytes);
    return g_events;
  }
};

TEST_F(MonitorCallbacks, GetJobEventsInsteadOfTheQueue) {
  const int64_t id = Add(kA);
  EXPECT_EQ(id, Add(kA));
  EXPECT_EQ((Texts{"A 1 7 0", "A 2 7 4294967295"}), Events(Started("0007") + Ended("0007", 0xFFFFFFFF)));
  EXPECT_EQ("none", TakeReport());
  EXPECT_EQ(Texts{}, Events(Frame(0x102, "?0007") + ValueReply(1)));
  EXPECT_EQ(2U, monitor_->queue().size());
  EXPECT_EQ(0, RemoveReprintMonitorFun(monitor_, id));
  EXPECT_EQ(Texts{}, Events(Started("0008")));
  EXPECT_EQ("task 8 status 1", TakeReport());
}

TEST_F(MonitorCallbacks, MayAddAndRemoveCallbacksWhileTheyRun) {
  Add(kA);
  g_during = [&] {
    Add(kB);
    Add(kC);
  };
  EXPECT_EQ("A 1 7 0", Events(Started("0007")).front());
  EXPECT_EQ(3U, Events(Started("0008")).size());

  const int64_t ids[] = {Add(kA), Add(kB), Add(kC)};
  g_during = [&] {
    for (const int64_t id : ids) {
      EXPECT_EQ(0, RemoveReprintMonitorFun(monitor_, id));
    }
  };
  const Texts events = Events(Started("0007") + Started("0008"));
  // Those with lower ids came before it, none after it.
  EXPECT_EQ("A 1 7 0", events.back());
  EXPECT_EQ("task 8 status 1", TakeReport());
}

TEST_F(MonitorCallbacks, AreCalledInTheOrderOfTheirIdsWhateverTheyThrow) {
  g_during = [] { throw std::runtime_error("a host's own trouble"); };
  EXPECT_EQ(reinterpret_cast<intptr_t>(kC), Add(kC));
  std::vector<std::pair<int64_t, std::string>> expected = {
      {reinterpret_cast<intptr_t>(kC), "C 1 7 0"}, {Add(kA), "A 1 7 0"}, {Add(kB), "B 1 7 0"}};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ((Texts{expected[0].second, expected[1].second, expected[2].second}), Events(Started("0007")));
}

// An export that is called inside a callback receives and decodes, too; each report counts once, whoever decodes it.
TEST_F(MonitorCallbacks, MayCallExportsThatReceive) {
  SetReadTimeOut(monitor_, 0);
  Add(kA);
  uint32_t status = 0;
  int32_t result = 4711;
  g_during = [&] {
    if (g_events.size() == 1) {
      result = GetDeviceStatus(monitor_, &status);
    }
  };
  WillHear(Started("0001") + Started("0002") + Started("0003").substr(0, 15));
  WillHear(Started("0003").substr(15) + Ended("0001", 1));
  WillHear(ValueReply(5) + Ended("0002", 2));
  EXPECT_EQ((Texts{"A 1 1 0", "A 1 2 0", "A 1 3 0", "A 2 1 1", "A 2 2 2"}), Events(""));
  EXPECT_EQ(0, result);
  EXPECT_EQ(~5U, status);
}

TEST_F(MonitorCallbacks, MayCloseTheWork) {
  Add(kA);
  g_during = [&] { EXPECT_EQ(0, CloseReprintMonitorWork(monitor_)); };
  EXPECT_EQ(Texts{"A 1 1 0"}, Events(Started("0001") + Started("0002"))) << "what was heard is forgotten";
  g_during = nullptr;
  EXPECT_EQ(Texts{"A 1 3 0"}, Events(Started("0003")));
}

}  // namespace
}  // namespace vexo::test
