#include "platform/thread.h"

#include <process.h>
#include <windows.h>

namespace vexo::platform {

struct ThreadEntry {
  static unsigned __stdcall Run(void* argument) {
    auto* const thread = static_cast<Thread*>(argument);
    thread->self_ = GetCurrentThreadId();
    thread->run_(thread->argument_);
    thread->self_ = 0;
    return 0;
  }
};

bool Thread::Start(void (*run)(void*), void* argument) {
  run_ = run;
  argument_ = argument;
  system_thread_ = _beginthreadex(nullptr, 0, ThreadEntry::Run, this, 0, nullptr);
  started_ = system_thread_ != 0;
  return started_;
}

void Thread::Join() {
  if (started_) {
    const auto handle = reinterpret_cast<HANDLE>(system_thread_);
    WaitForSingleObject(handle, INFINITE);
    CloseHandle(handle);
    started_ = false;
  }
}

bool Thread::IsCurrent() const { return self_ == GetCurrentThreadId(); }

}  // namespace vexo::platform
