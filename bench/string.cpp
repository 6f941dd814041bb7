// ZQString append throughput beside std::string: one byte at a time and 16
// bytes at a time, building strings of several final lengths from empty.
#include <string>

#include <benchmark/benchmark.h>

#include "zq/zqstring.h"

namespace {

const char kChunk[17] = "0123456789abcdef";

void BM_ZQString_AppendByte(benchmark::State& state) {
  const int64_t n = state.range(0);
  for (auto _ : state) {
    ZQString s;
    for (int64_t i = 0; i < n; ++i) s += static_cast<char>('a' + (i & 15));
    benchmark::DoNotOptimize(s.c_str());
  }
  state.SetBytesProcessed(state.iterations() * n);
}

void BM_StdString_AppendByte(benchmark::State& state) {
  const int64_t n = state.range(0);
  for (auto _ : state) {
    std::string s;
    for (int64_t i = 0; i < n; ++i) s += static_cast<char>('a' + (i & 15));
    benchmark::DoNotOptimize(s.data());
  }
  state.SetBytesProcessed(state.iterations() * n);
}

void BM_ZQString_Append16(benchmark::State& state) {
  const int64_t n = state.range(0);
  for (auto _ : state) {
    ZQString s;
    for (int64_t i = 0; i < n; i += 16) s.Append(kChunk, 16, 0);
    benchmark::DoNotOptimize(s.c_str());
  }
  state.SetBytesProcessed(state.iterations() * n);
}

void BM_StdString_Append16(benchmark::State& state) {
  const int64_t n = state.range(0);
  for (auto _ : state) {
    std::string s;
    for (int64_t i = 0; i < n; i += 16) s.append(kChunk, 16);
    benchmark::DoNotOptimize(s.data());
  }
  state.SetBytesProcessed(state.iterations() * n);
}

// Final lengths: inline-sized, at the switch to linear growth, and large
// enough that the linear steps of 1,024 bytes dominate.
#define ZQ_LENGTHS ->Arg(16)->Arg(1024)->Arg(64 << 10)->Arg(256 << 10)

BENCHMARK(BM_ZQString_AppendByte) ZQ_LENGTHS;
BENCHMARK(BM_StdString_AppendByte) ZQ_LENGTHS;
BENCHMARK(BM_ZQString_Append16) ZQ_LENGTHS;
BENCHMARK(BM_StdString_Append16) ZQ_LENGTHS;

}  // namespace

BENCHMARK_MAIN();
