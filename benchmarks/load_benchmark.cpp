// Time for loading the DLL, compared with an empty DLL.
#include <windows.h>

#include "measure.h"

namespace vexo::benchmark {
namespace {

constexpr int kRounds = 51;
constexpr double kMillisecondsPerSecond = 1000;

// Loads and unloads a DLL. Returns the time for loading.
double LoadingSeconds(const char* name) {
  HMODULE library = nullptr;
  const double seconds = Seconds([&] { library = LoadLibraryA(name); });
  if (library == nullptr) {
    std::fprintf(stderr, "benchmark: %s does not load\n", name);
    ExitProcess(1);
  }
  FreeLibrary(library);
  return seconds;
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  using vexo::benchmark::LoadingSeconds;
  std::vector<double> product;
  std::vector<double> empty;
  for (int round = 0; round < vexo::benchmark::kRounds; ++round) {
    product.push_back(LoadingSeconds("vexoextend.dll"));
    empty.push_back(LoadingSeconds("empty_library.dll"));
  }
  const double difference = vexo::benchmark::Median(product) - vexo::benchmark::Median(empty);
  vexo::benchmark::Report("load, ms more than an empty DLL", difference * vexo::benchmark::kMillisecondsPerSecond,
                          "<=", 5);
  return 0;
}
