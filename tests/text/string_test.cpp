// ZQString and ZQWString: storage and growth, editing, comparison and cursor
// for both classes (the same members, in bytes or in units); then quoting,
// narrowing and the small helpers of ZQString.
#include <strings.h>
#include <wchar.h>

#include <clocale>
#include <cstring>
#include <limits>
#include <random>
#include <string>
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
using zqtest::Widen;

// The unit type of a string class, and a literal in it: 16-bit units take
// bytes from 0x80 up as 0xFF80 up, so that they use the top bits too.
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

TYPED_TEST(StringTest, ConstructionAndGrowth) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  EXPECT_EQ(Std(S(nullptr)), L(""));
  EXPECT_EQ(Std(S(nullptr, 5)), L(""));
  EXPECT_EQ(Std(S(L("abc").c_str(), 2)), L("ab"));
  EXPECT_EQ(Std(S(S(L(std::string("a\0b", 3)).c_str(), 3))), L(std::string("a\0b", 3)));
  S e;
  EXPECT_EQ(e.capacity(), 32);
  EXPECT_TRUE(e.OK() && e.length() == 0 && e.c_str()[0] == 0);
  // A constructor tests length + 1 against the capacity: 30 units stay
  // inline, 31 move to a heap block of the same capacity.
  EXPECT_TRUE(IsInline(S(L(std::string(30, 'a')).c_str())));
  S s31(L(std::string(31, 'a')).c_str());
  EXPECT_FALSE(IsInline(s31));
  EXPECT_EQ(s31.capacity(), 32);
  EXPECT_EQ(s31.c_str()[31], 0);

  // Appending one unit at a time: capacities in the order they appear.
  S s;
  std::vector<long> caps = {s.capacity()};
  const Ch* prev = s.c_str();
  const Ch x = 'x';
  int moves_at_equal = 0;
  for (int i = 1; i <= 5200; ++i) {
    s.Append(&x, 1, 0);
    ASSERT_EQ(s.length(), i);
    ASSERT_EQ(s.c_str()[i], 0);
    if (s.capacity() != caps.back()) caps.push_back(s.capacity());
    // The 32nd unit leaves the inline area for a block of capacity 32.
    ASSERT_TRUE(i > 32 || (IsInline(s) == (i < 32) && s.capacity() == 32)) << i;
    // A need equal to the capacity moves to a fresh block of that capacity.
    if (i == s.capacity() && s.c_str() != prev) ++moves_at_equal;
    prev = s.c_str();
  }
  EXPECT_EQ(caps, (std::vector<long>{32, 64, 128, 256, 512, 1024, 2048, 3072,
                                     4096, 5120, 6144}));
  EXPECT_EQ(moves_at_equal, 10);  // 32, 64, ..., 1024, 2048, ..., 5120
  EXPECT_EQ(Std(s), L(std::string(5200, 'x')));

  // operator+= of one unit reserves the terminator too: the 31st moves.
  S c(L(std::string(29, 'y')).c_str());
  c += Ch('y');
  EXPECT_TRUE(IsInline(c));
  c += Ch('y');
  EXPECT_FALSE(IsInline(c));
  EXPECT_EQ(c.capacity(), 32);
  c += Ch('y');
  EXPECT_EQ(c.capacity(), 64);

  // From capacity 1,024: a need of 1,500 gives 2,048, of 2,100 gives 3,072.
  for (auto [need, want] : {std::pair<int, long>{1500, 2048}, {2100, 3072}}) {
    S g;
    g.Pad('a', 600);
    ASSERT_EQ(g.capacity(), 1024);
    g.Pad('b', need - 600);
    EXPECT_EQ(g.capacity(), want) << need;
    EXPECT_EQ(Std(g), L(std::string(600, 'a') + std::string(need - 600, 'b')));
  }
  // Allocate reserves the terminator; the content survives growth.
  S a(L("keep").c_str());
  EXPECT_TRUE(a.Allocate(100));
  EXPECT_EQ(a.capacity(), 128);
  EXPECT_EQ(Std(a), L("keep"));
}

