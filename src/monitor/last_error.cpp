#include "monitor/last_error.h"

#include <atomic>

#include "vexo/error.h"

namespace vexo {
namespace {

std::atomic<int32_t> g_last_error{VEXO_OK};

}  // namespace

int32_t LastErrorCode() { return g_last_error.load(std::memory_order_relaxed); }

void StoreLastErrorCode(int32_t code) { g_last_error.store(code, std::memory_order_relaxed); }

}  // namespace vexo
