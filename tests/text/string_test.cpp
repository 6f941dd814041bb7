// ZQString and ZQWString: shared members, quoting, conversion; small helpers.
#include <strings.h>
#include <wchar.h>

#include <clocale>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/strutil.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using zqtest::Iconv;
using zqtest::IsInline;
using zqtest::LE;
using zqtest::Std;
using zqtest::U16;

// A class's unit type, and a literal in it (16-bit: 0x80 up as 0xFF80 up).
template <typename S>
using Unit = std::remove_const_t<std::remove_pointer_t<decltype(std::declval<S>().c_str())>>;
template <typename S>
std::basic_string<Unit<S>> Lit(const std::string& s) {
  std::basic_string<Unit<S>> out;
  for (unsigned char c : s) out += static_cast<Unit<S>>(c < 0x80 ? c : c | (Unit<S>(~0) & ~0xFF));
  return out;
}

template <typename S>
class StringTest : public testing::Test {};
using StringTypes = testing::Types<ZQString, ZQWString>;
TYPED_TEST_SUITE(StringTest, StringTypes);

int Sign(int v) { return (v > 0) - (v < 0); }
U16 W(std::u16string_view s) { return U16(s.begin(), s.end()); }

TYPED_TEST(StringTest, ConstructionAndGrowth) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  EXPECT_TRUE(Std(S(nullptr)).empty() && Std(S(nullptr, 5)).empty());
  EXPECT_EQ(Std(S(L("abc").c_str(), 2)), L("ab"));
  EXPECT_EQ(Std(S(S(L(std::string("a\0b", 3)).c_str(), 3))), L(std::string("a\0b", 3)));
  // Constructors test length + 1 against the capacity: 30 units stay inline.
  EXPECT_TRUE(IsInline(S(L(std::string(30, 'a')).c_str())));
  S s31(L(std::string(31, 'a')).c_str());
  EXPECT_TRUE(!IsInline(s31) && s31.capacity() == 32 && s31.c_str()[31] == 0);

  // Appending: the 32nd unit leaves the inline area; a need equal to the
  // capacity moves to a fresh block of that capacity.
  S s;
  std::vector<long> caps = {s.capacity()};
  const Ch* prev = s.c_str();
  const Ch x = 'x';
  int moves_at_equal = 0;
  for (int i = 1; i <= 5200; ++i) {
    s.Append(&x, 1, 0);
    ASSERT_TRUE(s.length() == i && s.c_str()[i] == 0) << i;
    if (s.capacity() != caps.back()) caps.push_back(s.capacity());
    ASSERT_TRUE(i > 32 || (IsInline(s) == (i < 32) && s.capacity() == 32)) << i;
    if (i == s.capacity() && s.c_str() != prev) ++moves_at_equal;
    prev = s.c_str();
  }
  EXPECT_EQ(caps, (std::vector<long>{32, 64, 128, 256, 512, 1024, 2048, 3072, 4096, 5120, 6144}));
  EXPECT_EQ(moves_at_equal, 10);  // 32, 64, ..., 1024, 2048, ..., 5120
  EXPECT_EQ(Std(s), L(std::string(5200, 'x')));

  // operator+= of one unit reserves the terminator too: the 31st moves.
  S c(L(std::string(29, 'y')).c_str());
  EXPECT_TRUE(IsInline(c += Ch('y')));
  EXPECT_TRUE(!IsInline(c += Ch('y')) && c.capacity() == 32);

  // From capacity 1,024: a need of 1,500 gives 2,048, of 2,100 gives 3,072.
  for (auto [need, want] : {std::pair<int, long>{1500, 2048}, {2100, 3072}}) {
    S g;
    g.Pad('a', 600);
    ASSERT_EQ(g.capacity(), 1024);
    g.Pad('b', need - 600);
    EXPECT_TRUE(g.capacity() == want &&
                Std(g) == L(std::string(600, 'a') + std::string(need - 600, 'b')));
  }
  // Allocate reserves the terminator; the content survives growth.
  S a(L("keep").c_str());
  EXPECT_TRUE(a.Allocate(100) && a.capacity() == 128 && Std(a) == L("keep"));
}