TYPED_TEST(StringTest, LengthEditing) {
  using S = TypeParam;
  const auto L = Lit<S>;
  const auto ten = L("abcdefghij");
  struct {
    long count, start;
    const char* want;
  } removes[] = {
      {5, 2, "abhij"}, {10, 2, "ab"}, {8, 2, "ab"},  {7, 2, "abj"},
      {1, 0, "bcdefghij"}, {0, 2, "abcdefghij"}, {-1, 2, "abcdefghij"},
      {3, 10, "abcdefghij"}, {3, -1, "abcdefghij"}, {1, 9, "abcdefghi"},
  };
  for (const auto& r : removes) {
    S s(ten.c_str());
    s.Remove(r.count, r.start);
    EXPECT_EQ(Std(s), L(r.want)) << r.count << "," << r.start;
  }

  S t(ten.c_str());
  EXPECT_FALSE(t.Truncate(12));
  EXPECT_FALSE(t.Truncate(-1));
  EXPECT_EQ(Std(t), ten);
  EXPECT_TRUE(t.Truncate(10) && t.Truncate(4));
  EXPECT_EQ(Std(t), L("abcd"));

  // SetLength reaches into written buffer units, never beyond the capacity.
  S b;
  std::copy(ten.begin(), ten.begin() + 5, b.GetBuffer());
  b.SetLength(5);
  b.SetLength(33);
  b.SetLength(-2);
  EXPECT_EQ(Std(b), L("abcde"));
  b.clear();
  EXPECT_EQ(b.length(), 0);
  EXPECT_EQ(b.capacity(), 32);

  S p(L("ab").c_str());
  EXPECT_TRUE(p.Pad('-', 3) && p.Pad('-', 0) && p.Pad('-', -4));
  EXPECT_EQ(Std(p), L("ab---"));
  EXPECT_TRUE(p.Set('z', 2));
  p.Replace(1, 'q');
  p.Replace(2, 'r');
  p.Replace(-1, 'r');
  EXPECT_EQ(Std(p), L("zq"));

  struct {
    bool leading, trailing;
    const char* src;
    const char* want;
  } strips[] = {{true, true, "**a**b**", "a**b"},    {true, false, "**a**b**", "a**b**"},
                {false, true, "**a**b**", "**a**b"}, {false, false, "**a**b**", "**a**b**"},
                {true, true, "****", ""}};
  for (const auto& c : strips) {
    S s(L(c.src).c_str());
    s.StripChars(c.leading, c.trailing, '*');
    EXPECT_EQ(Std(s), L(c.want));
  }
  S m(L("MiXeD 123 z").c_str());
  m.ToUpper();
  EXPECT_EQ(Std(m), L("MIXED 123 Z"));
  m.ToLower();
  EXPECT_EQ(Std(m), L("mixed 123 z"));
}

