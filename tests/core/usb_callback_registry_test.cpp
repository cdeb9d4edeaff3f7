// USB events that go to the host's callbacks.
#include "discovery/usb_callback_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>

#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

// The context: what the callback does beyond being noted.
using Action = std::function<void()>;

std::string g_called;  // The names of the callbacks.

template <char kName>
void Note(void* context, const char* device, int32_t event) {
  EXPECT_STREQ("ABC", device);
  EXPECT_EQ(1, event);
  g_called += kName;
  if (context != nullptr) {
    (*static_cast<Action*>(context))();
  }
}

class UsbCallbackRegistryTest : public ::testing::Test {
 protected:
  struct Named {
    char name;
    USBMonitorCallback callback;
    int64_t Key() const { return static_cast<int64_t>(reinterpret_cast<intptr_t>(callback)); }
  };

  UsbCallbackRegistryTest() {
    std::sort(std::begin(callbacks_), std::end(callbacks_),
              [](const Named& left, const Named& right) { return left.Key() < right.Key(); });
  }

  // The callbacks that one event reaches, by their places in the order of their addresses: "012".
  std::string Deliver() {
    g_called.clear();
    registry_.Deliver("ABC", 1);
    for (int place = 0; place < 3; ++place) {
      std::replace(g_called.begin(), g_called.end(), callbacks_[place].name, static_cast<char>('0' + place));
    }
    return g_called;
  }

  int64_t Add(int place, Action* action = nullptr) { return registry_.Add(callbacks_[place].callback, action); }
  void Remove(int place) { registry_.Remove(callbacks_[place].callback); }

  Named callbacks_[3] = {{'A', Note<'A'>}, {'B', Note<'B'>}, {'C', Note<'C'>}};
  UsbCallbackRegistry registry_;
};

TEST_F(UsbCallbackRegistryTest, CallsInTheOrderOfTheAddressesEachOnce) {
  EXPECT_EQ("", Deliver());
  for (const int place : {2, 0, 1, 0}) {
    EXPECT_EQ(callbacks_[place].Key(), Add(place));
  }
  EXPECT_EQ("012", Deliver());
  Remove(1);
  Remove(1);
  EXPECT_EQ("02", Deliver());
  registry_.RemoveAll();
  EXPECT_EQ("", Deliver());
}

TEST_F(UsbCallbackRegistryTest, CallbackMayAddAndRemoveAndThrow) {
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

TEST_F(UsbCallbackRegistryTest, AddWithoutMemoryChangesNothing) {
  Add(0);
  AllocationFault fault(1);
  EXPECT_THROW(Add(1), std::bad_alloc);
  ASSERT_TRUE(fault.Lift());
  EXPECT_EQ("0", Deliver());
}

}  // namespace
}  // namespace vexo::test
