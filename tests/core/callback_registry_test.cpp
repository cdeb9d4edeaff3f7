// The order of callbacks, and what they may do to one another.
#include "platform/callback_registry.h"

#include <stdexcept>

#include "core/core_test.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

// The context: what the callback does beyond being noted.
using Action = std::function<void()>;

std::vector<USBMonitorCallback> g_called;

template <int kIndex>
void Note(void* context, const char* device, int32_t event) {
  EXPECT_STREQ("ABC", device);
  EXPECT_EQ(1, event);
  g_called.push_back(Note<kIndex>);
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

  // The callbacks that one event reaches, by their places in the order of their addresses: "012".
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

  USBMonitorCallback callbacks_[3] = {Note<0>, Note<1>, Note<2>};
  platform::RecursiveMutex lock_;
  platform::CallbackRegistry<USBMonitorCallback> registry_{&lock_};
};

TEST_F(CallbackRegistryTest, CallsInTheOrderOfTheAddressesEachOnce) {
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
    throw std::runtime_error("a host's own trouble");
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
