// ZQQuadWord: widths, wrap-around and text.
#include "zq/quadword.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace {

// Builds and assigns `v`; both hold `value`, whose words are `lo` and `hi`.
template <class T>
void ExpectQuad(T v, long long value, long lo, long hi) {
  SCOPED_TRACE(testing::Message() << value << " from a " << sizeof(T) << "-byte argument");
  ZQQuadWord q(v), assigned(99LL);
  assigned = v;
  long long raw;
  std::memcpy(&raw, q.RawData(), 8);
  EXPECT_EQ(raw, value);
  EXPECT_EQ(std::memcmp(assigned.RawData(), q.RawData(), 8), 0);
  EXPECT_EQ(q.Value(), value);
  EXPECT_EQ(q.LoVal(), lo);
  EXPECT_EQ(q.HiVal(), hi);
  EXPECT_EQ(static_cast<long>(q), lo);
  EXPECT_EQ(static_cast<int>(q), static_cast<int>(lo));
  EXPECT_EQ(static_cast<unsigned long>(q), static_cast<uint32_t>(lo));
  EXPECT_EQ(static_cast<short>(q), static_cast<short>(lo));
  EXPECT_EQ(static_cast<double>(q), static_cast<double>(value));
}

TEST(QuadWord, ConstructionAndWords) {
  ExpectQuad(short{-1}, -1, -1, -1);
  ExpectQuad(-1, -1, -1, -1);
  ExpectQuad(-7L, -7, -7, -1);
  ExpectQuad(4294967295UL, 4294967295LL, -1, 0);
  // The documented long is 32-bit: the low 32 bits, sign-extended.
  ExpectQuad(long{0x180000000LL}, INT32_MIN, INT32_MIN, -1);
  ExpectQuad(0x1FFFFFFFFUL, 0xFFFFFFFFLL, -1, 0);
  ExpectQuad(-2.9, -2, -2, -1);
  ExpectQuad(1e15 + 0.5, 1000000000000000LL, -1530494976, 232830);
  ExpectQuad(std::nan(""), 0, 0, 0);
  ExpectQuad(1e30, INT64_MAX, -1, INT32_MAX);
  ExpectQuad(-1e19, INT64_MIN, 0, INT32_MIN);
  ExpectQuad(ZQQuadWord(), 0, 0, 0);
  ExpectQuad(ZQQuadWord(-3), -3, -3, -1);
}

TEST(QuadWord, ArithmeticWrapsAndPrints) {
  auto low64 = [](unsigned __int128 x) { return static_cast<int64_t>(static_cast<uint64_t>(x)); };
  const long long fixed[] = {0, -1, 42, INT64_MIN, INT64_MAX, -4294967296LL};
  std::mt19937_64 rng(5);
  for (int n = 0; n < 20000; ++n) {
    int64_t a = n < 6 ? fixed[n] : static_cast<int64_t>(rng()) >> (rng() % 64);
    int64_t b = static_cast<int64_t>(rng());
    int32_t s = static_cast<int32_t>(rng());
    ZQQuadWord v{static_cast<long long>(a)}, q(v), r(v), p(v);
    q += ZQQuadWord(static_cast<long long>(b));
    r += static_cast<long>(s);
    p *= static_cast<long>(s);
    ASSERT_EQ(q.Value(), low64(static_cast<unsigned __int128>(a) + b));
    ASSERT_EQ(r.Value(), low64(static_cast<unsigned __int128>(a) + s));
    ASSERT_EQ(p.Value(), low64(static_cast<__int128>(a) * s));
    char narrow[ZQQuadWord::kPrintSize];
    unsigned short wide[ZQQuadWord::kPrintSize + 4];
    std::memset(wide, 0xff, sizeof wide);
    ASSERT_STREQ(v.Print(narrow), std::to_string(a).c_str());
    v.Print(wide);
    std::string w;
    for (int i = 0; i < ZQQuadWord::kPrintSize && wide[i] != 0; ++i) w += char(wide[i]);
    ASSERT_EQ(w, std::to_string(a));
  }
  // A 64-bit long argument counts with its low 32 bits only.
  ZQQuadWord q(10);
  q += static_cast<long>(0x100000001LL);
  EXPECT_EQ(q.Value(), 11);
  q *= static_cast<long>(0x1FFFFFFFFLL);
  EXPECT_EQ(q.Value(), -11);
}

}  // namespace