// Each edit on a fresh string: its result (void: true) and the content after.
TYPED_TEST(StringTest, Editing) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  const S digits(L("0123456789").c_str());
  const std::string ten = "abcdefghij", q40(40, 'q');
  const struct {
    std::string src;
    std::function<bool(S&)> edit;
    std::string want;
    bool ok = true;
  } edits[] = {
      {ten, [](S& s) { return s.Remove(5, 2), true; }, "abhij"},
      {ten, [](S& s) { return s.Remove(10, 2), true; }, "ab"},
      {ten, [](S& s) { return s.Remove(7, 2), true; }, "abj"},
      {ten, [](S& s) { return s.Remove(1, 9), true; }, "abcdefghi"},
      {ten, [](S& s) { return s.Remove(1, 0), true; }, "bcdefghij"},
      {ten, [](S& s) { return s.Remove(0, 2), s.Remove(-1, 2), s.Remove(3, 10), true; }, ten},
      {ten, [](S& s) { return s.Remove(3, -1), true; }, ten},
      {ten, [](S& s) { return s.Truncate(12) || s.Truncate(-1); }, ten, false},
      {ten, [](S& s) { return s.Truncate(10) && s.Truncate(4); }, "abcd"},
      {"ab", [](S& s) { return s.Pad('-', 3) && s.Pad('-', 0) && s.Pad('-', -4); }, "ab---"},
      {"ab", [](S& s) { return s.Set('z', 2) && (s.Replace(1, 'q'), s.Replace(2, 'q'),
                                                 s.Replace(-1, 'q'), true); }, "zq"},
      {"**a**b**", [](S& s) { return s.StripChars(true, true, '*'), true; }, "a**b"},
      {"**a**b**", [](S& s) { return s.StripChars(true, false, '*'), true; }, "a**b**"},
      {"**a**b**", [](S& s) { return s.StripChars(false, true, '*'), true; }, "**a**b"},
      {"**a**b**", [](S& s) { return s.StripChars(false, false, '*'), true; }, "**a**b**"},
      {"****", [](S& s) { return s.StripChars(true, true, '*'), true; }, ""},
      {"MiXeD 123 z", [](S& s) { return s.ToUpper(), true; }, "MIXED 123 Z"},
      {"zz", [&](S& s) { return s.CopyN(L("abcdef").c_str(), 3, 1); }, "bcd"},
      {"zz", [&](S& s) { return s.CopyN(L("abcdef").c_str(), -1, 4); }, "ef"},
      // A negative rest, no source, or a source offset beyond its end.
      {"zz", [&](S& s) { return s.CopyN(L("abc").c_str(), -1, 5); }, "zz", false},
      {"zz", [&](S& s) { return s.CopyN(static_cast<const Ch*>(nullptr), 2, 0); }, "zz", false},
      {"zz", [&](S& s) { return s.CopyN(digits, 3, 10) || s.CopyN(s, 1, 0); }, "zz", false},
      {"zz", [&](S& s) { return s.CopyN(digits, 3, 8); }, "89"},  // at most the rest
      {"89", [&](S& s) { return s.Append(L("abc").c_str(), 2, 1); }, "89bc"},
      {"89", [&](S& s) { return s.Append(digits, -1, 7); }, "89789"},
      {"89", [&](S& s) { return s += S(L(std::string("x\0y", 3)).c_str(), 3), true; },
       std::string("89x\0y", 5)},
      {"ab", [&](S& s) { return s = s + S(L(std::string("c\0d", 3)).c_str(), 3), true; },
       std::string("abc\0d", 5)},
      {"mid", [&](S& s) { return s.Insert(1, L("XYZ").c_str(), 2, 1); }, "mYZid"},
      {"mid", [&](S& s) { return s.Insert(99, L("\xff").c_str()); }, "mid\xff"},
      {"mid", [&](S& s) { return s.Insert(-5, L("\xe9").c_str()); }, "\xe9mid"},
      {"mid", [&](S& s) { return s.Insert(1, digits, 2, 4); }, "m45id"},
      {"", [&](S& s) { return s.CopyTo(S(L("key=value;rest").c_str()), 4, ';'); }, "value;"},
      {"x;", [&](S& s) { return s.AppendTo(S(L("abc").c_str()), -3, ';'); }, "x;abc"},
      {"value;abc", [&](S& s) { return s.CopyTo(s, 6, 'z'), true; }, "abc"},
      // Sources inside the string itself, also across a growth step.
      {"0123456789abcdefghijklmnopqr", [](S& s) { return s.Append(s); },
       "0123456789abcdefghijklmnopqr0123456789abcdefghijklmnopqr"},
      {"abcdef", [](S& s) { return s.Insert(0, s.c_str() + 3), s = s.c_str() + 2, true; },
       "fabcdef"},
      {q40, [](S& s) { return s.Pad('q', 24) && s.Append(s.c_str(), 10, 0); }, q40 + q40.substr(6)},
      {"abc", [](S& s) { return s.Allocate(0x7FFFFFFF) || s.Pad('x', 0x7FFFFFFF); }, "abc", false},
      {"abc", [&](S& s) { return s.Append(L("xyz").c_str(), -1, -2) ||
                                 s.Insert(1, static_cast<const Ch*>(nullptr)); }, "abc", false},
      {"abc", [&](S& s) { return s.Append(S(L("q").c_str()), 1, 5) ||
                                 s.CopyN(S(L("q").c_str()), 1, -1); }, "abc", false},
      {"abc", [](S& s) { return s += static_cast<const Ch*>(nullptr), s.capacity() == 32; }, "abc"},
  };
  for (const auto& e : edits) {
    S s(L(e.src).c_str(), static_cast<int>(e.src.size()));
    EXPECT_EQ(e.edit(s), e.ok) << e.src << " -> " << e.want;
    EXPECT_EQ(Std(s), L(e.want)) << e.src << " -> " << e.want;
    EXPECT_TRUE(s.OK() && s.c_str()[s.length()] == 0);
  }
  // SetLength reaches into written buffer units, never beyond the capacity.
  S b;
  std::copy(digits.c_str(), digits.c_str() + 5, b.GetBuffer());
  b.SetLength(5);
  b.SetLength(33);
  b.SetLength(-2);
  EXPECT_EQ(Std(b), L("01234"));
}