TYPED_TEST(StringTest, CopyAppendInsert) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  S s(L("zz").c_str());
  EXPECT_TRUE(s.CopyN(L("abcdef").c_str(), 3, 1));
  EXPECT_EQ(Std(s), L("bcd"));
  EXPECT_TRUE(s.CopyN(L("abcdef").c_str(), -1, 4));
  EXPECT_FALSE(s.CopyN(L("abc").c_str(), -1, 5));  // negative rest: nothing happens
  EXPECT_FALSE(s.CopyN(static_cast<const Ch*>(nullptr), 2, 0));
  EXPECT_EQ(Std(s), L("ef"));

  S src(L("0123456789").c_str());
  EXPECT_TRUE(s.CopyN(src, 3, 8));  // at most the rest of src
  EXPECT_FALSE(s.CopyN(src, 3, 10));
  EXPECT_FALSE(s.CopyN(s, 1, 0));
  EXPECT_EQ(Std(s), L("89"));

  s.Append(L("abc").c_str(), 2, 1);
  s.Append(src, -1, 7);
  EXPECT_EQ(Std(s), L("89bc789"));
  s += S(L(std::string("x\0y", 3)).c_str(), 3);
  EXPECT_EQ(Std(s), L(std::string("89bc789x\0y", 10)));
  s = L("mid").c_str();
  s.Insert(1, L("XYZ").c_str(), 2, 1);
  EXPECT_EQ(Std(s), L("mYZid"));
  s.Insert(99, L("!").c_str());
  s.Insert(-5, L("<").c_str());
  s.Insert(3, src, 2, 4);
  EXPECT_EQ(Std(s), L("<mY45Zid!"));

  EXPECT_EQ(Std(S(L("ab").c_str()) + L("cd").c_str()), L("abcd"));
  EXPECT_EQ(Std(S(L("ab").c_str()) + S(L(std::string("c\0d", 3)).c_str(), 3)),
            L(std::string("abc\0d", 5)));

  S to;
  EXPECT_TRUE(to.CopyTo(S(L("key=value;rest").c_str()), 4, ';'));
  EXPECT_EQ(Std(to), L("value;"));
  EXPECT_TRUE(to.AppendTo(S(L("abc").c_str()), -3, ';'));
  EXPECT_EQ(Std(to), L("value;abc"));
  to.CopyTo(to, 6, 'z');
  EXPECT_EQ(Std(to), L("abc"));

  // Sources inside the string itself, also across a growth step.
  S self(L("0123456789012345678901234567").c_str());
  self.Append(self);
  EXPECT_EQ(Std(self), L("01234567890123456789012345670123456789012345678901234567"));
  S ins(L("abcdef").c_str());
  ins.Insert(0, ins.c_str() + 3);
  EXPECT_EQ(Std(ins), L("defabcdef"));
  ins = ins.c_str() + 3;
  EXPECT_EQ(Std(ins), L("abcdef"));
  S big(L(std::string(40, 'q')).c_str());
  big.Pad('q', 24);  // length 64 = capacity: the next append moves
  big.Append(big.c_str(), 10, 0);
  EXPECT_EQ(Std(big), L(std::string(74, 'q')));
}

TYPED_TEST(StringTest, AssignmentResetsTheCursor) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  S s(L("abc").c_str());
  s.Seek(2);
  s = L(std::string("x\0y", 3));
  EXPECT_EQ(Std(s), L(std::string("x\0y", 3)));
  EXPECT_EQ(s.Tell(), 0);
  s.Seek(1);
  s = Ch('c');
  EXPECT_EQ(Std(s), L("c"));
  EXPECT_EQ(s.Tell(), 0);
  s = static_cast<const Ch*>(nullptr);
  EXPECT_EQ(Std(s), L(""));
  S t(L("long enough to live in a heap block, surely").c_str());
  s = t;
  s = s;
  EXPECT_EQ(Std(s), Std(t));
  s = S();
  EXPECT_EQ(s.length(), 0);
}

TYPED_TEST(StringTest, ComparisonOrder) {
  using S = TypeParam;
  using Ch = Unit<S>;
  using Str = std::basic_string<Ch>;
  const auto L = Lit<S>;
  // Oracle: the standard string compares units as unsigned values, zeros
  // included. The pool holds "abc"/"abd", "ab"/"abc", and the units on either
  // side of the sign bit (0x7F/0x80 as bytes).
  const Ch top = std::numeric_limits<std::make_unsigned_t<Ch>>::max();
  const Ch alphabet[] = {0, 'a', 'b', static_cast<Ch>(top / 2), static_cast<Ch>(top / 2 + 1),
                         top};
  std::vector<Str> pool = {L(""), L("a"), L("ab"), L("abc"), L("abd"), L("\x7f"), L("\x80"),
                           L(std::string("ab\0", 3)), L(std::string("a\0b", 3)), L("ab\xe9")};
  std::mt19937 rng(7);
  for (int i = 0; i < 200; ++i) {
    Str r(rng() % 5, 0);
    for (Ch& c : r) c = alphabet[rng() % 6];
    pool.push_back(r);
  }
  for (const auto& x : pool) {
    for (const auto& y : pool) {
      S a(x.data(), static_cast<int>(x.size()));
      S b(y.data(), static_cast<int>(y.size()));
      int want = Sign(x.compare(y));
      ASSERT_EQ(a == b, want == 0) << testing::PrintToString(x) << testing::PrintToString(y);
      ASSERT_EQ(a != b, want != 0);
      ASSERT_EQ(a < b, want < 0);
      ASSERT_EQ(a > b, want > 0);
      ASSERT_EQ(a <= b, want <= 0);
      ASSERT_EQ(a >= b, want >= 0);
      // Against a plain pointer only the argument's zero ends the walk.
      int zwant = Sign(Str(x.c_str()).compare(y.c_str()));
      ASSERT_EQ(a == y.c_str(), zwant == 0);
      ASSERT_EQ(a < y.c_str(), zwant < 0);
      ASSERT_EQ(a >= y.c_str(), zwant >= 0);
    }
  }
  EXPECT_TRUE(S(L(std::string("ab\0cd", 5)).c_str(), 5) == L("ab").c_str());
  EXPECT_FALSE(S(L(std::string("ab\0cd", 5)).c_str(), 5) == S(L("ab").c_str()));
  EXPECT_TRUE(S(L("").c_str()) == static_cast<const Ch*>(nullptr));
}

