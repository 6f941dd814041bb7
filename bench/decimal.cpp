// ZQDecimal parse, print, add and compare against libmpdec with a 20-digit
// context and against decimal128, on the same random twenty-digit values;
// checks that the peers read and order the values as ZQDecimal does, then
// prints ns/op and the peer/ZQDecimal ratios.
#include "zq/decimal.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef ZQ_BENCH_MPDEC_MODULE
#include "mpdec.h"
#endif

#ifdef ZQ_BENCH_HAVE_BID
extern "C" {
#include <bid_conf.h>
#include <bid_functions.h>
}
#endif

namespace {

constexpr size_t kValues = 4096;  // a power of two
constexpr size_t kMask = kValues - 1;

// Random literals that both sides hold exactly, half of them negative: one to
// twelve digits before the point and twenty significant digits (nineteen
// when the count before the point is odd, as ZQDecimal keeps base-100 pairs
// on each side of the point).
const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    std::mt19937_64 rng(2024);
    std::vector<std::string> v;
    for (size_t i = 0; i < kValues; ++i) {
      std::string d(1, static_cast<char>('1' + rng() % 9));
      for (int k = 1; k < 20; ++k) d += static_cast<char>('0' + rng() % 10);
      int whole = 1 + static_cast<int>(rng() % 12);
      if (whole % 2 != 0) d.pop_back();
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

#ifdef ZQ_BENCH_MPDEC_MODULE
mpdec::Api mpd;
mpdec::Context mpd_context;

// The values in the peer's form, read with the 20-digit context.
const std::vector<mpdec::Value*>& MpdValues() {
  static const std::vector<mpdec::Value*> values = [] {
    std::vector<mpdec::Value*> v;
    uint32_t status = 0;
    for (const std::string& t : Texts()) {
      v.push_back(mpd.qnew());
      mpd.qset_string(v.back(), t.c_str(), &mpd_context, &status);
    }
    return v;
  }();
  return values;
}

void BM_Parse_libmpdec(benchmark::State& state) {
  const auto& texts = Texts();
  mpdec::Value* r = mpd.qnew();
  uint32_t status = 0;
  size_t i = 0;
  for (auto _ : state) {
    mpd.qset_string(r, texts[i++ & kMask].c_str(), &mpd_context, &status);
    benchmark::DoNotOptimize(r->digits);
  }
  mpd.del(r);
}

void BM_Print_libmpdec(benchmark::State& state) {
  const auto& values = MpdValues();
  size_t i = 0;
  for (auto _ : state) {
    char* text = nullptr;
    mpd.to_sci_size(&text, values[i++ & kMask], 0);
    benchmark::DoNotOptimize(text);
    std::free(text);
  }
}

void BM_Add_libmpdec(benchmark::State& state) {
  const auto& values = MpdValues();
  mpdec::Value* r = mpd.qnew();
  uint32_t status = 0;
  size_t i = 0;
  for (auto _ : state) {
    mpd.qadd(r, values[i & kMask], values[(i + 1) & kMask], &mpd_context, &status);
    ++i;
    benchmark::DoNotOptimize(r->digits);
  }
  mpd.del(r);
}

void BM_Compare_libmpdec(benchmark::State& state) {
  const auto& values = MpdValues();
  uint32_t status = 0;
  size_t i = 0;
  for (auto _ : state) {
    bool r = mpd.qcmp(values[i & kMask], values[(i + 1) & kMask], &status) > 0;
    ++i;
    benchmark::DoNotOptimize(r);
  }
}

// Loads the peer, sets the 20-digit context and registers its benchmarks
// after ours; tells why when there is no peer.
bool SetUpMpdec() {
  std::string why;
  if (!mpdec::Load(ZQ_BENCH_MPDEC_PYTHON, ZQ_BENCH_MPDEC_MODULE, &mpd, &why)) {
    std::printf("libmpdec peer not available: %s\n", why.c_str());
    return false;
  }
  mpd.defaultcontext(&mpd_context);
  mpd_context.prec = 20;
  mpd_context.traps = 0;
  benchmark::RegisterBenchmark("BM_Parse_libmpdec", BM_Parse_libmpdec);
  benchmark::RegisterBenchmark("BM_Print_libmpdec", BM_Print_libmpdec);
  benchmark::RegisterBenchmark("BM_Add_libmpdec", BM_Add_libmpdec);
  benchmark::RegisterBenchmark("BM_Compare_libmpdec", BM_Compare_libmpdec);
  return true;
}

// The peer reads what ZQDecimal prints as the value both read from the
// text, and orders every neighbouring pair as ZQDecimal does; prints the
// counts and returns whether all agree.
bool CheckMpdec() {
  const auto& texts = Texts();
  const auto& ours = Decimals();
  const auto& peer = MpdValues();
  mpdec::Value* back = mpd.qnew();
  uint32_t status = 0;
  size_t read = 0, ordered = 0;
  for (size_t i = 0; i < kValues; ++i) {
    char buf[64];
    ours[i].Print(buf, sizeof buf);
    mpd.qset_string(back, buf, &mpd_context, &status);
    read += mpd.qcmp(back, peer[i], &status) == 0;
    const ZQDecimal& a = ours[i];
    const ZQDecimal& b = ours[(i + 1) & kMask];
    const int order = a > b ? 1 : b > a ? -1 : 0;
    ordered += mpd.qcmp(peer[i], peer[(i + 1) & kMask], &status) == order;
  }
  mpd.del(back);
  std::printf("libmpdec %s check (%zu values like %s): print/read %zu agree, order %zu agree\n\n",
              mpd.version.c_str(), kValues, texts[0].c_str(), read, ordered);
  return read == kValues && ordered == kValues;
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
    std::printf("\n%-10s %13s %13s %8s %14s %8s\n", "operation", "ZQDecimal ns", "libmpdec ns",
                "ratio", "decimal128 ns", "ratio");
    for (const char* op : {"Parse", "Print", "Add", "Compare"}) {
      auto zq = ns_.find(std::string("BM_") + op + "_ZQDecimal");
      if (zq == ns_.end()) continue;
      std::printf("%-10s %13.2f", op, zq->second);
      for (const char* peer : {"_libmpdec", "_decimal128"}) {
        auto p = ns_.find(std::string("BM_") + op + peer);
        if (p == ns_.end()) {
          std::printf(" %13s %8s", "-", "-");
        } else {
          std::printf(" %13.2f %7.2fx", p->second, p->second / zq->second);
        }
      }
      std::printf("\n");
    }
    std::printf("(ratio = peer time / ZQDecimal time; target: 3x or more against libmpdec)\n");
  }

 private:
  std::map<std::string, double> ns_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
#ifdef ZQ_BENCH_MPDEC_MODULE
  if (SetUpMpdec() && !CheckMpdec()) return 1;
#endif
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
