// Code-page conversion throughput against the C library's iconv(3), on the
// same 64 MiB inputs: CP1252, Shift_JIS and UTF-8 to 16-bit units, and 16-bit
// units back to UTF-8. After the benchmarks it prints MB/s of both sides and
// the ratio for each conversion.
#include <iconv.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "zq/zqglob.h"

namespace {

constexpr size_t kInputBytes = 64u << 20;

// Converts with iconv once, for making inputs.
std::string IconvOnce(const char* to, const char* from, const std::string& in) {
  iconv_t cd = iconv_open(to, from);
  std::string out(in.size() * 4 + 16, '\0');
  char* ip = const_cast<char*>(in.data());
  size_t il = in.size();
  char* op = &out[0];
  size_t ol = out.size();
  iconv(cd, &ip, &il, &op, &ol);
  iconv_close(cd);
  out.resize(out.size() - ol);
  return out;
}

// Text of about kInputBytes bytes in `code`, made of characters drawn from
// `alphabet` (UTF-8), at most 64 MiB, without zero bytes.
std::string MakeInput(const char* code, const std::string& alphabet_utf8) {
  std::string units = IconvOnce("UTF-16LE", "UTF-8", alphabet_utf8);
  std::vector<std::string> chars;
  for (size_t i = 0; i + 1 < units.size(); i += 2) {
    std::string one = IconvOnce(code, "UTF-16LE", units.substr(i, 2));
    if (!one.empty()) chars.push_back(one);
  }
  std::mt19937 rng(1234);
  std::string text;
  text.reserve(kInputBytes + 8);
  while (text.size() + 4 < kInputBytes) text += chars[rng() % chars.size()];
  return text;
}

struct Inputs {
  std::string cp1252, sjis, utf8;
  std::vector<unsigned short> units;  // the UTF-8 text as units, zero-terminated
  std::vector<unsigned short> out_units;
  std::vector<char> out_bytes;

  Inputs() {
    std::string latin;
    for (int b = 0x20; b < 0x100; ++b) {
      if (b == 0x7F || (b >= 0x80 && b < 0xA0)) continue;
      latin += IconvOnce("UTF-8", "ISO-8859-1", std::string(1, static_cast<char>(b)));
    }
    latin += "€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ";
    cp1252 = MakeInput("CP1252", latin + "abcdefghijklmnopqrstuvwxyz     ");
    std::string japanese =
        "abcdefghij 0123456789 ｱｲｳｴｵ あいうえおかきくけこ アイウエオ 日本語漢字文字変換試験"
        "東京大阪京都情報処理装置";
    sjis = MakeInput("SHIFT_JIS", japanese);
    utf8 = MakeInput("UTF-8", latin + japanese + "Привет мир Ελληνικά");
    std::string u16 = IconvOnce("UTF-16LE", "UTF-8", utf8);
    units.resize(u16.size() / 2 + 1, 0);
    std::memcpy(units.data(), u16.data(), u16.size());
    out_units.resize(kInputBytes + 16);
    out_bytes.resize(kInputBytes * 2);
  }
};

Inputs& Data() {
  static Inputs* inputs = new Inputs;
  return *inputs;
}

void RunIconv(benchmark::State& state, const char* from, const char* to, const char* in,
              size_t len, char* out, size_t cap) {
  iconv_t cd = iconv_open(to, from);
  for (auto _ : state) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char* ip = const_cast<char*>(in);
    size_t il = len;
    char* op = out;
    size_t ol = cap;
    if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1)) {
      state.SkipWithError("iconv failed");
      break;
    }
    benchmark::DoNotOptimize(op);
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * len);
}

void ZqCp1252(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::MBStoWCS(d.out_units.data(), d.cp1252.c_str(),
                             static_cast<int>(d.out_units.size()), ZQ_CSET_CP1252);
    if (n != static_cast<int>(d.cp1252.size())) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.cp1252.size());
}

void IconvCp1252(benchmark::State& state) {
  Inputs& d = Data();
  RunIconv(state, "CP1252", "UTF-16LE", d.cp1252.data(), d.cp1252.size(),
           reinterpret_cast<char*>(d.out_units.data()), d.out_units.size() * 2);
}

void ZqShiftJis(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::MBStoWCS(d.out_units.data(), d.sjis.c_str(),
                             static_cast<int>(d.out_units.size()), ZQ_CSET_SHIFTJIS);
    if (n <= 0) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.sjis.size());
}

