// Allocator throughput: zq750mem against the C library's own allocator, side
// by side in one process.  Two threads each keep about 1,000 live blocks of
// random sizes from 16 to 512 bytes and replace a random one per step (one
// free and one allocation, counted as two operations).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

#include <benchmark/benchmark.h>

#include "frame/memory.h"

extern "C" void* __libc_malloc(std::size_t);
extern "C" void __libc_free(void*);

namespace {

constexpr int kLive = 1000;
constexpr int kSizes = 4096;  // pre-drawn sizes, so drawing costs both sides the same

struct Zq {
  static void* Alloc(std::size_t n) { return zq::MemAlloc(n); }
  static void Free(void* p) { zq::MemFree(p); }
};

struct Glibc {
  static void* Alloc(std::size_t n) { return __libc_malloc(n); }
  static void Free(void* p) { __libc_free(p); }
};

template <class A>
void BM_RandomReplace(benchmark::State& state) {
  std::uint64_t x = 0x9E3779B97F4A7C15ULL * static_cast<std::uint64_t>(state.thread_index() + 1);
  auto next = [&x] {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    return x;
  };
  std::vector<std::uint32_t> sizes(kSizes);
  for (auto& s : sizes) s = 16 + static_cast<std::uint32_t>(next() % 497);
  std::vector<void*> live(kLive);
  for (int i = 0; i < kLive; ++i) live[i] = A::Alloc(sizes[static_cast<std::size_t>(i)]);
  std::size_t k = 0;
  for (auto _ : state) {
    std::uint64_t r = next();
    void*& slot = live[r % kLive];
    A::Free(slot);
    slot = A::Alloc(sizes[k++ & (kSizes - 1)]);
    benchmark::DoNotOptimize(slot);
  }
  for (void* p : live) A::Free(p);
  state.counters["ops_per_s"] = benchmark::Counter(
      2.0 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK_TEMPLATE(BM_RandomReplace, Zq)
    ->Name("zq750mem/random_replace")
    ->Threads(2)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_RandomReplace, Glibc)
    ->Name("glibc/random_replace")
    ->Threads(2)
    ->UseRealTime();

// Console output plus the ratio of the two rates at the end: by wall-clock
// rate (the counter) and by processor time per operation, which a busy
// machine disturbs less.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  explicit RatioReporter(OutputOptions options) : ConsoleReporter(options) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      auto it = run.counters.find("ops_per_s");
      if (it == run.counters.end() || run.run_type != Run::RT_Iteration) continue;
      std::string name = run.benchmark_name();
      Rates& r = rates_[name.substr(0, name.find('/'))];
      r.wall = it->second.value;
      r.cpu_ns = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatio() const {
    auto zq = rates_.find("zq750mem");
    auto libc = rates_.find("glibc");
    if (zq == rates_.end() || libc == rates_.end()) return;
    if (libc->second.wall <= 0 || zq->second.cpu_ns <= 0) return;
    std::printf("zq750mem %.3g ops/s, glibc %.3g ops/s: ratio zq750mem/glibc = %.2f "
                "(by processor time %.2f)\n",
                zq->second.wall, libc->second.wall, zq->second.wall / libc->second.wall,
                libc->second.cpu_ns / zq->second.cpu_ns);
  }

 private:
  struct Rates {
    double wall = 0;
    double cpu_ns = 0;
  };
  std::map<std::string, Rates> rates_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter(isatty(STDOUT_FILENO)
                             ? benchmark::ConsoleReporter::OO_ColorTabular
                             : benchmark::ConsoleReporter::OO_Tabular);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatio();
  benchmark::Shutdown();
  return 0;
}
