// ZQQuadWord: widths, wrap-around and text.
#include "zq/quadword.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace {

std::string Narrow(ZQQuadWord const& q) {
  char buf[ZQQuadWord::kPrintSize];
  return q.Print(buf);
}

std::string Wide(ZQQuadWord const& q) {
  unsigned short buf[ZQQuadWord::kPrintSize + 4];
  std::memset(buf, 0xff, sizeof buf);
  q.Print(buf);
  std::string s;
  for (int i = 0; buf[i] != 0 && i < ZQQuadWord::kPrintSize; ++i) {
    s += static_cast<char>(buf[i]);
  }
  return s;
}

TEST(QuadWord, ConstructionAndWords) {
  struct Case {
    ZQQuadWord q;
    long long value;
    long lo;
    long hi;
  } cases[] = {
      {ZQQuadWord(static_cast<short>(-1)), -1, -1, -1},
      {ZQQuadWord(-1), -1, -1, -1},
      {ZQQuadWord(-1L), -1, -1, -1},
      {ZQQuadWord(4294967295UL), 4294967295LL, -1, 0},
      // The documented long is 32-bit: the low 32 bits, sign-extended.
      {ZQQuadWord(static_cast<long>(0x180000000LL)), INT32_MIN, INT32_MIN, -1},
      {ZQQuadWord(static_cast<unsigned long>(0x1FFFFFFFFULL)), 0xFFFFFFFFLL, -1,
       0},
      {ZQQuadWord(-2.9), -2, -2, -1},
      {ZQQuadWord(1e15 + 0.5), 1000000000000000LL, -1530494976, 232830},
      {ZQQuadWord(std::nan("")), 0, 0, 0},
      {ZQQuadWord(1e30), INT64_MAX, -1, INT32_MAX},
      {ZQQuadWord(-1e30), INT64_MIN, 0, INT32_MIN},
      {ZQQuadWord(), 0, 0, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.q.Value(), c.value);
    EXPECT_EQ(c.q.LoVal(), c.lo) << c.value;
    EXPECT_EQ(c.q.HiVal(), c.hi) << c.value;
    EXPECT_EQ(static_cast<long>(c.q), c.lo);
    EXPECT_EQ(static_cast<int>(c.q), static_cast<int>(c.lo));
    EXPECT_EQ(static_cast<unsigned long>(c.q), static_cast<uint32_t>(c.lo));
    EXPECT_EQ(static_cast<short>(c.q), static_cast<short>(c.lo));
    EXPECT_EQ(static_cast<double>(c.q), static_cast<double>(c.value));
    long long raw;
    std::memcpy(&raw, c.q.RawData(), 8);
    EXPECT_EQ(raw, c.value);
  }

  ZQQuadWord q;
  q = static_cast<short>(-1);
  EXPECT_EQ(q.Value(), -1);
  q = 4294967295UL;
  EXPECT_EQ(q.HiVal(), 0);
  q = -7L;
  EXPECT_EQ(q.Value(), -7);
  q = 12;
  EXPECT_EQ(q.Value(), 12);
  q = -1e19;
  EXPECT_EQ(q.Value(), INT64_MIN);
  ZQQuadWord copy(q);
  EXPECT_EQ(std::memcmp(copy.RawData(), q.RawData(), 8), 0);
}

TEST(QuadWord, ArithmeticWrapsIn64Bits) {
  std::mt19937_64 rng(5);
  for (int n = 0; n < 20000; ++n) {
    int64_t a = static_cast<int64_t>(rng());
    int64_t b = static_cast<int64_t>(rng());
    int32_t s = static_cast<int32_t>(rng());
    ZQQuadWord q(static_cast<long long>(a));
    q += ZQQuadWord(static_cast<long long>(b));
    ASSERT_EQ(q.Value(), static_cast<int64_t>(static_cast<uint64_t>(a) +
                                              static_cast<uint64_t>(b)));
    q = ZQQuadWord(static_cast<long long>(a));
    q += static_cast<long>(s);
    ASSERT_EQ(q.Value(), static_cast<int64_t>(
                             static_cast<uint64_t>(a) +
                             static_cast<uint64_t>(static_cast<int64_t>(s))));
    q = ZQQuadWord(static_cast<long long>(a));
    q *= static_cast<long>(s);
    __int128 product = static_cast<__int128>(a) * s;
    ASSERT_EQ(q.Value(), static_cast<int64_t>(static_cast<uint64_t>(
                             static_cast<unsigned __int128>(product))));
  }
  // A 64-bit long argument counts with its low 32 bits only.
  ZQQuadWord q(10);
  q += static_cast<long>(0x100000001LL);
  EXPECT_EQ(q.Value(), 11);
  q *= static_cast<long>(0x1FFFFFFFFLL);
  EXPECT_EQ(q.Value(), -11);
}

TEST(QuadWord, PrintsDecimalText) {
  const long long fixed[] = {0, -1, 42, INT64_MIN, INT64_MAX, -4294967296LL};
  for (long long v : fixed) {
    EXPECT_EQ(Narrow(ZQQuadWord(v)), std::to_string(v));
    EXPECT_EQ(Wide(ZQQuadWord(v)), std::to_string(v));
  }
  EXPECT_EQ(Narrow(ZQQuadWord(static_cast<long long>(INT64_MIN))),
            "-9223372036854775808");
  std::mt19937_64 rng(17);
  for (int n = 0; n < 2000; ++n) {
    long long v = static_cast<long long>(rng()) >> (rng() % 64);
    ASSERT_EQ(Narrow(ZQQuadWord(v)), std::to_string(v));
    ASSERT_EQ(Wide(ZQQuadWord(v)), std::to_string(v));
  }
}

}  // namespace
