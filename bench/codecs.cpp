// Packed, zoned and binary fields decoded and encoded through the conversion
// engine (double and exact-decimal forms), against the same conversions by
// GnuCOBOL's runtime (a MOVE to and from a numeric-edited item), on the same
// 1,000,000 values. Prints ns per field and the speed ratio.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

constexpr int kValues = 1000000;
// The COBOL program converts every value this many times, so that the
// conversions outweigh loading the file.
constexpr int kCobolPasses = 10;

// One record per value: PIC S9(7)V99 as COMP-3 (5 bytes), as DISPLAY with a
// trailing overpunch (9 bytes) and as big-endian BINARY (4 bytes).
constexpr int kPackLen = 5;
constexpr int kZoneLen = 9;
constexpr int kBinLen = 4;
constexpr int kRecLen = kPackLen + kZoneLen + kBinLen;

struct Data {
  std::vector<double> values;
  std::vector<ZQDecimal> decimals;
  ZQString records;
  // Encoded fields go to one buffer, reused by every pass as the COBOL side
  // reuses its table, so that neither side times fresh pages.
  ZQString out;
  ZQDType pack{ZQDT_COMP3};
  ZQDType zone{ZQDT_ZONED};
  ZQDType bin{ZQDT_COMP};

  Data() {
    pack.Length(kPackLen);
    pack.Scale(2);
    zone.Length(kZoneLen);
    zone.Scale(2);
    bin.Length(kBinLen);
    bin.Scale(2);
    std::mt19937_64 rng(42);
    values.reserve(kValues);
    decimals.reserve(kValues);
    records.Allocate(static_cast<long>(kValues) * kRecLen + 16);
    for (int i = 0; i < kValues; ++i) {
      const long cents = static_cast<long>(rng() % 1999999999ull) - 999999999L;
      char text[32];
      snprintf(text, sizeof(text), "%ld.%02ld", cents / 100, labs(cents % 100));
      if (cents < 0 && cents > -100) snprintf(text, sizeof(text), "-0.%02ld", -cents);
      values.push_back(cents / 100.0);
      decimals.emplace_back(text);
      pack.Output(records, ZQDecimal(text));
      zone.Output(records, ZQDecimal(text));
      bin.Output(records, ZQDecimal(text));
    }
  }
};

Data& Shared() {
  static Data d;
  return d;
}

enum Field { kPack, kZone, kBin };

const ZQDType& TypeOf(Data& d, Field f) {
  return f == kPack ? d.pack : f == kZone ? d.zone : d.bin;
}

long OffsetOf(Field f) { return f == kPack ? 0 : f == kZone ? kPackLen : kPackLen + kZoneLen; }

double DecodeDouble(Field f) {
  Data& d = Shared();
  const ZQDType& t = TypeOf(d, f);
  double sum = 0;
  for (long i = 0, off = OffsetOf(f); i < kValues; ++i, off += kRecLen) {
    double v;
    t.Input(d.records, off, v);
    sum += v;
  }
  return sum;
}

double DecodeDecimal(Field f) {
  Data& d = Shared();
  const ZQDType& t = TypeOf(d, f);
  double sum = 0;
  for (long i = 0, off = OffsetOf(f); i < kValues; ++i, off += kRecLen) {
    ZQDecimal v;
    t.Input(d.records, off, v);
    sum += v.IsNeg();
  }
  return sum;
}

// Encodes every value of `values` (doubles or decimals) as field `f`.
template <class Value>
long Encode(Field f, const std::vector<Value>& values) {
  Data& d = Shared();
  const ZQDType& t = TypeOf(d, f);
  ZQString& out = d.out;
  out.clear();
  out.Allocate(kValues * 10);
  for (int i = 0; i < kValues; ++i) t.Output(out, values[i]);
  return out.length();
}

long EncodeDouble(Field f) { return Encode(f, Shared().values); }

long EncodeDecimal(Field f) { return Encode(f, Shared().decimals); }

void BM_Decode(benchmark::State& state) {
  const Field f = static_cast<Field>(state.range(0));
  const bool dec = state.range(1) != 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dec ? DecodeDecimal(f) : DecodeDouble(f));
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

