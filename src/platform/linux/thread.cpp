#include "platform/thread.h"

#include <pthread.h>

namespace vexo::platform {

static_assert(sizeof(pthread_t) <= sizeof(uintptr_t));

struct ThreadEntry {
  static void* Run(void* argument) {
    auto* const thread = static_cast<Thread*>(argument);
    thread->self_ = static_cast<uintptr_t>(pthread_self());
    thread->run_(thread->argument_);
    thread->self_ = 0;
    return nullptr;
  }
};

bool Thread::Start(void (*run)(void*), void* argument) {
  run_ = run;
  argument_ = argument;
  pthread_t made = 0;
  started_ = pthread_create(&made, nullptr, ThreadEntry::Run, this) == 0;
  system_thread_ = static_cast<uintptr_t>(made);
  return started_;
}

void Thread::Join() {
  if (started_) {
    pthread_join(static_cast<pthread_t>(system_thread_), nullptr);
    started_ = false;
  }
}

bool Thread::IsCurrent() const { return self_ == static_cast<uintptr_t>(pthread_self()); }

}  // namespace vexo::platform
