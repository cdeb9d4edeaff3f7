#include "vexoctl/support/events.h"

#include <limits>

#include "vexoctl/console/values.h"

namespace vexoctl {

void EventQueue::Post(const Event& event) {
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    events_.push_back(event);
  }
  posted_.notify_one();
}

std::optional<Event> EventQueue::Wait(std::optional<Deadline> deadline) {
  std::unique_lock<std::mutex> guard(mutex_);
  const auto any = [this] { return !events_.empty(); };
  if (deadline) {
    posted_.wait_until(guard, *deadline, any);
  } else {
    posted_.wait(guard, any);
  }
  return TakeLocked();
}

std::optional<Event> EventQueue::Take() {
  const std::lock_guard<std::mutex> guard(mutex_);
  return TakeLocked();
}

std::optional<Event> EventQueue::TakeLocked() {
  if (events_.empty()) {
    return std::nullopt;
  }
  const Event oldest = events_.front();
  events_.pop_front();
  return oldest;
}

EventQueue& Events() {
  static EventQueue& queue = *new EventQueue;
  return queue;
}

void PostInterrupt() { Events().Post({}); }

void PostJobEvent(const vexo::JobEvent& job) {
  Event event;
  event.kind = Event::Kind::kJob;
  event.job = job;
  Events().Post(event);
}

void PostUsbEvent(const std::string& device, bool removed) {
  Event event;
  event.kind = Event::Kind::kUsbPrinter;
  event.usb_device = device;
  event.usb_removed = removed;
  Events().Post(event);
}

void EventLimits::Start() {
  if (time_) {
    end_ = std::chrono::steady_clock::now() + *time_;
  }
}

EventLimitOptions::EventLimitOptions(CLI::App* command)
    : count_(command->add_option("--count")->type_name("N")->description("Stop after N events")),
      time_(command->add_option("--for")->type_name("MS")->description("Stop after MS milliseconds")) {
  for (CLI::Option* const option : {count_, time_}) {
    option->transform(WholeNumber(1, std::numeric_limits<uint32_t>::max()));
  }
}

EventLimits EventLimitOptions::Read() const {
  std::optional<uint32_t> count;
  if (count_->count() > 0) {
    count = count_->as<uint32_t>();
  }
  std::optional<std::chrono::milliseconds> time;
  if (time_->count() > 0) {
    time = std::chrono::milliseconds(time_->as<uint32_t>());
  }
  return {count, time};
}

}  // namespace vexoctl