TYPED_TEST(StringTest, ComparisonOrder) {
  using S = TypeParam;
  using Ch = Unit<S>;
  using Str = std::basic_string<Ch>;
  const auto L = Lit<S>;
  // Oracle: std::basic_string, which compares units unsigned, zeros included.
  const auto top = std::numeric_limits<std::make_unsigned_t<Ch>>::max();
  const Ch low = static_cast<Ch>(top / 2), high = static_cast<Ch>(top / 2 + 1);
  const std::vector<Str> pool = {
      L(""), L("a"), L("ab"), L("abc"), L("abd"), L(std::string("ab\0", 3)),
      L(std::string("a\0b", 3)), L("ab\xe9"), Str{low}, Str{high}, Str{low, 0}, Str{high, 'a'},
      Str{'a', high}, Str{'a', low}, Str(1, static_cast<Ch>(top))};
  for (const auto& x : pool) {
    for (const auto& y : pool) {
      S a(x.data(), static_cast<int>(x.size()));
      S b(y.data(), static_cast<int>(y.size()));
      int want = Sign(x.compare(y));
      // Against a plain pointer only the argument's zero ends the walk.
      int zwant = Sign(Str(x.c_str()).compare(y.c_str()));
      const bool got[] = {a == b, a != b, a < b, a > b, a <= b, a >= b,
                          a == y.c_str(), a < y.c_str(), a >= y.c_str()};
      const bool expect[] = {want == 0, want != 0, want < 0, want > 0, want <= 0, want >= 0,
                             zwant == 0, zwant < 0, zwant >= 0};
      ASSERT_TRUE(std::equal(got, got + 9, expect))
          << testing::PrintToString(x) << " vs " << testing::PrintToString(y);
    }
  }
  EXPECT_TRUE(S(L("").c_str()) == static_cast<const Ch*>(nullptr));
}

// Any units but zero (whose escape reads back otherwise) survive Print and Extract.
TYPED_TEST(StringTest, PrintThenExtract) {
  using Ch = Unit<TypeParam>;
  using Unsigned = std::make_unsigned_t<Ch>;
  std::mt19937 rng(11);
  for (int i = 0; i < 500; ++i) {
    std::basic_string<Ch> units(rng() % 40, 0);
    for (Ch& u : units) u = static_cast<Ch>(1 + rng() % std::numeric_limits<Unsigned>::max());
    TypeParam printed, back;
    TypeParam(units.data(), static_cast<int>(units.size())).Print(printed, true);
    EXPECT_TRUE(back.Extract(printed) && Std(back) == units && printed.Peek() == -1)
        << testing::PrintToString(Std(printed));
  }
}

