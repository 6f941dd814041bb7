// ZQWString: the 16-bit differences (units, escapes, widening) and a pass
// over the shared editing members in units.
#include <iconv.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using U16 = std::basic_string<unsigned short>;

U16 W(const char16_t* s) {
  U16 out;
  for (; *s; ++s) out += static_cast<unsigned short>(*s);
  return out;
}

U16 Std(const ZQWString& s) {
  U16 out;
  s.AssignToStd(out);
  return out;
}

template <typename S>
bool IsInline(const S& s) {
  auto p = reinterpret_cast<const char*>(s.c_str());
  auto b = reinterpret_cast<const char*>(&s);
  return p >= b && p < b + sizeof(S);
}

// glibc's iconv from `from` to UTF-16LE, as units.
U16 IconvToUnits(const char* from, const std::string& in) {
  iconv_t cd = iconv_open("UTF-16LE", from);
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
  std::string out(in.size() * 4 + 16, '\0');
  char* src = const_cast<char*>(in.data());
  size_t left = in.size();
  char* dst = out.data();
  size_t room = out.size();
  EXPECT_NE(iconv(cd, &src, &left, &dst, &room), static_cast<size_t>(-1));
  iconv_close(cd);
  out.resize(out.size() - room);
  U16 units;
  for (size_t i = 0; i + 1 < out.size(); i += 2) {
    units += static_cast<unsigned short>(static_cast<unsigned char>(out[i]) |
                                         static_cast<unsigned char>(out[i + 1]) << 8);
  }
  return units;
}

TEST(ZQWStringTest, GrowthInUnits) {
  ZQWString s;
  EXPECT_EQ(s.capacity(), 32);
  std::vector<long> caps = {32};
  const unsigned short x = 'x';
  for (int i = 1; i <= 2100; ++i) {
    s.Append(&x, 1, 0);
    ASSERT_EQ(s.c_str()[i], 0);
    if (i < 32) {
      ASSERT_TRUE(IsInline(s)) << i;
    }
    if (i == 32) {
      EXPECT_FALSE(IsInline(s));
      EXPECT_EQ(s.capacity(), 32);
    }
    if (s.capacity() != caps.back()) caps.push_back(s.capacity());
  }
  EXPECT_EQ(caps, (std::vector<long>{32, 64, 128, 256, 512, 1024, 2048, 3072}));
  EXPECT_EQ(Std(s), U16(2100, 'x'));
}

TEST(ZQWStringTest, EditingInUnits) {
  ZQWString s(W(u"abcdefghij").c_str());
  s.Remove(5, 2);
  EXPECT_EQ(Std(s), W(u"abhij"));
  s.Remove(10, 2);
  EXPECT_EQ(Std(s), W(u"ab"));
  EXPECT_FALSE(s.Truncate(3));
  EXPECT_EQ(s[2], 0);
  EXPECT_EQ(s[-1L], 0);

  // Embedded zero units and units above 0x7FFF.
  const U16 z = {'a', 0, 0xFFFF, 'b'};
  ZQWString e(z.data(), 4);
  EXPECT_EQ(e.length(), 4);
  EXPECT_EQ(Std(e), z);
  e.Insert(1, W(u"\u00e9\u4e2d").c_str());
  EXPECT_EQ(Std(e), (U16{'a', 0xE9, 0x4E2D, 0, 0xFFFF, 'b'}));
  e.Append(e, 2, 4);
  EXPECT_EQ(e.length(), 8);
  EXPECT_EQ(e[7], 'b');
  e.StripChars(false, true, 'b');
  EXPECT_EQ(e[e.length() - 1], 0xFFFF);
  e.CopyTo(e, 3, 0);
  EXPECT_EQ(Std(e), (U16{0}));

  ZQWString u;
  u = W(u"Mixed");
  u.ToUpper();
  EXPECT_EQ(Std(u), W(u"MIXED"));
  u.ToLower();
  EXPECT_EQ(Std(u), W(u"mixed"));
  u.Set('-', 3);
  u += static_cast<unsigned short>('>');
  EXPECT_EQ(Std(u + W(u"!").c_str()), W(u"--->!"));

  ZQWString c(W(u"ab").c_str());
  c.Seek(2);
  EXPECT_EQ(c.Peek(), -1);
  c.Rewind();
  EXPECT_EQ(c(), 'a');
  c = static_cast<unsigned short>(0xFFFE);
  EXPECT_EQ(c.Tell(), 0);
  EXPECT_EQ(c(), 0xFFFE);  // units come back as 0 to 65535
}

TEST(ZQWStringTest, UnsignedOrder) {
  // Oracle: std::basic_string<unsigned short> compares units as unsigned.
  std::mt19937 rng(3);
  const unsigned short alphabet[] = {0, 'a', 'b', 0x7FFF, 0x8000, 0xFFFF};
  std::vector<U16> pool;
  for (int i = 0; i < 150; ++i) {
    U16 r(rng() % 4, 0);
    for (auto& u : r) u = alphabet[rng() % 6];
    pool.push_back(r);
  }
  for (const auto& x : pool) {
    for (const auto& y : pool) {
      ZQWString a(x.data(), static_cast<int>(x.size()));
      ZQWString b(y.data(), static_cast<int>(y.size()));
      int want = x.compare(y);
      ASSERT_EQ(a == b, want == 0);
      ASSERT_EQ(a < b, want < 0);
      ASSERT_EQ(a > b, want > 0);
      ASSERT_EQ(a <= b, want <= 0);
      ASSERT_EQ(a >= b, want >= 0);
      ASSERT_EQ(a != b, want != 0);
    }
  }
  EXPECT_TRUE(ZQWString(W(u"\u7fff").c_str()) < W(u"\u8000").c_str());
  EXPECT_TRUE(ZQWString(W(u"ab").c_str()) < W(u"abc").c_str());
}

