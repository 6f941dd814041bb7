#include "platform/ticks.h"

#include <atomic>
#include <ctime>

namespace zq {
namespace platform {
namespace {
std::atomic<long (*)()> g_source{nullptr};
}  // namespace

long NowSeconds() {
  long (*fn)() = g_source.load(std::memory_order_acquire);
  if (fn != nullptr) return fn();
  return static_cast<long>(std::time(nullptr));
}

void SetSecondsSourceForTesting(long (*fn)()) {
  g_source.store(fn, std::memory_order_release);
}

}  // namespace platform
}  // namespace zq
