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

// Each side holds the values in its own form and does one operation per
// call on values i and j (or text i), keeping its result where the
// benchmark loop can see it.
struct ZQSide {
  static constexpr const char* kName = "ZQDecimal";
  const std::vector<ZQDecimal>& values = Decimals();
  ZQDecimal result;
  char text[64];
  void Parse(const char* t) { result = ZQDecimal(t); }
  void Print(size_t i) { values[i].Print(text, sizeof text); }
  void Add(size_t i, size_t j) { result = values[i] + values[j]; }
  bool Greater(size_t i, size_t j) const { return values[i] > values[j]; }
};

#ifdef ZQ_BENCH_MPDEC_MODULE
mpdec::Api mpd;
mpdec::Context mpd_context;

// The values in libmpdec's form, read with the 20-digit context.
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

struct MpdSide {
  static constexpr const char* kName = "libmpdec";
  const std::vector<mpdec::Value*>& values = MpdValues();
  mpdec::Value* result = mpd.qnew();
  char* text = nullptr;
  uint32_t status = 0;
  ~MpdSide() { mpd.del(result); }
  void Parse(const char* t) { mpd.qset_string(result, t, &mpd_context, &status); }
  // The library allocates the text; freeing it is part of printing.
  void Print(size_t i) {
    mpd.to_sci_size(&text, values[i], 0);
    std::free(text);
  }
  void Add(size_t i, size_t j) { mpd.qadd(result, values[i], values[j], &mpd_context, &status); }
  bool Greater(size_t i, size_t j) { return mpd.qcmp(values[i], values[j], &status) > 0; }
};
#endif

#ifdef ZQ_BENCH_HAVE_BID
const std::vector<BID_UINT128>& BidValues() {
  static const std::vector<BID_UINT128> values = [] {
    std::vector<BID_UINT128> v;
    _IDEC_flags flags = 0;
    for (const std::string& t : Texts()) {
      v.push_back(bid128_from_string(const_cast<char*>(t.c_str()), BID_ROUNDING_TO_NEAREST, &flags));
    }
    return v;
  }();
  return values;
}

struct BidSide {
  static constexpr const char* kName = "decimal128";
  const std::vector<BID_UINT128>& values = BidValues();
  BID_UINT128 result;
  char text[64];
  _IDEC_flags flags = 0;
  void Parse(const char* t) {
    result = bid128_from_string(const_cast<char*>(t), BID_ROUNDING_TO_NEAREST, &flags);
  }
  void Print(size_t i) { bid128_to_string(text, values[i], &flags); }
  void Add(size_t i, size_t j) {
    result = bid128_add(values[i], values[j], BID_ROUNDING_TO_NEAREST, &flags);
  }
  bool Greater(size_t i, size_t j) { return bid128_quiet_greater(values[i], values[j], &flags); }
};
#endif

template <class Side>
void BM_Parse(benchmark::State& state) {
  const auto& texts = Texts();
  Side side;
  size_t i = 0;
  for (auto _ : state) {
    side.Parse(texts[i++ & kMask].c_str());
    benchmark::DoNotOptimize(side.result);
  }
}

template <class Side>
void BM_Print(benchmark::State& state) {
  Side side;
  size_t i = 0;
  for (auto _ : state) {
    side.Print(i++ & kMask);
    benchmark::DoNotOptimize(side.text);
  }
}

template <class Side>
void BM_Add(benchmark::State& state) {
  Side side;
  size_t i = 0;
  for (auto _ : state) {
    side.Add(i & kMask, (i + 1) & kMask);
    ++i;
    benchmark::DoNotOptimize(side.result);
  }
}

template <class Side>
void BM_Compare(benchmark::State& state) {
  Side side;
  size_t i = 0;
  for (auto _ : state) {
    bool r = side.Greater(i & kMask, (i + 1) & kMask);
    ++i;
    benchmark::DoNotOptimize(r);
  }
}

constexpr const char* kOperations[] = {"Parse", "Print", "Add", "Compare"};

// Registers operation `op` (an index into kOperations) of `Side` as
// BM_<operation>_<side name>.
template <class Side>
void Register(int op) {
  static void (*const kRuns[])(benchmark::State&) = {BM_Parse<Side>, BM_Print<Side>, BM_Add<Side>,
                                                      BM_Compare<Side>};
  const std::string name = std::string("BM_") + kOperations[op] + "_" + Side::kName;
  benchmark::RegisterBenchmark(name.c_str(), kRuns[op]);
}

#ifdef ZQ_BENCH_MPDEC_MODULE
// Loads libmpdec and sets the 20-digit context; tells why when there is no
// such peer.
bool SetUpMpdec() {
  std::string why;
  if (!mpdec::Load(ZQ_BENCH_MPDEC_PYTHON, ZQ_BENCH_MPDEC_MODULE, &mpd, &why)) {
    std::printf("libmpdec peer not available: %s\n", why.c_str());
    return false;
  }
  mpd.defaultcontext(&mpd_context);
  mpd_context.prec = 20;
  mpd_context.traps = 0;
  return true;
}

// libmpdec reads what ZQDecimal prints as the value both read from the
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
    for (const char* op : kOperations) {
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
  bool with_mpdec = false;
#ifdef ZQ_BENCH_MPDEC_MODULE
  with_mpdec = SetUpMpdec();
  if (with_mpdec && !CheckMpdec()) return 1;
#endif
  // Each operation runs on our side and then on the peers', so that all see
  // the same load on a shared machine.
  for (int op = 0; op < 4; ++op) {
    Register<ZQSide>(op);
#ifdef ZQ_BENCH_MPDEC_MODULE
    if (with_mpdec) Register<MpdSide>(op);
#endif
#ifdef ZQ_BENCH_HAVE_BID
    Register<BidSide>(op);
#endif
  }
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