TYPED_TEST(StringTest, IndexAndCursor) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  S s(L("a\xe9z").c_str());
  EXPECT_TRUE(s[0L] == 'a' && s[2] == 'z' && s[3L] == 0 && s[-1] == 0 && s[100] == 0);

  const int high = static_cast<std::make_unsigned_t<Unit<S>>>(L("\xe9")[0]);
  EXPECT_TRUE(s.Peek() == 'a' && s() == 'a' && s() == high && s.Tell() == 2);  // unsigned
  s.Previous();
  EXPECT_EQ(s.Peek(), high);
  s.Seek(99);
  EXPECT_TRUE(s.Tell() == 3 && s.Peek() == -1 && s() == -1 && s.Tell() == 3);
  s.Seek(-4);
  s.Previous();
  EXPECT_EQ(s.Tell(), 0);
  s.Seek(3);
  s.Truncate(1);  // a cursor left beyond the end reads as the end
  EXPECT_EQ(s.Peek(), -1);
  s.Rewind();
  EXPECT_EQ(s(), 'a');

  // Assignment resets the cursor.
  s.Seek(2);
  s = L(std::string("x\0y", 3));
  EXPECT_TRUE(Std(s) == L(std::string("x\0y", 3)) && s.Tell() == 0);
  s.Seek(1);
  s = Ch('c');
  EXPECT_TRUE(Std(s) == L("c") && s.Tell() == 0);
  s = static_cast<const Ch*>(nullptr);
  EXPECT_EQ(Std(s), L(""));
  S t(L("long enough to live in a heap block, surely").c_str());
  s = t;
  s = s;
  EXPECT_EQ(Std(s), Std(t));
}

TEST(QuotingTest, PrintAndExtract) {
  ZQString out("pre:");
  ZQString(std::string("\x00\x09\x27\x5c\x41\xe9", 6).c_str(), 6).Print(out, true);
  EXPECT_EQ(Std(out), "pre:'\\0\\t\\'\\\\A\\xe9'");
  ZQString plain;
  ZQString("\x7f\x0a \x1f~").Print(plain, false);
  EXPECT_EQ(Std(plain), "\\x7f\\x0a \\x1f~");
  ZQString self("a'b");
  self.Print(self, true);
  EXPECT_EQ(Std(self), "a'b'a\\'b'");

  struct {
    const char* src;
    std::string want;
    int next;  // byte at the cursor afterwards, -1 at the end
  } cases[] = {
      {"  'a b'c", "a b", 'c'}, {"ab cd", "ab", ' '}, {"\\65x", "A", -1},
      {"\\x4g", "\x04", -1}, {"\\x41B", "AB", -1}, {"\\x4A", "J", -1},
      {"\\n\\r\\t\\q\\\\\\'", "\n\r\tq\\'", -1}, {"'it\\'s' x", "it's", ' '},
      {"\\0659", "A", -1},  // the byte after three digits is dropped
      {"\\300", ",", -1},   // 300 modulo 256
      {"'open", "open", -1}, {"\t\n tok\n", "tok", '\n'},
      {"'\\x4'tail", "\x04tail", -1},  // the quote that ends \x is dropped
  };
  for (const auto& c : cases) {
    ZQString src(c.src), tok("");
    EXPECT_TRUE(tok.Extract(src) && Std(tok) == c.want && src.Peek() == c.next) << c.src;
  }
  // Tokens append; a blank rest has none; self-extraction reads a snapshot.
  ZQString src("one 'two'  "), tok("<");
  EXPECT_TRUE(tok.Extract(src) && tok.Extract(src) && !tok.Extract(src));
  EXPECT_EQ(Std(tok), "<onetwo");
  ZQString t("tok rest");
  EXPECT_TRUE(t.Extract(t));
  EXPECT_TRUE(Std(t) == "tok resttok" && t.Tell() == 3);

  // The 16-bit form: "\\x" takes four digits but keeps the last two.
  const U16 in = {0x0001, 0x00E9, 0, '\t', '\'', '\\', 0x001F, 0x007F, 0xFFFF, 'A'};
  ZQWString wout;
  ZQWString(in.data(), static_cast<int>(in.size())).Print(wout, true);
  EXPECT_EQ(Std(wout), W(u"'\\x0001\u00e9\\0\\t\\'\\\\\\x001f\u007f\uffffA'"));
  ZQWString wplain;
  ZQWString(W(u"\n").c_str()).Print(wplain, false);
  EXPECT_EQ(Std(wplain), W(u"\\x000a"));

  struct {
    const char16_t* src;
    U16 want;
    int next;
  } wcases[] = {
      {u"\\x1234", {0x34}, -1}, {u"\\x0041\\x41", W(u"AA"), -1}, {u"\\x4g", {0x04}, -1},
      {u"\\65", W(u"65"), -1},  // no decimal escape: digits stand for themselves
      {u"\\n\\r\\t\\\\", W(u"\n\r\t\\"), -1}, {u"  'a b'c", W(u"a b"), 'c'},
      {u"ab\tcd", W(u"ab"), '\t'}, {u"'\u00e9\u4e2d' x", W(u"\u00e9\u4e2d"), ' '},
  };
  for (const auto& c : wcases) {
    ZQWString wsrc(W(c.src).c_str()), wtok;
    EXPECT_TRUE(wtok.Extract(wsrc) && Std(wtok) == c.want && wsrc.Peek() == c.next);
  }
}

