// Call order, and callbacks that add or remove callbacks.
#include "platform/callback_registry.h"

#include <stdexcept>

#include "core/core_test.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

// The callback's context: an additional action.
using Action = std::function<void()>;

std::vector<USBMonitorCallback> g_called;

template <int kIndex>
void Record(void* context, const char* device, int32_t event) {
  EXPECT_STREQ("ABC", device);
  EXPECT_EQ(1, event);
  g_called.push_back(Record<kIndex>);
  if (context != nullptr) {
    (*static_cast<Action*>(context))();
  }
}

int64_t KeyOf(USBMonitorCallback callback) { return static_cast<int64_t>(reinterpret_cast<intptr_t>(callback)); }

class CallbackRegistryTest : public ::testing::Test {
 protected:
  CallbackRegistryTest() {
    std::sort(std::begin(callbacks_), std::end(callbacks_),
              [](auto left, auto right) { return KeyOf(left) < KeyOf(right); });
  }

  // Delivers one event. Returns the callbacks called, as their ranks in address order: "012".
  std::string Deliver() {
    g_called.clear();
    registry_.Deliver([](USBMonitorCallback callback, void* context) { callback(context, "ABC", 1); });
    std::string places;
    for (const auto callback : g_called) {
      places += std::to_string(std::find(callbacks_, callbacks_ + 3, callback) - callbacks_);
    }
    return places;
  }

  int64_t Add(int place, Action* action = nullptr) { return registry_.Add(callbacks_[place], action); }
  void Remove(int place) { registry_.Remove(KeyOf(callbacks_[place])); }

  USBMonitorCallback callbacks_[3] = {Record<0>, Record<1>, Record<2>};
  platform::RecursiveMutex lock_;
  platform::CallbackRegistry<USBMonitorCallback> registry_{&lock_};
};

TEST_F(CallbackRegistryTest, CallsEachCallbackOnceInAddressOrder) {
  EXPECT_EQ("", Deliver());
  for (const int place : {2, 0, 1, 0}) {
    EXPECT_EQ(KeyOf(callbacks_[place]), Add(place));
  }
  EXPECT_EQ("012", Deliver());
  Remove(1);
  Remove(1);
  EXPECT_EQ("02", Deliver());
  registry_.RemoveAll();
  EXPECT_EQ("", Deliver());
}

TEST_F(CallbackRegistryTest, CallbackMayAddAndRemoveAndThrow) {
  Action add_others = [&] {
    Add(0);
    Add(2);
    throw std::runtime_error("error in a callback");
  };
  Add(1, &add_others);
  EXPECT_EQ("12", Deliver());
  EXPECT_EQ("012", Deliver());
  Action remove_all = [&] { registry_.RemoveAll(); };
  Add(1, &remove_all);
  EXPECT_EQ("01", Deliver());
  EXPECT_EQ("", Deliver());
}

}  // namespace
}  // namespace vexo::test