TYPED_TEST(StringTest, IndexAndCursor) {
  using S = TypeParam;
  const auto L = Lit<S>;
  S s(L("a\xe9z").c_str());
  EXPECT_EQ(s[0L], 'a');
  EXPECT_EQ(s[2], 'z');
  for (int i : {3, -1, 100}) EXPECT_EQ(s[i], 0) << i;
  EXPECT_EQ(s[3L], 0);

  EXPECT_EQ(s.Peek(), 'a');
  EXPECT_EQ(s(), 'a');
  const int high = static_cast<std::make_unsigned_t<Unit<S>>>(L("\xe9")[0]);
  EXPECT_EQ(s(), high);  // units come back unsigned
  EXPECT_EQ(s.Tell(), 2);
  s.Previous();
  EXPECT_EQ(s.Peek(), high);
  s.Seek(99);
  EXPECT_EQ(s.Tell(), 3);
  EXPECT_EQ(s.Peek(), -1);
  EXPECT_EQ(s(), -1);
  EXPECT_EQ(s.Tell(), 3);
  s.Seek(-4);
  s.Previous();
  EXPECT_EQ(s.Tell(), 0);
  s.Seek(3);
  s.Truncate(1);  // a cursor left beyond the end reads as the end
  EXPECT_EQ(s.Peek(), -1);
  s.Rewind();
  EXPECT_EQ(s(), 'a');
}

TYPED_TEST(StringTest, BadInputIsHarmless) {
  using S = TypeParam;
  using Ch = Unit<S>;
  const auto L = Lit<S>;
  S s(L("abc").c_str());
  EXPECT_FALSE(s.Allocate(0x7FFFFFFF));  // beyond any capacity: refused
  EXPECT_FALSE(s.Pad('x', 0x7FFFFFFF));
  EXPECT_FALSE(s.Append(L("xyz").c_str(), -1, -2));
  EXPECT_FALSE(s.Insert(1, static_cast<const Ch*>(nullptr)));
  EXPECT_FALSE(s.Append(S(L("q").c_str()), 1, 5));
  EXPECT_FALSE(s.CopyN(S(L("q").c_str()), 1, -1));
  s += static_cast<const Ch*>(nullptr);
  EXPECT_EQ(Std(s), L("abc"));
  EXPECT_EQ(s.capacity(), 32);
  EXPECT_TRUE(s.OK());
}