void BM_Encode(benchmark::State& state) {
  const Field f = static_cast<Field>(state.range(0));
  const bool dec = state.range(1) != 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dec ? EncodeDecimal(f) : EncodeDouble(f));
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

void FieldArgs(benchmark::internal::Benchmark* b) {
  b->ArgNames({"field", "decimal"});
  for (int f = 0; f < 3; ++f) {
    for (int dec = 0; dec < 2; ++dec) b->Args({f, dec});
  }
  b->Unit(benchmark::kMillisecond)->Iterations(3);
}

BENCHMARK(BM_Decode)->Apply(FieldArgs);
BENCHMARK(BM_Encode)->Apply(FieldArgs);

// CPU seconds of this process and of its finished children: the machine is
// shared, so wall-clock time would measure the neighbours too.
double CpuSeconds() {
  timespec ts;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  rusage ru;
  getrusage(RUSAGE_CHILDREN, &ru);
  return ts.tv_sec + ts.tv_nsec * 1e-9 + ru.ru_utime.tv_sec + ru.ru_utime.tv_usec * 1e-6 +
         ru.ru_stime.tv_sec + ru.ru_stime.tv_usec * 1e-6;
}

// Best of three: CPU seconds taken by `fn`.
template <typename Fn>
double Seconds(Fn fn) {
  double best = 1e30;
  for (int r = 0; r < 3; ++r) {
    const double t0 = CpuSeconds();
    fn();
    const double s = CpuSeconds() - t0;
    if (s < best) best = s;
  }
  return best;
}

// Runs the COBOL program on the records in a scratch folder.
class CobolRun {
 public:
  explicit CobolRun(const std::string& exe) : exe_(exe) {
    char tmpl[] = "/tmp/zq_bench_XXXXXX";
    if (mkdtemp(tmpl) != nullptr) dir_ = tmpl;
    const std::string path = dir_ + "/bench.bin";
    FILE* f = fopen(path.c_str(), "wb");
    if (f != nullptr) {
      const ZQString& r = Shared().records;
      fwrite(r.c_str(), 1, r.length(), f);
      fclose(f);
    }
  }
  ~CobolRun() {
    if (!dir_.empty()) {
      const std::string cmd = "rm -rf '" + dir_ + "'";
      if (system(cmd.c_str()) != 0) perror("rm");
    }
  }
  bool ok() const { return !dir_.empty(); }
  bool Run(const std::string& mode) {
    const std::string cmd = "cd '" + dir_ + "' && '" + exe_ + "' " + mode + " >/dev/null";
    return system(cmd.c_str()) == 0;
  }
  // The content of a file the program wrote in the scratch folder.
  std::string Read(const std::string& name) const {
    std::string data;
    FILE* f = fopen((dir_ + "/" + name).c_str(), "rb");
    if (f == nullptr) return data;
    char buf[1 << 16];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0) data.append(buf, n);
    fclose(f);
    return data;
  }
  double Time(const std::string& mode) {
    const std::string cmd = "cd '" + dir_ + "' && '" + exe_ + "' " + mode + " >/dev/null";
    return Seconds([&] {
      if (system(cmd.c_str()) != 0) fprintf(stderr, "cobol run failed: %s\n", mode.c_str());
    });
  }

 private:
  std::string exe_;
  std::string dir_;
};

// The value as the numeric-edited picture -9(7).99 shows it.
std::string Edited(double v) {
  const long long cents = llround(v * 100);
  char buf[32];
  snprintf(buf, sizeof(buf), "%c%07d.%02d", cents < 0 ? '-' : ' ',
           static_cast<int>(llabs(cents) / 100 % 10000000), static_cast<int>(llabs(cents) % 100));
  return buf;
}

