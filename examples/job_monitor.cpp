// Prints a file as a job with a number, and waits until the printer says that it is done: job_monitor PORT FILE
//
//   job_monitor NET,192.168.1.100 receipt.bin
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <future>
#include <iterator>
#include <stdexcept>
#include <string>

#include "vexo/printer.hpp"

namespace {

constexpr int32_t kTask = 7;
constexpr std::chrono::minutes kPatience(1);

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Print(const char* descriptor, const std::string& data) {
  vexo::Printer printer(descriptor);
  printer.Open();

  std::promise<uint32_t> end;
  vexo::JobMonitor monitor(printer);
  monitor.SetListener([&end](const vexo::JobEvent& event) {  // On the monitor's thread.
    std::printf("task %d %s\n", static_cast<int>(event.task), event.ended ? "ended" : "started");
    if (event.ended && event.task == kTask) {
      end.set_value(event.value);
    }
  });
  monitor.Start();
  monitor.SetTask(kTask);
  printer.Write(data);

  std::future<uint32_t> value = end.get_future();
  if (value.wait_for(kPatience) != std::future_status::ready) {
    throw std::runtime_error("the printer does not say that it is done");
  }
  std::printf("printed, value %08X\n", static_cast<unsigned>(value.get()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: job_monitor PORT FILE\n");
    return 2;
  }
  try {
    Print(argv[1], ReadFile(argv[2]));
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", argv[1], failure.what());
    return 1;
  }
}