TEST(ZQWStringTest, PrintEscapes) {
  const U16 in = {0x0001, 0x00E9, 0, '\t', '\'', '\\', 0x001F, 0x007F, 0xFFFF, 'A'};
  ZQWString s(in.data(), static_cast<int>(in.size()));
  ZQWString out;
  s.Print(out, true);
  U16 want = W(u"'\\x0001\u00e9\\0\\t\\'\\\\\\x001f\u007f\uffffA'");
  EXPECT_EQ(Std(out), want);
  ZQWString plain;
  ZQWString(W(u"\n").c_str()).Print(plain, false);
  EXPECT_EQ(Std(plain), W(u"\\x000a"));
}

TEST(ZQWStringTest, ExtractTokens) {
  struct {
    const char16_t* src;
    U16 want;
    int next;
  } cases[] = {
      {u"\\x1234", {0x34}, -1},
      {u"\\x0041\\x41", W(u"AA"), -1},
      {u"\\x4g", {0x04}, -1},
      {u"\\65", W(u"65"), -1},  // no decimal escape: digits stand for themselves
      {u"\\n\\r\\t\\\\", W(u"\n\r\t\\"), -1},
      {u"  'a b'c", W(u"a b"), 'c'},
      {u"ab\tcd", W(u"ab"), '\t'},
      {u"'\u00e9\u4e2d' x", W(u"\u00e9\u4e2d"), ' '},
  };
  for (const auto& c : cases) {
    ZQWString src(W(c.src).c_str());
    ZQWString tok;
    EXPECT_TRUE(tok.Extract(src));
    EXPECT_EQ(Std(tok), c.want);
    EXPECT_EQ(src.Peek(), c.next);
  }
}

TEST(ZQWStringTest, PrintExtractRoundTrip) {
  std::mt19937 rng(5);
  for (int i = 0; i < 300; ++i) {
    U16 units(rng() % 30, 0);
    // Zero does not survive ("\0" reads back as the digit); all else does.
    for (auto& u : units) u = static_cast<unsigned short>(1 + rng() % 0xFFFF);
    ZQWString s(units.data(), static_cast<int>(units.size()));
    ZQWString printed;
    s.Print(printed, true);
    ZQWString back;
    back.Extract(printed);
    ASSERT_EQ(Std(back), units);
  }
}

TEST(ZQWStringTest, WidenFromBytes) {
  ZQWString w;
  // Code set 1: byte value = unit value.
  std::string latin("A\xe9\xff\x80z");
  w.Assign(latin.c_str(), ZQ_CSET_ISO8859_1);
  EXPECT_EQ(Std(w), (U16{'A', 0xE9, 0xFF, 0x80, 'z'}));
  w.Assign(latin.c_str(), ZQ_CSET_ISO8859_1, 2);
  EXPECT_EQ(Std(w), (U16{'A', 0xE9}));

  // UTF-8 of the basic plane against iconv.
  std::string utf8 = "a\xc3\xa9\xe2\x82\xac\xe4\xb8\xad\xef\xbf\xbd z";
  w.Assign(utf8.c_str(), ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), IconvToUnits("UTF-8", utf8));
  ZQString narrow(utf8.c_str());
  w.Assign(narrow, ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), IconvToUnits("UTF-8", utf8));
  // One sequence per unit: a 4-byte sequence keeps the low 16 bits of its
  // value; a cut-short or over-long lead ends the text; zero bytes count.
  w.Assign("x\xf0\x9f\x98\x80y", ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), (U16{'x', 0xF600, 'y'}));
  w.Assign("ab\xe2\x82", ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), W(u"ab"));
  w.Assign("ab\xf8\x88\x80\x80\x80zz", ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), W(u"ab"));
  w.Assign("a\0b", ZQ_CSET_UTF8, 3);
  EXPECT_EQ(Std(w), (U16{'a', 0, 'b'}));

  // CP1252 against iconv, whole-string and byte by byte (a zero byte inside).
  std::string cp("a\x80\x9c\xe9\x99", 5);
  w.Assign(cp.c_str(), ZQ_CSET_CP1252);
  U16 want = IconvToUnits("CP1252", cp);
  EXPECT_EQ(Std(w), want);
  std::string with_zero = cp + std::string(1, '\0') + cp;
  w.Assign(with_zero.data(), ZQ_CSET_CP1252, static_cast<int>(with_zero.size()));
  EXPECT_EQ(Std(w), want + U16(1, 0) + want);

  // UCS-2: two bytes per unit, least significant first, zero units kept.
  const U16 units = {0x4E2D, 0, 'a', 0xFFFF};
  ZQString bytes;
  bytes.Assign(units.data(), ZQ_CSET_UCS2, 4);
  EXPECT_EQ(std::string(bytes.c_str(), bytes.length()),
            std::string("\x2d\x4e\0\0a\0\xff\xff", 8));
  w.Assign(bytes, ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), units);
  w.Assign("ab\x01", ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), (U16{0x6261, 0x01}));

  // The narrowing and widening of every code set 1 byte are inverse.
  std::string all;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  w.Assign(all.c_str(), ZQ_CSET_ISO8859_1);
  ZQString back;
  back.Assign(w, ZQ_CSET_ISO8859_1);
  EXPECT_EQ(std::string(back.c_str(), back.length()), all);
}

}  // namespace
