// ZQDecimal parse, print, add and compare against a decimal128 peer on the
// same random twenty-digit values; prints ns/op and the peer/ZQDecimal ratio.
#include "zq/decimal.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef ZQ_BENCH_HAVE_BID
extern "C" {
#include <bid_conf.h>
#include <bid_functions.h>
}
#endif

namespace {

constexpr size_t kValues = 4096;  // a power of two
constexpr size_t kMask = kValues - 1;

// Random literals of twenty significant digits (one to twelve before the
// point), half of them negative.
const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    std::mt19937_64 rng(2024);
    std::vector<std::string> v;
    for (size_t i = 0; i < kValues; ++i) {
      std::string d(1, static_cast<char>('1' + rng() % 9));
      for (int k = 1; k < 20; ++k) d += static_cast<char>('0' + rng() % 10);
      int whole = 1 + static_cast<int>(rng() % 12);
      v.push_back((rng() % 2 ? "-" : "") + d.substr(0, whole) + "." +
                  d.substr(whole));
    }
    return v;
  }();
  return texts;
}

const std::vector<ZQDecimal>& Decimals() {
  static const std::vector<ZQDecimal> values = [] {
    std::vector<ZQDecimal> v;
    for (const std::string& t : Texts()) v.emplace_back(t.c_str());
    return v;
  }();
  return values;
}

#ifdef ZQ_BENCH_HAVE_BID
const std::vector<BID_UINT128>& Peers() {
  static const std::vector<BID_UINT128> values = [] {
    std::vector<BID_UINT128> v;
    _IDEC_flags flags = 0;
    for (const std::string& t : Texts()) {
      v.push_back(bid128_from_string(const_cast<char*>(t.c_str()),
                                     BID_ROUNDING_TO_NEAREST, &flags));
    }
    return v;
  }();
  return values;
}
#endif

// Each operation runs on our side and then on the peer's, so that both see
// the same load on a shared machine.
void BM_Parse_ZQDecimal(benchmark::State& state) {
  const auto& texts = Texts();
  size_t i = 0;
  for (auto _ : state) {
    ZQDecimal d(texts[i++ & kMask].c_str());
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_Parse_ZQDecimal);

#ifdef ZQ_BENCH_HAVE_BID
void BM_Parse_decimal128(benchmark::State& state) {
  const auto& texts = Texts();
  _IDEC_flags flags = 0;
  size_t i = 0;
  for (auto _ : state) {
    BID_UINT128 d =
        bid128_from_string(const_cast<char*>(texts[i++ & kMask].c_str()),
                           BID_ROUNDING_TO_NEAREST, &flags);
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_Parse_decimal128);
#endif

void BM_Print_ZQDecimal(benchmark::State& state) {
  const auto& values = Decimals();
  char buf[64];
  size_t i = 0;
  for (auto _ : state) {
    values[i++ & kMask].Print(buf, sizeof buf);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Print_ZQDecimal);

#ifdef ZQ_BENCH_HAVE_BID
void BM_Print_decimal128(benchmark::State& state) {
  const auto& values = Peers();
  _IDEC_flags flags = 0;
  char buf[64];
  size_t i = 0;
  for (auto _ : state) {
    bid128_to_string(buf, values[i++ & kMask], &flags);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Print_decimal128);
#endif

void BM_Add_ZQDecimal(benchmark::State& state) {
  const auto& values = Decimals();
  size_t i = 0;
  for (auto _ : state) {
    ZQDecimal r = values[i & kMask] + values[(i + 1) & kMask];
    ++i;
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_Add_ZQDecimal);

#ifdef ZQ_BENCH_HAVE_BID
void BM_Add_decimal128(benchmark::State& state) {
  const auto& values = Peers();
  _IDEC_flags flags = 0;
  size_t i = 0;
  for (auto _ : state) {
    BID_UINT128 r = bid128_add(values[i & kMask], values[(i + 1) & kMask],
                               BID_ROUNDING_TO_NEAREST, &flags);
    ++i;
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_Add_decimal128);
#endif

void BM_Compare_ZQDecimal(benchmark::State& state) {
  const auto& values = Decimals();
  size_t i = 0;
  for (auto _ : state) {
    bool r = values[i & kMask] > values[(i + 1) & kMask];
    ++i;
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_Compare_ZQDecimal);

#ifdef ZQ_BENCH_HAVE_BID
void BM_Compare_decimal128(benchmark::State& state) {
  const auto& values = Peers();
  _IDEC_flags flags = 0;
  size_t i = 0;
  for (auto _ : state) {
    int r = bid128_quiet_greater(values[i & kMask], values[(i + 1) & kMask],
                                 &flags);
    ++i;
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_Compare_decimal128);
#endif

// Shows every run as usual and keeps its CPU time per operation (each
// iteration is one operation; CPU time, because the wall time of a shared
// machine includes waiting).
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      // With repetitions the median stands for the benchmark.
      bool median =
          run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type != Run::RT_Iteration && !median) continue;
      ns_[run.run_name.str()] =
          run.GetAdjustedCPUTime() *
          benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
          benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }

  void PrintRatios() const {
    std::printf("\n%-10s %14s %14s %10s\n", "operation", "ZQDecimal ns",
                "decimal128 ns", "ratio");
    for (const char* op : {"Parse", "Print", "Add", "Compare"}) {
      auto zq = ns_.find(std::string("BM_") + op + "_ZQDecimal");
      auto peer = ns_.find(std::string("BM_") + op + "_decimal128");
      if (zq == ns_.end()) continue;
      if (peer == ns_.end()) {
        std::printf("%-10s %14.2f %14s %10s\n", op, zq->second, "-", "-");
      } else {
        std::printf("%-10s %14.2f %14.2f %9.2fx\n", op, zq->second,
                    peer->second, peer->second / zq->second);
      }
    }
    std::printf("(ratio = peer time / ZQDecimal time; target 3x or more)\n");
  }

 private:
  std::map<std::string, double> ns_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