void IconvShiftJis(benchmark::State& state) {
  Inputs& d = Data();
  RunIconv(state, "SHIFT_JIS", "UTF-16LE", d.sjis.data(), d.sjis.size(),
           reinterpret_cast<char*>(d.out_units.data()), d.out_units.size() * 2);
}

void ZqUtf8ToUnits(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::UTF8ToUnicode(reinterpret_cast<const unsigned char*>(d.utf8.data()),
                                  static_cast<int>(d.utf8.size()), d.out_units.data(),
                                  static_cast<int>(d.out_units.size()));
    if (n <= 0) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.utf8.size());
}

void IconvUtf8ToUnits(benchmark::State& state) {
  Inputs& d = Data();
  RunIconv(state, "UTF-8", "UTF-16LE", d.utf8.data(), d.utf8.size(),
           reinterpret_cast<char*>(d.out_units.data()), d.out_units.size() * 2);
}

// The way back is measured in bytes of UTF-8 produced, so both directions
// count the same text.
void ZqUnitsToUtf8(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::UnicodeToUTF8(d.units.data(), static_cast<int>(d.units.size() - 1),
                                  reinterpret_cast<unsigned char*>(d.out_bytes.data()),
                                  static_cast<int>(d.out_bytes.size()));
    if (n <= 0) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.utf8.size());
}

// UTF-8 through the code-set routines (code set -3) rather than the
// whole-buffer decoder and encoder.
void ZqUtf8ToUnitsCodeSet(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::MBStoWCS(d.out_units.data(), d.utf8.c_str(),
                             static_cast<int>(d.out_units.size()), ZQ_CSET_UTF8);
    if (n <= 0) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.utf8.size());
}

void ZqUnitsToUtf8CodeSet(benchmark::State& state) {
  Inputs& d = Data();
  for (auto _ : state) {
    int n = ZQGlob::WCStoMBS(d.out_bytes.data(), d.units.data(),
                             static_cast<int>(d.out_bytes.size()), ZQ_CSET_UTF8);
    if (n <= 0) state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.utf8.size());
}

void IconvUnitsToUtf8(benchmark::State& state) {
  Inputs& d = Data();
  iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
  for (auto _ : state) {
    char* ip = reinterpret_cast<char*>(d.units.data());
    size_t il = (d.units.size() - 1) * 2;
    char* op = d.out_bytes.data();
    size_t ol = d.out_bytes.size();
    if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1)) {
      state.SkipWithError("iconv failed");
      break;
    }
    benchmark::DoNotOptimize(op);
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * d.utf8.size());
}

BENCHMARK(ZqCp1252)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(IconvCp1252)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ZqShiftJis)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(IconvShiftJis)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ZqUtf8ToUnits)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(IconvUtf8ToUnits)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ZqUnitsToUtf8)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ZqUtf8ToUnitsCodeSet)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ZqUnitsToUtf8CodeSet)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(IconvUnitsToUtf8)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Keeps the throughput of every run while printing as usual.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      auto it = run.counters.find("bytes_per_second");
      if (it != run.counters.end()) mbps_[run.run_name.function_name] = it->second.value / 1e6;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    static const char* const kPairs[][3] = {
        {"CP1252 -> units", "ZqCp1252", "IconvCp1252"},
        {"Shift_JIS -> units", "ZqShiftJis", "IconvShiftJis"},
        {"UTF-8 -> units", "ZqUtf8ToUnits", "IconvUtf8ToUnits"},
        {"units -> UTF-8", "ZqUnitsToUtf8", "IconvUnitsToUtf8"},
        {"UTF-8 -> units (cs -3)", "ZqUtf8ToUnitsCodeSet", "IconvUtf8ToUnits"},
        {"units -> UTF-8 (cs -3)", "ZqUnitsToUtf8CodeSet", "IconvUnitsToUtf8"},
    };
    std::printf("\n%-24s %12s %12s %8s\n", "conversion", "zq MB/s", "iconv MB/s", "ratio");
    for (const auto& pair : kPairs) {
      auto zq = mbps_.find(pair[1]);
      auto ic = mbps_.find(pair[2]);
      if (zq == mbps_.end() || ic == mbps_.end() || ic->second <= 0) continue;
      std::printf("%-24s %12.1f %12.1f %7.2fx\n", pair[0], zq->second, ic->second,
                  zq->second / ic->second);
    }
  }

 private:
  std::map<std::string, double> mbps_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Data();  // make the inputs before any timing
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
