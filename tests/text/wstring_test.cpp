// ZQWString: what differs from ZQString (units, escapes, widening); the
// members the two share are tested for both classes with ZQString.
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using zqtest::FromLE;
using zqtest::Iconv;
using zqtest::Std;
using zqtest::U16;

U16 W(const char16_t* s) {
  U16 out;
  for (; *s; ++s) out += static_cast<unsigned short>(*s);
  return out;
}

// Editing is shared with ZQString and tested for both classes there; here
// only that zero units and units above 0x7FFF pass through it unharmed.
TEST(ZQWStringTest, KeepsEveryUnit) {
  const U16 z = {'a', 0, 0xFFFF, 'b'};
  ZQWString e(z.data(), 4);
  EXPECT_EQ(Std(e), z);
  e.Insert(1, W(u"\u00e9\u4e2d").c_str());
  EXPECT_EQ(Std(e), (U16{'a', 0xE9, 0x4E2D, 0, 0xFFFF, 'b'}));
  e.Append(e, 2, 4);
  e.StripChars(false, true, 'b');
  e.Replace(0, 0x8001);
  EXPECT_EQ(Std(e), (U16{0x8001, 0xE9, 0x4E2D, 0, 0xFFFF, 'b', 0xFFFF}));
  e.CopyTo(e, 3, 0);
  EXPECT_EQ(Std(e), (U16{0}));
  e = static_cast<unsigned short>(0xFFFE);
  EXPECT_EQ(e(), 0xFFFE);
}

TEST(ZQWStringTest, PrintAndExtract) {
  const U16 in = {0x0001, 0x00E9, 0, '\t', '\'', '\\', 0x001F, 0x007F, 0xFFFF, 'A'};
  ZQWString out;
  ZQWString(in.data(), static_cast<int>(in.size())).Print(out, true);
  EXPECT_EQ(Std(out), W(u"'\\x0001\u00e9\\0\\t\\'\\\\\\x001f\u007f\uffffA'"));
  ZQWString plain;
  ZQWString(W(u"\n").c_str()).Print(plain, false);
  EXPECT_EQ(Std(plain), W(u"\\x000a"));

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

  std::mt19937 rng(5);
  for (int i = 0; i < 300; ++i) {
    U16 units(rng() % 30, 0);
    // Zero does not survive ("\0" reads back as the digit); all else does.
    for (auto& u : units) u = static_cast<unsigned short>(1 + rng() % 0xFFFF);
    ZQWString printed, back;
    ZQWString(units.data(), static_cast<int>(units.size())).Print(printed, true);
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

  // UTF-8 against iconv; one sequence per unit: a 4-byte sequence keeps the
  // low 16 bits of its value, a cut-short or over-long lead ends the text,
  // zero bytes count.
  const std::string utf8 = "a\xc3\xa9\xe2\x82\xac\xe4\xb8\xad\xef\xbf\xbd z";
  const U16 basic = FromLE(Iconv("UTF-16LE", "UTF-8")(utf8));
  struct {
    std::string in;
    int n;
    U16 want;
  } cases[] = {{utf8, -1, basic},
               {"x\xf0\x9f\x98\x80y", -1, {'x', 0xF600, 'y'}},
               {"ab\xe2\x82", -1, W(u"ab")},
               {"ab\xf8\x88\x80\x80\x80zz", -1, W(u"ab")},
               {std::string("a\0b", 3), 3, {'a', 0, 'b'}}};
  for (const auto& c : cases) {
    w.Assign(c.in.c_str(), ZQ_CSET_UTF8, c.n);
    EXPECT_EQ(Std(w), c.want);
  }
  w.Assign(ZQString(utf8.c_str()), ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), basic);

  // CP1252 byte by byte (a zero byte inside).
  const std::string cp("a\x80\x9c\xe9\x99", 5), with_zero = cp + std::string(1, '\0') + cp;
  const U16 want = FromLE(Iconv("UTF-16LE", "CP1252")(cp));
  w.Assign(with_zero.data(), ZQ_CSET_CP1252, static_cast<int>(with_zero.size()));
  EXPECT_EQ(Std(w), want + U16(1, 0) + want);

  // UCS-2: two bytes per unit, least significant first, zero units kept.
  const U16 units = {0x4E2D, 0, 'a', 0xFFFF};
  ZQString bytes;
  bytes.Assign(units.data(), ZQ_CSET_UCS2, 4);
  EXPECT_EQ(Std(bytes), std::string("\x2d\x4e\0\0a\0\xff\xff", 8));
  w.Assign(bytes, ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), units);
  w.Assign("ab\x01", ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), (U16{0x6261, 0x01}));
}

}  // namespace