TEST(SmallHelpersTest, CaseInsensitiveCompareAndMove) {
  // Oracles: glibc's strcasecmp and wcscasecmp/wcsncasecmp, by sign.
  const char* words[] = {"", "a", "A", "ab", "AB", "aB_", "ab[", "abc", "ABD", "Z", "_",
                         "\x7f", "\x80", "hello world", "HELLO WORLD!"};
  for (const char* x : words) {
    for (const char* y : words) {
      EXPECT_EQ(Sign(strcmpi(x, y)), Sign(strcasecmp(x, y))) << x << " / " << y;
      U16 wx = zqtest::Widen(x), wy = zqtest::Widen(y);
      std::wstring cx(wx.begin(), wx.end()), cy(wy.begin(), wy.end());
      EXPECT_EQ(Sign(ZQGlob::wcscmpi(wx.c_str(), wy.c_str())),
                Sign(wcscasecmp(cx.c_str(), cy.c_str())));
      for (int n : {-1, 0, 1, 2, 3}) {
        EXPECT_EQ(Sign(ZQGlob::wcsncmpi(wx.c_str(), wy.c_str(), n)),
                  Sign(wcsncasecmp(cx.c_str(), cy.c_str(), n < 0 ? 99 : n)));
      }
    }
  }
  EXPECT_TRUE(strcmpi(nullptr, "") == 0 && strcmpi(nullptr, "a") < 0);
  EXPECT_EQ(ZQGlob::wcscmpi(nullptr, nullptr), 0);

  // movemem in both directions over overlapping ranges, against memmove.
  for (int k = 0; k < 64; ++k) {
    const int from = k / 8, to = k % 8;
    char a[32] = "0123456789abcdefghijklmnopqrstu", b[32];
    std::memcpy(b, a, 32);
    movemem(a + to, a + from, 20);
    std::memmove(b + to, b + from, 20);
    ASSERT_EQ(std::string(a, 32), std::string(b, 32)) << from << " to " << to;
  }
}

// Code set 0 follows the process locale: here UTF-8, a multibyte one.
class CurrentLocaleTest : public testing::Test {
 protected:
  void SetUp() override {
    ZQGlob::SetLocale();  // done once; it must not override the switch below
    saved_ = std::setlocale(LC_ALL, nullptr);
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) GTEST_SKIP() << "no C.UTF-8";
  }
  void TearDown() override { std::setlocale(LC_ALL, saved_.c_str()); }
  std::string saved_;
};

TEST_F(CurrentLocaleTest, ConvertsAndShieldsLeadBytes) {
  const U16 text = {'a', 0xE9, 0x20AC, 0x4E2D, 'z'};
  const U16 with_zero = text + U16(1, 0) + text;
  const std::string utf8 = Iconv("UTF-8", "UTF-16LE")(LE(text));
  const std::string zeroed = utf8 + std::string(1, '\0') + utf8;
  // Unit by unit when a zero is inside; the std forms use code set 0.
  ZQString s, t, z;
  s.Assign(text.c_str(), ZQ_CSET_OEM);
  t.Assign(with_zero.data(), ZQ_CSET_OEM, static_cast<int>(with_zero.size()));
  z.Assign(with_zero);
  EXPECT_TRUE(Std(s) == utf8 && Std(t) == zeroed && Std(z) == zeroed);
  ZQWString w, v;
  w.Assign(utf8.c_str(), ZQ_CSET_OEM);
  v.Assign(zeroed);
  EXPECT_TRUE(Std(w) == text && Std(v) == with_zero);
  // A byte that starts no character keeps its value.
  w.Assign("a\xff" "b", ZQ_CSET_OEM);
  EXPECT_EQ(Std(w), (U16{'a', 0xFF, 'b'}));

  ZQString m("\xc3" "AB\xc3" "ab");
  m.ToLower();
  EXPECT_EQ(Std(m), "\xc3" "Ab\xc3" "ab");
  m.ToUpper();
  EXPECT_EQ(Std(m), "\xc3" "AB\xc3" "aB");
  // A backslash after a lead byte is an ordinary byte.
  ZQString src("\xc3\\n \\n");
  ZQString tok;
  tok.Extract(src);
  tok.Extract(src);
  EXPECT_EQ(Std(tok), "\xc3\\n\n");
}