TEST(ZQStringTest, PrintAndExtract) {
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
      {"  'a b'c", "a b", 'c'},
      {"ab cd", "ab", ' '},
      {"\\65x", "A", -1},
      {"\\x4g", "\x04", -1},
      {"\\x41B", "AB", -1},
      {"\\x4A", "J", -1},
      {"\\n\\r\\t\\q\\\\\\'", "\n\r\tq\\'", -1},
      {"\\0659", "A", -1},         // the byte after three digits is dropped
      {"\\300", ",", -1},          // 300 modulo 256
      {"'it\\'s' x", "it's", ' '},
      {"'open", "open", -1},
      {"'\\x4'tail", "\x04tail", -1},  // the quote that ends \x is dropped
      {"\t\n tok\n", "tok", '\n'},
  };
  for (const auto& c : cases) {
    ZQString src(c.src);
    ZQString tok("");
    EXPECT_TRUE(tok.Extract(src)) << c.src;
    EXPECT_EQ(Std(tok), c.want) << c.src;
    EXPECT_EQ(src.Peek(), c.next) << c.src;
  }
  ZQString blank("   ");
  ZQString tok("keep");
  EXPECT_FALSE(tok.Extract(blank));
  EXPECT_EQ(Std(tok), "keep");
  // Two tokens in turn, appended to what the target holds.
  ZQString src("one 'two'");
  tok = "<";
  tok.Extract(src);
  tok.Extract(src);
  EXPECT_EQ(Std(tok), "<onetwo");
  // Extracting from the string itself reads a snapshot of it.
  ZQString t("tok rest");
  EXPECT_TRUE(t.Extract(t));
  EXPECT_EQ(Std(t), "tok resttok");
  EXPECT_EQ(t.Tell(), 3);

  std::mt19937 rng(11);
  for (int i = 0; i < 500; ++i) {
    // Zero bytes do not survive: "\0" is a decimal escape that swallows the
    // byte after it.
    std::string bytes(rng() % 40, '\0');
    for (char& c : bytes) c = static_cast<char>(1 + rng() % 255);
    ZQString printed, back;
    ZQString(bytes.data(), static_cast<int>(bytes.size())).Print(printed, true);
    back.Extract(printed);
    ASSERT_EQ(Std(back), bytes) << Std(printed);
    ASSERT_EQ(printed.Peek(), -1);
  }
}

// Whole texts of every code set are checked against iconv with the
// encoding tests; here the per-unit rules.
TEST(ZQStringTest, NarrowFromUnits) {
  const U16 text = {'A', 0xE9, 0x20AC, 0x4E2D, 0x0153, 'z'};
  // Code set 1 keeps the low byte of every unit.
  ZQString s;
  EXPECT_TRUE(s.Assign(text.c_str(), ZQ_CSET_ISO8859_1));
  EXPECT_EQ(Std(s), std::string("A\xe9\xac\x2d\x53z"));
  s.Assign(text.c_str(), ZQ_CSET_ISO8859_1, 2);
  EXPECT_EQ(Std(s), "A\xe9");
  s.Assign(text.c_str(), ZQ_CSET_UTF8);
  EXPECT_EQ(Std(s), Iconv("UTF-8", "UTF-16LE")(LE(text)));
  // A high surrogate yields nothing, a low one three bytes, zero a zero byte.
  const U16 odd = {'a', 0xD83D, 0xDE00, 0, 'b'};
  s.Assign(odd.data(), ZQ_CSET_UTF8, 5);
  EXPECT_EQ(Std(s), std::string("a\xed\xb8\x80\0b", 6));
  s.Assign(static_cast<const unsigned short*>(nullptr), ZQ_CSET_UTF8);
  EXPECT_EQ(s.length(), 0);

  // CP1252 unit by unit (a zero unit inside); a unit without a CP1252 form
  // keeps its low byte.
  const U16 cp = {'a', 0x20AC, 0x0153, 0xE9, 0x2122};
  const std::string one = Iconv("CP1252", "UTF-16LE")(LE(cp));
  U16 with_zero = cp + U16(1, 0) + cp;
  s.Assign(with_zero.data(), ZQ_CSET_CP1252, static_cast<int>(with_zero.size()));
  EXPECT_EQ(Std(s), one + std::string(1, '\0') + one);
  s.Assign(U16{'x', 0x4E2D}.c_str(), ZQ_CSET_CP1252);
  EXPECT_EQ(Std(s), "x\x2d");
}

