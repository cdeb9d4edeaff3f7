// Prints a file as a job with a task number and waits until the printer reports its end: job_monitor PORT FILE
//
//   job_monitor NET,192.168.1.100 receipt.bin
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>

#include "vexo/printer.hpp"

namespace {

constexpr int32_t kTask = 7;

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Print(const char* descriptor, const std::string& data) {
  vexo::Printer printer(descriptor);
  printer.Open();
  vexo::JobMonitor monitor(printer);
  monitor.SetListener([](const vexo::JobEvent& event) {  // On the monitor's thread.
    std::printf("task %d %s\n", static_cast<int>(event.task), event.ended ? "ended" : "started");
  });
  monitor.Start();
  const uint32_t value = monitor.Print(data, kTask, std::chrono::minutes(1));
  std::printf("printed, value %08X\n", static_cast<unsigned>(value));
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