// Both classes' per-unit conversion rules (whole texts: the encoding tests).
TEST(ConversionTest, ByCodeSet) {
  // Code set 1: bytes widen to their values, units narrow to their low byte.
  const U16 text = {'A', 0xE9, 0x20AC, 0x4E2D, 0x0153, 'z'};
  ZQString s;
  ZQWString w;
  EXPECT_TRUE(s.Assign(text.c_str(), ZQ_CSET_ISO8859_1));
  EXPECT_EQ(Std(s), std::string("A\xe9\xac\x2d\x53z"));
  s.Assign(text.c_str(), ZQ_CSET_ISO8859_1, 2);
  w.Assign("A\xe9\xff\x80z", ZQ_CSET_ISO8859_1, 4);
  EXPECT_TRUE(Std(s) == "A\xe9" && Std(w) == (U16{'A', 0xE9, 0xFF, 0x80}));

  // UTF-8: a lone high surrogate narrows to nothing; widening keeps the low
  // 16 bits of a 4-byte sequence, and a cut-short or over-long lead ends it.
  s.Assign(U16{'a', 0xD83D, 0xDE00, 0, 'b'}.data(), ZQ_CSET_UTF8, 5);
  EXPECT_EQ(Std(s), std::string("a\xed\xb8\x80\0b", 6));
  s.Assign(static_cast<const unsigned short*>(nullptr), ZQ_CSET_UTF8);
  EXPECT_EQ(s.length(), 0);
  const std::string utf8 = "a\xc3\xa9\xe2\x82\xac\xe4\xb8\xad\xef\xbf\xbd z";
  const U16 basic = zqtest::FromLE(Iconv("UTF-16LE", "UTF-8")(utf8));
  struct {
    std::string in;
    int n;
    U16 want;
  } cases[] = {{utf8, -1, basic}, {"x\xf0\x9f\x98\x80y", -1, {'x', 0xF600, 'y'}},
               {"ab\xe2\x82", -1, W(u"ab")}, {"ab\xf8\x88\x80\x80\x80zz", -1, W(u"ab")},
               {std::string("a\0b", 3), 3, {'a', 0, 'b'}}};
  for (const auto& c : cases) {
    w.Assign(c.in.c_str(), ZQ_CSET_UTF8, c.n);
    EXPECT_EQ(Std(w), c.want);
  }
  w.Assign(ZQString(utf8.c_str()), ZQ_CSET_UTF8);
  EXPECT_EQ(Std(w), basic);

  // CP1252 with a zero inside; a unit without a CP1252 form keeps its low byte.
  const U16 cp = {'a', 0x20AC, 0x0153, 0xE9, 0x2122, 0x201A}, cp_zero = cp + U16(1, 0) + cp;
  const std::string bytes = Iconv("CP1252", "UTF-16LE")(LE(cp));
  const std::string bytes_zero = bytes + std::string(1, '\0') + bytes;
  s.Assign(cp_zero.data(), ZQ_CSET_CP1252, static_cast<int>(cp_zero.size()));
  w.Assign(bytes_zero.data(), ZQ_CSET_CP1252, static_cast<int>(bytes_zero.size()));
  EXPECT_TRUE(Std(s) == bytes_zero && Std(w) == cp_zero);
  s.Assign(U16{'x', 0x4E2D}.c_str(), ZQ_CSET_CP1252);
  EXPECT_EQ(Std(s), "x\x2d");

  // UCS-2: two bytes per unit, least significant first, zero units kept.
  const U16 units = {0x4E2D, 0, 'a', 0xFFFF};
  s.Assign(units.data(), ZQ_CSET_UCS2, 4);
  EXPECT_EQ(Std(s), std::string("\x2d\x4e\0\0a\0\xff\xff", 8));
  w.Assign(s, ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), units);
  w.Assign("ab\x01", ZQ_CSET_UCS2);
  EXPECT_EQ(Std(w), (U16{0x6261, 0x01}));
}

}  // namespace