TEST(SmallHelpersTest, CaseInsensitiveCompareAndMove) {
  // Oracles: glibc's strcasecmp and wcscasecmp/wcsncasecmp, by sign.
  const char* words[] = {"", "a", "A", "ab", "AB", "aB_", "ab[", "abc", "ABD", "Z", "_",
                         "\x7f", "\x80", "hello world", "HELLO WORLD!"};
  auto wide = [](const char* p) {
    std::wstring w;
    for (; *p; ++p) w += static_cast<wchar_t>(static_cast<unsigned char>(*p));
    return w;
  };
  for (const char* x : words) {
    for (const char* y : words) {
      EXPECT_EQ(Sign(strcmpi(x, y)), Sign(strcasecmp(x, y))) << x << " / " << y;
      U16 wx = Widen(x), wy = Widen(y);
      std::wstring cx = wide(x), cy = wide(y);
      EXPECT_EQ(Sign(ZQGlob::wcscmpi(wx.c_str(), wy.c_str())),
                Sign(wcscasecmp(cx.c_str(), cy.c_str())));
      for (int n : {-1, 0, 1, 2, 3}) {
        EXPECT_EQ(Sign(ZQGlob::wcsncmpi(wx.c_str(), wy.c_str(), n)),
                  Sign(wcsncasecmp(cx.c_str(), cy.c_str(), n < 0 ? 99 : n)));
      }
    }
  }
  EXPECT_EQ(strcmpi(nullptr, ""), 0);
  EXPECT_LT(strcmpi(nullptr, "a"), 0);
  EXPECT_EQ(ZQGlob::wcscmpi(nullptr, nullptr), 0);

  // movemem in both directions over overlapping ranges, against memmove.
  for (int from = 0; from < 8; ++from) {
    for (int to = 0; to < 8; ++to) {
      char a[32] = "0123456789abcdefghijklmnopqrstu";
      char b[32] = "0123456789abcdefghijklmnopqrstu";
      movemem(a + to, a + from, 20);
      std::memmove(b + to, b + from, 20);
      ASSERT_EQ(std::string(a, 32), std::string(b, 32));
    }
  }
  char c[4] = "abc";
  movemem(c, nullptr, 3);
  movemem(c, "xyz", -1);
  EXPECT_EQ(std::string(c), "abc");
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

TEST_F(CurrentLocaleTest, ConvertsThroughTheLocale) {
  const U16 text = {'a', 0xE9, 0x20AC, 0x4E2D, 'z'};
  const U16 with_zero = text + U16(1, 0) + text;
  const std::string utf8 = Iconv("UTF-8", "UTF-16LE")(LE(text));
  const std::string zeroed = utf8 + std::string(1, '\0') + utf8;
  ZQString s;
  s.Assign(text.c_str(), ZQ_CSET_OEM);
  EXPECT_EQ(Std(s), utf8);
  // Unit by unit when a zero unit is inside.
  s.Assign(with_zero.data(), ZQ_CSET_OEM, static_cast<int>(with_zero.size()));
  EXPECT_EQ(Std(s), zeroed);
  s.Assign(with_zero);  // std form: code set 0, whole string
  EXPECT_EQ(Std(s), zeroed);

  ZQWString w;
  w.Assign(utf8.c_str(), ZQ_CSET_OEM);
  EXPECT_EQ(Std(w), text);
  w.Assign(zeroed);
  EXPECT_EQ(Std(w), with_zero);
  // A byte that starts no character keeps its value.
  w.Assign("a\xff" "b", ZQ_CSET_OEM);
  EXPECT_EQ(Std(w), (U16{'a', 0xFF, 'b'}));
}

TEST_F(CurrentLocaleTest, LeadBytesShieldTheNextByte) {
  ZQString lower("\xc3" "AB");
  lower.ToLower();
  EXPECT_EQ(Std(lower), "\xc3" "Ab");
  ZQString upper("\xc3" "ab");
  upper.ToUpper();
  EXPECT_EQ(Std(upper), "\xc3" "aB");
  // A backslash after a lead byte is an ordinary byte.
  ZQString src("\xc3\\n \\n");
  ZQString tok;
  tok.Extract(src);
  EXPECT_EQ(Std(tok), "\xc3\\n");
  tok.clear();
  tok.Extract(src);
  EXPECT_EQ(Std(tok), "\n");
}

}  // namespace