// Checks that both sides do the same work: COBOL's edited texts of every
// field against our decoded values, and the fields COBOL encodes from the
// edited items against ours. Prints the counts of differences.
void Check(CobolRun& cobol) {
  if (!cobol.Run("check")) {
    printf("COBOL check run failed\n");
    return;
  }
  const std::string chk = cobol.Read("check.bin");
  constexpr int kEd = 11;
  constexpr int kChkLen = 3 * kEd + kRecLen;
  Data& d = Shared();
  const long n = static_cast<long>(chk.size() / kChkLen);
  long decode_diff = 0, decimal_diff = 0;
  long double_diff[3] = {0, 0, 0};
  const Field fields[] = {kPack, kZone, kBin};
  const int enc_off[] = {3 * kEd, 3 * kEd + kPackLen, 3 * kEd + kPackLen + kZoneLen};
  for (long i = 0; i < n && i < kValues; ++i) {
    const char* rec = chk.data() + i * kChkLen;
    for (int f = 0; f < 3; ++f) {
      const ZQDType& t = TypeOf(d, fields[f]);
      double v = 0;
      ZQDecimal x;
      t.Input(d.records, i * kRecLen + OffsetOf(fields[f]), v);
      t.Input(d.records, i * kRecLen + OffsetOf(fields[f]), x);
      const std::string cobol_text(rec + f * kEd, kEd);
      if (Edited(v) != cobol_text || Edited(static_cast<double>(x)) != cobol_text) ++decode_diff;
      ZQString a, b;
      t.Output(a, d.values[i]);
      t.Output(b, d.decimals[i]);
      const std::string cobol_field(rec + enc_off[f], t.Length());
      if (std::string(a.c_str(), a.length()) != cobol_field) ++double_diff[f];
      if (std::string(b.c_str(), b.length()) != cobol_field) ++decimal_diff;
    }
  }
  // A binary field written from a double truncates value x 10^scale, which
  // the nearest double may put just below the whole number COBOL rounds to.
  printf("COBOL check: %ld of %d records; decode differences %ld; encode differences: decimal %ld, "
         "double %ld packed, %ld zoned, %ld binary (truncated)\n",
         n, kValues, decode_diff, decimal_diff, double_diff[0], double_diff[1], double_diff[2]);
}

void Report() {
  const char* names[] = {"packed", "zoned", "binary"};
  const char* modes[] = {"pack", "zone", "bin"};
  std::string exe;
#ifdef ZQ_COBOL_BENCH
  exe = ZQ_COBOL_BENCH;
#endif
  const bool have_cobol = !exe.empty() && access(exe.c_str(), X_OK) == 0;
  CobolRun cobol(have_cobol ? exe : "");
  if (have_cobol && cobol.ok()) Check(cobol);
  const double base = have_cobol && cobol.ok() ? cobol.Time("load") : 0;
  printf("\n%-8s %-7s %12s %12s %12s %10s %10s\n", "field", "op", "ns(double)", "ns(decimal)",
         "ns(COBOL)", "x(double)", "x(decimal)");
  for (int f = 0; f < 3; ++f) {
    for (int op = 0; op < 2; ++op) {
      const Field fd = static_cast<Field>(f);
      const double ns_d = 1e9 / kValues * Seconds([&] {
                            benchmark::DoNotOptimize(op == 0 ? DecodeDouble(fd) : EncodeDouble(fd));
                          });
      const double ns_x =
          1e9 / kValues * Seconds([&] {
            benchmark::DoNotOptimize(op == 0 ? DecodeDecimal(fd) : EncodeDecimal(fd));
          });
      double ns_c = 0;
      if (have_cobol && cobol.ok()) {
        const std::string mode = std::string(modes[f]) + (op == 0 ? "-decode" : "-encode");
        ns_c = (cobol.Time(mode) - base) * 1e9 / (kValues * kCobolPasses);
      }
      if (ns_c > 0) {
        printf("%-8s %-7s %12.1f %12.1f %12.1f %10.2f %10.2f\n", names[f],
               op == 0 ? "decode" : "encode", ns_d, ns_x, ns_c, ns_c / ns_d, ns_c / ns_x);
      } else {
        printf("%-8s %-7s %12.1f %12.1f %12s %10s %10s\n", names[f], op == 0 ? "decode" : "encode",
               ns_d, ns_x, "n/a", "-", "-");
      }
    }
  }
  printf("(x = GnuCOBOL's time per field divided by ours; the target is 2 or more)\n");
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  Report();
  benchmark::Shutdown();
  return 0;
}
