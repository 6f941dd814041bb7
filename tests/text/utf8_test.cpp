// The UTF-8 routines of ZQGlob, against glibc's iconv where the forms are
// standard, and on the lenient and edge behaviour where they are not.
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/zqglob.h"

namespace {

using zqtest::LE;
using zqtest::U16;
using Bytes = std::basic_string<unsigned char>;

// Random UTF-16 text with surrogate pairs but no lone surrogates or zeros.
U16 RandomText(std::mt19937& rng, int n) {
  U16 t;
  while (static_cast<int>(t.size()) < n) {
    uint32_t cp;
    switch (rng() % 4) {
      case 0: cp = 1 + rng() % 0x7F; break;
      case 1: cp = 0x80 + rng() % 0x780; break;
      case 2: cp = 0x800 + rng() % 0xF800; break;
      default: cp = 0x10000 + rng() % 0x100000; break;
    }
    if (cp >= 0xD800 && cp <= 0xDFFF) continue;
    if (cp < 0x10000) {
      t += static_cast<unsigned short>(cp);
    } else {
      t += static_cast<unsigned short>(0xD800 + ((cp - 0x10000) >> 10));
      t += static_cast<unsigned short>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    }
  }
  return t;
}

// Random text both ways through the buffer routines, against iconv.
TEST(Utf8Test, BuffersMatchIconv) {
  std::mt19937 rng(1);
  zqtest::Iconv to_utf8("UTF-8", "UTF-16LE");
  for (int i = 0; i < 300; ++i) {
    U16 text = RandomText(rng, static_cast<int>(rng() % 40));
    std::string want = to_utf8(LE(text));
    std::vector<unsigned char> out(want.size() + 1, 0xAA);
    int n = ZQGlob::UnicodeToUTF8(text.data(), static_cast<int>(text.size()), out.data(),
                                  static_cast<int>(out.size()));
    ASSERT_EQ(n, static_cast<int>(want.size()));
    ASSERT_EQ(std::string(reinterpret_cast<char*>(out.data()), n + 1), want + '\0');
    std::vector<unsigned short> back(text.size() + 1, 0xAAAA);
    n = ZQGlob::UTF8ToUnicode(reinterpret_cast<const unsigned char*>(want.data()),
                              static_cast<int>(want.size()), back.data(),
                              static_cast<int>(back.size()));
    ASSERT_EQ(n, static_cast<int>(text.size()));
    ASSERT_EQ(U16(back.data(), n + 1), text + U16(1, 0));
  }
}

TEST(Utf8Test, DecodeBufferEdges) {
  struct {
    Bytes in;
    int cap;
    int want;
    U16 units;
  } cases[] = {
      {{0xF0, 0x9F, 0x98, 0x80}, 8, 2, {0xD83D, 0xDE00}},
      {{0xF8, 0x88, 0x80, 0x80, 0x80}, 8, -2, {}},
      {{0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}, 8, -2, {}},
      {{'a', 0xE2, 0x82}, 8, -1, {}},
      {{0xF4, 0x90, 0x80, 0x80}, 8, -2, {}},  // above 0x10FFFF
      {{0xF4, 0x8F, 0xBF, 0xBF}, 8, 2, {0xDBFF, 0xDFFF}},
      {{0xC0, 0x80}, 8, 1, {0x0000}},         // overlong forms are taken
      {{0xC3, 0x41}, 8, 1, {0x0081}},         // trail bytes are not checked
      {{0x80, 'b'}, 8, 2, {0x0080, 'b'}},     // a stray trail byte is a unit
      {{'a', 0, 'b'}, 8, 3, {'a', 0, 'b'}},
      {{'a', 'b', 'c'}, 3, -2, {}},           // no room for the zero unit
      {{'a', 'b', 'c'}, 4, 3, {'a', 'b', 'c'}},
      {{0xF0, 0x9F, 0x98, 0x80}, 2, -2, {}},  // the pair needs two units
      {{}, 1, 0, {}},
  };
  for (const auto& c : cases) {
    std::vector<unsigned short> out(16, 0xAAAA);
    int n = ZQGlob::UTF8ToUnicode(c.in.data(), static_cast<int>(c.in.size()),
                                  out.data(), c.cap);
    EXPECT_EQ(n, c.want) << testing::PrintToString(c.in);
    if (n >= 0) {
      EXPECT_EQ(U16(out.data(), n), c.units);
      EXPECT_EQ(out[n], 0);
    }
    for (size_t i = c.cap; i < out.size(); ++i) ASSERT_EQ(out[i], 0xAAAA);
  }
  unsigned short out[4];
  EXPECT_EQ(ZQGlob::UTF8ToUnicode(reinterpret_cast<const unsigned char*>("h\xc3\xa9"), -1,
                                  out, 4),
            2);
  EXPECT_EQ(out[1], 0xE9);
  EXPECT_EQ(ZQGlob::UTF8ToUnicode(nullptr, 5, out, 4), 0);
  EXPECT_EQ(ZQGlob::UTF8ToUnicode(reinterpret_cast<const unsigned char*>("a"), 1,
                                  nullptr, 4),
            -2);
}

TEST(Utf8Test, DecodeOneSequence) {
  struct {
    Bytes in;
    int want;
    unsigned short unit;
  } cases[] = {
      {{'A'}, 1, 'A'},
      {{0xC3, 0xA9}, 2, 0xE9},
      {{0xE2, 0x82, 0xAC}, 3, 0x20AC},
      {{0xF0, 0x9F, 0x98, 0x80}, 4, 0xF600},  // low 16 bits of 0x1F600
      {{0xF8, 0x88, 0x80, 0x80, 0x80}, -1, 0x1111},
      {{0xFF, 0, 0, 0, 0, 0}, -1, 0x1111},
  };
  for (const auto& c : cases) {
    unsigned short u = 0x1111;
    EXPECT_EQ(ZQGlob::UTF8ToUnicode(c.in.data(), u), c.want);
    EXPECT_EQ(u, c.unit);
  }
  struct {
    unsigned char lead;
    int want;
  } leads[] = {{0x00, 1}, {0x7F, 1}, {0x80, 1}, {0xBF, 1}, {0xC0, 2}, {0xDF, 2},
               {0xE0, 3}, {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 5}, {0xFB, 5},
               {0xFC, 6}, {0xFF, 6}};
  for (const auto& l : leads) EXPECT_EQ(ZQGlob::BytesInUTF8(l.lead), l.want) << int(l.lead);
}

TEST(Utf8Test, EncodeOneUnitMatchesIconv) {
  // Every unit outside the surrogates, in one pass against iconv.
  U16 all;
  for (unsigned u = 1; u <= 0xFFFF; ++u) {
    if (u < 0xD800 || u > 0xDFFF) all += static_cast<unsigned short>(u);
  }
  std::string got;
  for (unsigned short u : all) {
    unsigned char out[8] = {0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA};
    int n = ZQGlob::UnicodeToUTF8(u, out);
    ASSERT_TRUE(n >= 1 && n <= 3 && out[n] == 0) << u;
    got.append(reinterpret_cast<char*>(out), n);
  }
  EXPECT_EQ(got, zqtest::Iconv("UTF-8", "UTF-16LE")(LE(all)));

  unsigned char out[8] = {0xAA, 0xAA, 0xAA, 0xAA};
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(0x0000, out), 1);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(0xDC00, out), 3);
  EXPECT_EQ(Bytes(out, 3), (Bytes{0xED, 0xB0, 0x80}));
  unsigned char keep[4] = {0xAA, 0xAA, 0xAA, 0xAA};
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(0xD800, keep), -1);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(0xDBFF, keep), -1);
  EXPECT_EQ(Bytes(keep, 4), Bytes(4, 0xAA));

  // The buffer form: a lone high surrogate fails, a lone low one is three
  // bytes, and the terminator needs room.
  unsigned char buf[16];
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(U16{'a', 0xD800, 'b'}.data(), 3, buf, 16), -1);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(U16{0xDC00}.data(), 1, buf, 16), 3);
  const U16 euro = {0x20AC, 0x20AC};
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(euro.data(), 2, buf, 6), -2);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(euro.data(), 2, buf, 7), 6);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(euro.c_str(), -1, buf, 7), 6);
}

}  // namespace
