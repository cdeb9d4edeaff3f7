#include "vexoctl/news.h"

namespace vexoctl {
namespace {

constexpr int32_t kJobEnded = 2;

}  // namespace

void NewsQueue::Post(const News& news) {
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    news_.push_back(news);
  }
  posted_.notify_one();
}

std::optional<News> NewsQueue::Wait(std::optional<Deadline> deadline) {
  std::unique_lock<std::mutex> guard(mutex_);
  const auto any = [this] { return !news_.empty(); };
  if (deadline) {
    posted_.wait_until(guard, *deadline, any);
  } else {
    posted_.wait(guard, any);
  }
  return TakeLocked();
}

std::optional<News> NewsQueue::Take() {
  const std::lock_guard<std::mutex> guard(mutex_);
  return TakeLocked();
}

std::optional<News> NewsQueue::TakeLocked() {
  if (news_.empty()) {
    return std::nullopt;
  }
  const News oldest = news_.front();
  news_.pop_front();
  return oldest;
}

NewsQueue& AllNews() {
  static NewsQueue& queue = *new NewsQueue;
  return queue;
}

void PostJobEvent(int32_t event, int32_t task, uint32_t value) {
  News news;
  news.kind = News::Kind::kJobEvent;
  news.event = {std::chrono::system_clock::now(), event == kJobEnded, task, value};
  AllNews().Post(news);
}

void PostUsbEvent(const std::string& device, bool removed) {
  News news;
  news.kind = News::Kind::kUsbEvent;
  news.usb = {std::chrono::system_clock::now(), removed, device};
  AllNews().Post(news);
}

}  // namespace vexoctl
