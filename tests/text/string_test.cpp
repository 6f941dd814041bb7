// ZQString: storage and growth, editing, comparison, cursor, quoting and
// narrowing from 16-bit text.
#include <iconv.h>

#include <strings.h>
#include <wchar.h>

#include <clocale>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/strutil.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using U16 = std::basic_string<unsigned short>;

std::string Std(const ZQString& s) {
  std::string out;
  s.AssignToStd(out);
  return out;
}

// True while the content lives in the object's inline area.
template <typename S>
bool IsInline(const S& s) {
  auto p = reinterpret_cast<const char*>(s.c_str());
  auto b = reinterpret_cast<const char*>(&s);
  return p >= b && p < b + sizeof(S);
}

// Converts with glibc's iconv; the oracle for the UTF-8 and CP1252 forms.
std::string Iconv(const char* to, const char* from, const std::string& in) {
  iconv_t cd = iconv_open(to, from);
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
  std::string out(in.size() * 4 + 16, '\0');
  char* src = const_cast<char*>(in.data());
  size_t left = in.size();
  char* dst = out.data();
  size_t room = out.size();
  size_t r = iconv(cd, &src, &left, &dst, &room);
  EXPECT_NE(r, static_cast<size_t>(-1)) << to << " <- " << from;
  iconv_close(cd);
  out.resize(out.size() - room);
  return out;
}

std::string Utf16Bytes(const U16& u) {
  std::string b;
  for (unsigned short c : u) {
    b += static_cast<char>(c & 0xFF);
    b += static_cast<char>(c >> 8);
  }
  return b;
}

TEST(ZQStringTest, Construction) {
  EXPECT_EQ(Std(ZQString(nullptr)), "");
  EXPECT_EQ(Std(ZQString(nullptr, 5)), "");
  EXPECT_EQ(Std(ZQString("abc", 2)), "ab");
  EXPECT_EQ(Std(ZQString("abc")), "abc");
  EXPECT_EQ(Std(ZQString("a\0b", 3)), std::string("a\0b", 3));
  ZQString e;
  EXPECT_EQ(e.length(), 0);
  EXPECT_EQ(e.capacity(), 32);
  EXPECT_TRUE(e.OK());
  EXPECT_EQ(e.c_str()[0], '\0');
  ZQString copy(ZQString("xyz"));
  EXPECT_EQ(Std(copy), "xyz");
  // A constructor tests length + 1 against the capacity: 30 bytes stay
  // inline, 31 move to a heap block of the same capacity.
  ZQString s30(std::string(30, 'a').c_str());
  EXPECT_TRUE(IsInline(s30));
  ZQString s31(std::string(31, 'a').c_str());
  EXPECT_FALSE(IsInline(s31));
  EXPECT_EQ(s31.capacity(), 32);
  EXPECT_EQ(s31.c_str()[31], '\0');
}

TEST(ZQStringTest, GrowthSequence) {
  // Appending byte by byte: capacities in the order they appear.
  ZQString s;
  std::vector<long> caps = {s.capacity()};
  const char* prev = s.c_str();
  int moves_at_equal = 0;
  for (int i = 1; i <= 5200; ++i) {
    s.Append("x", 1, 0);
    ASSERT_EQ(s.length(), i);
    ASSERT_EQ(s.c_str()[i], '\0');
    if (s.capacity() != caps.back()) caps.push_back(s.capacity());
    if (i == 32) {
      EXPECT_FALSE(IsInline(s)) << "the 32nd byte leaves the inline area";
      EXPECT_EQ(s.capacity(), 32);
    } else if (i < 32) {
      EXPECT_TRUE(IsInline(s)) << i;
    }
    // A need equal to the capacity moves to a fresh block of that capacity.
    if (i == s.capacity() && s.c_str() != prev) ++moves_at_equal;
    prev = s.c_str();
  }
  EXPECT_EQ(caps, (std::vector<long>{32, 64, 128, 256, 512, 1024, 2048, 3072,
                                     4096, 5120, 6144}));
  EXPECT_EQ(moves_at_equal, 10);  // 32, 64, ..., 1024, 2048, ..., 5120

  // operator+=(char) reserves the terminator too: the 31st byte moves.
  ZQString c;
  for (int i = 0; i < 30; ++i) c += 'y';
  EXPECT_TRUE(IsInline(c));
  c += 'y';
  EXPECT_FALSE(IsInline(c));
  EXPECT_EQ(c.capacity(), 32);
  c += 'y';
  EXPECT_EQ(c.capacity(), 64);

  // From capacity 1,024: a need of 1,500 gives 2,048, of 2,100 gives 3,072.
  for (auto [need, want] : {std::pair<int, long>{1500, 2048}, {2100, 3072}}) {
    ZQString g;
    g.Pad('a', 600);
    ASSERT_EQ(g.capacity(), 1024);
    g.Pad('b', need - 600);
    EXPECT_EQ(g.capacity(), want) << need;
    EXPECT_EQ(Std(g), std::string(600, 'a') + std::string(need - 600, 'b'));
  }

  // Allocate reserves the terminator; the content survives growth.
  ZQString a("keep");
  EXPECT_TRUE(a.Allocate(100));
  EXPECT_EQ(a.capacity(), 128);
  EXPECT_EQ(Std(a), "keep");
}

TEST(ZQStringTest, LengthEditing) {
  struct {
    long count, start;
    const char* want;
  } removes[] = {
      {5, 2, "abhij"}, {10, 2, "ab"}, {8, 2, "ab"},  {7, 2, "abj"},
      {1, 0, "bcdefghij"}, {0, 2, "abcdefghij"}, {-1, 2, "abcdefghij"},
      {3, 10, "abcdefghij"}, {3, -1, "abcdefghij"}, {1, 9, "abcdefghi"},
  };
  for (const auto& r : removes) {
    ZQString s("abcdefghij");
    s.Remove(r.count, r.start);
    EXPECT_EQ(Std(s), r.want) << r.count << "," << r.start;
  }

  ZQString t("abcdefghij");
  EXPECT_FALSE(t.Truncate(12));
  EXPECT_FALSE(t.Truncate(-1));
  EXPECT_EQ(Std(t), "abcdefghij");
  EXPECT_TRUE(t.Truncate(10));
  EXPECT_TRUE(t.Truncate(4));
  EXPECT_EQ(Std(t), "abcd");

  // SetLength reaches into written buffer bytes, never beyond the capacity.
  ZQString b;
  std::memcpy(b.GetBuffer(), "hello", 5);
  b.SetLength(5);
  EXPECT_EQ(Std(b), "hello");
  b.SetLength(33);
  EXPECT_EQ(b.length(), 5);
  b.SetLength(-2);
  EXPECT_EQ(b.length(), 5);
  b.clear();
  EXPECT_EQ(b.length(), 0);
  EXPECT_EQ(b.capacity(), 32);

  ZQString p("ab");
  EXPECT_TRUE(p.Pad('-', 3));
  EXPECT_TRUE(p.Pad('-', 0));
  EXPECT_TRUE(p.Pad('-', -4));
  EXPECT_EQ(Std(p), "ab---");
  EXPECT_TRUE(p.Set('z', 2));
  EXPECT_EQ(Std(p), "zz");
  p.Replace(1, 'q');
  p.Replace(2, 'r');
  p.Replace(-1, 'r');
  EXPECT_EQ(Std(p), "zq");
}

TEST(ZQStringTest, CopyAppendInsert) {
  ZQString s("zz");
  EXPECT_TRUE(s.CopyN("abcdef", 3, 1));
  EXPECT_EQ(Std(s), "bcd");
  EXPECT_TRUE(s.CopyN("abcdef", -1, 4));
  EXPECT_EQ(Std(s), "ef");
  EXPECT_FALSE(s.CopyN("abc", -1, 5));  // negative rest: nothing happens
  EXPECT_FALSE(s.CopyN(static_cast<const char*>(nullptr), 2, 0));
  EXPECT_EQ(Std(s), "ef");

  ZQString src("0123456789");
  EXPECT_TRUE(s.CopyN(src, 3, 8));  // at most the rest of src
  EXPECT_EQ(Std(s), "89");
  EXPECT_FALSE(s.CopyN(src, 3, 10));
  EXPECT_FALSE(s.CopyN(s, 1, 0));
  EXPECT_EQ(Std(s), "89");

  s.Append("abc", 2, 1);
  EXPECT_EQ(Std(s), "89bc");
  s.Append(src, -1, 7);
  EXPECT_EQ(Std(s), "89bc789");
  s += ZQString("x\0y", 3);
  EXPECT_EQ(Std(s), std::string("89bc789x\0y", 10));
  s = "mid";
  s.Insert(1, "XYZ", 2, 1);
  EXPECT_EQ(Std(s), "mYZid");
  s.Insert(99, "!");
  s.Insert(-5, "<");
  EXPECT_EQ(Std(s), "<mYZid!");
  s.Insert(3, src, 2, 4);
  EXPECT_EQ(Std(s), "<mY45Zid!");

  EXPECT_EQ(Std(ZQString("ab") + "cd"), "abcd");
  EXPECT_EQ(Std(ZQString("ab") + ZQString("c\0d", 3)), std::string("abc\0d", 5));

  ZQString to;
  EXPECT_TRUE(to.CopyTo(ZQString("key=value;rest"), 4, ';'));
  EXPECT_EQ(Std(to), "value;");
  EXPECT_TRUE(to.AppendTo(ZQString("abc"), -3, ';'));
  EXPECT_EQ(Std(to), "value;abc");
  to.CopyTo(to, 6, 'z');
  EXPECT_EQ(Std(to), "abc");

  // Sources inside the string itself, also across a growth step.
  ZQString self("0123456789012345678901234567");
  self.Append(self);
  EXPECT_EQ(Std(self), "01234567890123456789012345670123456789012345678901234567");
  ZQString ins("abcdef");
  ins.Insert(0, ins.c_str() + 3);
  EXPECT_EQ(Std(ins), "defabcdef");
  ins = ins.c_str() + 3;
  EXPECT_EQ(Std(ins), "abcdef");
  ZQString big(std::string(40, 'q').c_str());
  big.Pad('q', 24);  // length 64 = capacity: the next append moves
  big.Append(big.c_str(), 10, 0);
  EXPECT_EQ(Std(big), std::string(74, 'q'));
}

TEST(ZQStringTest, AssignmentAndStd) {
  ZQString s("abc");
  s.Seek(2);
  s = std::string("x\0y", 3);
  EXPECT_EQ(Std(s), std::string("x\0y", 3));
  EXPECT_EQ(s.Tell(), 0);
  s.Seek(1);
  s = 'c';
  EXPECT_EQ(Std(s), "c");
  EXPECT_EQ(s.Tell(), 0);
  s = static_cast<const char*>(nullptr);
  EXPECT_EQ(Std(s), "");
  ZQString t("long enough to live in a heap block, surely");
  s = t;
  EXPECT_EQ(Std(s), Std(t));
  s = s;
  EXPECT_EQ(Std(s), Std(t));
  s = ZQString();
  EXPECT_EQ(s.length(), 0);
}

TEST(ZQStringTest, StripAndCase) {
  struct {
    bool leading, trailing;
    const char* want;
  } cases[] = {{true, true, "a**b"}, {true, false, "a**b**"},
               {false, true, "**a**b"}, {false, false, "**a**b**"}};
  for (const auto& c : cases) {
    ZQString s("**a**b**");
    s.StripChars(c.leading, c.trailing, '*');
    EXPECT_EQ(Std(s), c.want);
  }
  ZQString all("****");
  all.StripChars(true, true, '*');
  EXPECT_EQ(Std(all), "");

  ZQString m("MiXeD 123 z");
  m.ToUpper();
  EXPECT_EQ(Std(m), "MIXED 123 Z");
  m.ToLower();
  EXPECT_EQ(Std(m), "mixed 123 z");
}

int Sign(int v) { return (v > 0) - (v < 0); }

TEST(ZQStringTest, ComparisonOrder) {
  // Oracle: std::string compares bytes as unsigned values, zero bytes included.
  std::mt19937 rng(7);
  std::vector<std::string> pool = {"", "a", "ab", "abc", "abd", "\x7f", "\x80",
                                   std::string("ab\0", 3), std::string("a\0b", 3),
                                   "\xff", "ab\xe9"};
  for (int i = 0; i < 200; ++i) {
    std::string r(rng() % 5, '\0');
    for (char& c : r) c = static_cast<char>("ab\0\x7f\x80\xff"[rng() % 6]);
    pool.push_back(r);
  }
  for (const auto& x : pool) {
    for (const auto& y : pool) {
      ZQString a(x.data(), static_cast<int>(x.size()));
      ZQString b(y.data(), static_cast<int>(y.size()));
      int want = Sign(x.compare(y));
      ASSERT_EQ(a == b, want == 0) << testing::PrintToString(x) << testing::PrintToString(y);
      ASSERT_EQ(a != b, want != 0);
      ASSERT_EQ(a < b, want < 0);
      ASSERT_EQ(a > b, want > 0);
      ASSERT_EQ(a <= b, want <= 0);
      ASSERT_EQ(a >= b, want >= 0);
      // Against a plain pointer only the argument's zero byte ends the walk.
      int zwant = Sign(std::strcmp(x.c_str(), y.c_str()));
      ASSERT_EQ(a == y.c_str(), zwant == 0);
      ASSERT_EQ(a < y.c_str(), zwant < 0);
      ASSERT_EQ(a >= y.c_str(), zwant >= 0);
    }
  }
  EXPECT_TRUE(ZQString("abc") < "abd");
  EXPECT_TRUE(ZQString("ab") < ZQString("abc"));
  EXPECT_TRUE(ZQString("\x7f") < ZQString("\x80"));
  EXPECT_TRUE(ZQString("ab\0cd", 5) == "ab");
  EXPECT_FALSE(ZQString("ab\0cd", 5) == ZQString("ab"));
  EXPECT_TRUE(ZQString("") == static_cast<const char*>(nullptr));
}

TEST(ZQStringTest, IndexAndCursor) {
  ZQString s("a\xe9z");
  EXPECT_EQ(s[0L], 'a');
  EXPECT_EQ(s[2], 'z');
  EXPECT_EQ(s[3], 0);
  EXPECT_EQ(s[-1], 0);
  EXPECT_EQ(s[100L], 0);

  EXPECT_EQ(s.Peek(), 'a');
  EXPECT_EQ(s.Tell(), 0);
  EXPECT_EQ(s(), 'a');
  EXPECT_EQ(s(), 0xE9);  // bytes come back as 0 to 255
  EXPECT_EQ(s.Tell(), 2);
  s.Previous();
  EXPECT_EQ(s.Peek(), 0xE9);
  s.Seek(99);
  EXPECT_EQ(s.Tell(), 3);
  EXPECT_EQ(s.Peek(), -1);
  EXPECT_EQ(s(), -1);
  EXPECT_EQ(s.Tell(), 3);
  s.Seek(-4);
  EXPECT_EQ(s.Tell(), 0);
  s.Previous();
  EXPECT_EQ(s.Tell(), 0);
  s.Seek(3);
  s.Truncate(1);  // a cursor left beyond the end reads as the end
  EXPECT_EQ(s.Peek(), -1);
  s.Rewind();
  EXPECT_EQ(s(), 'a');
}

TEST(ZQStringTest, BadInputIsHarmless) {
  ZQString s("abc");
  EXPECT_FALSE(s.Allocate(0x7FFFFFFF));  // beyond any capacity: refused
  EXPECT_FALSE(s.Pad('x', 0x7FFFFFFF));
  EXPECT_FALSE(s.Append("xyz", -1, -2));
  EXPECT_FALSE(s.Insert(1, static_cast<const char*>(nullptr)));
  EXPECT_FALSE(s.Append(ZQString("q"), 1, 5));
  EXPECT_FALSE(s.CopyN(ZQString("q"), 1, -1));
  s += static_cast<const char*>(nullptr);
  EXPECT_EQ(Std(s), "abc");
  EXPECT_EQ(s.capacity(), 32);
  EXPECT_TRUE(s.OK());

  // Extracting from the string itself reads a snapshot of it.
  ZQString t("tok rest");
  EXPECT_TRUE(t.Extract(t));
  EXPECT_EQ(Std(t), "tok resttok");
  EXPECT_EQ(t.Tell(), 3);
}

TEST(ZQStringTest, PrintEscapes) {
  ZQString s(std::string("\x00\x09\x27\x5c\x41\xe9", 6).c_str(), 6);
  ZQString out("pre:");
  s.Print(out, true);
  EXPECT_EQ(Std(out), "pre:'\\0\\t\\'\\\\A\\xe9'");
  ZQString plain;
  ZQString("\x7f\x0a \x1f~").Print(plain, false);
  EXPECT_EQ(Std(plain), "\\x7f\\x0a \\x1f~");
  ZQString self("a'b");
  self.Print(self, true);
  EXPECT_EQ(Std(self), "a'b'a\\'b'");
}

TEST(ZQStringTest, ExtractTokens) {
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
  ZQString acc("<");
  acc.Extract(src);
  acc.Extract(src);
  EXPECT_EQ(Std(acc), "<onetwo");
}

TEST(ZQStringTest, PrintExtractRoundTrip) {
  std::mt19937 rng(11);
  for (int i = 0; i < 500; ++i) {
    // Zero bytes do not survive: "\0" is a decimal escape that swallows the
    // byte after it.
    std::string bytes(rng() % 40, '\0');
    for (char& c : bytes) c = static_cast<char>(1 + rng() % 255);
    ZQString s(bytes.data(), static_cast<int>(bytes.size()));
    ZQString printed;
    s.Print(printed, true);
    ZQString back;
    back.Extract(printed);
    ASSERT_EQ(Std(back), bytes) << Std(printed);
    ASSERT_EQ(printed.Peek(), -1);
  }
}

TEST(ZQStringTest, NarrowFromUnits) {
  const U16 text = {'A', 0xE9, 0x20AC, 0x4E2D, 0x0153, 'z'};
  // Code set 1 keeps the low byte of every unit.
  ZQString s;
  EXPECT_TRUE(s.Assign(text.c_str(), ZQ_CSET_ISO8859_1));
  EXPECT_EQ(Std(s), std::string("A\xe9\xac\x2d\x53z"));
  s.Assign(text.c_str(), ZQ_CSET_ISO8859_1, 2);
  EXPECT_EQ(Std(s), "A\xe9");

  // UTF-8 against iconv.
  s.Assign(text.c_str(), ZQ_CSET_UTF8);
  EXPECT_EQ(Std(s), Iconv("UTF-8", "UTF-16LE", Utf16Bytes(text)));
  // A high surrogate yields nothing, a low one three bytes, zero a zero byte.
  const U16 odd = {'a', 0xD83D, 0xDE00, 0, 'b'};
  s.Assign(odd.data(), ZQ_CSET_UTF8, 5);
  EXPECT_EQ(Std(s), std::string("a\xed\xb8\x80\0b", 6));

  ZQWString w(text.c_str());
  s.Assign(w, ZQ_CSET_UTF8);
  EXPECT_EQ(Std(s), Iconv("UTF-8", "UTF-16LE", Utf16Bytes(text)));
  s.Assign(static_cast<const unsigned short*>(nullptr), ZQ_CSET_UTF8);
  EXPECT_EQ(s.length(), 0);

  // CP1252 against iconv, whole-string and unit-by-unit (a zero unit inside).
  const U16 cp = {'a', 0x20AC, 0x0153, 0xE9, 0x2122};
  s.Assign(cp.c_str(), ZQ_CSET_CP1252);
  EXPECT_EQ(Std(s), Iconv("CP1252", "UTF-16LE", Utf16Bytes(cp)));
  U16 with_zero = cp + U16(1, 0) + cp;
  s.Assign(with_zero.data(), ZQ_CSET_CP1252, static_cast<int>(with_zero.size()));
  std::string one = Iconv("CP1252", "UTF-16LE", Utf16Bytes(cp));
  EXPECT_EQ(Std(s), one + std::string(1, '\0') + one);
  // A unit without a CP1252 form keeps its low byte.
  const U16 cjk = {'x', 0x4E2D};
  s.Assign(cjk.c_str(), ZQ_CSET_CP1252);
  EXPECT_EQ(Std(s), "x\x2d");
}

TEST(SmallHelpersTest, CaseInsensitiveCompareAndMove) {
  // Oracles: glibc's strcasecmp and wcscasecmp/wcsncasecmp, by sign.
  const char* words[] = {"", "a", "A", "ab", "AB", "aB_", "ab[", "abc", "ABD", "Z", "_",
                         "\x7f", "\x80", "hello world", "HELLO WORLD!"};
  for (const char* x : words) {
    for (const char* y : words) {
      EXPECT_EQ(Sign(strcmpi(x, y)), Sign(strcasecmp(x, y))) << x << " / " << y;
      U16 wx, wy;
      std::wstring cx, cy;
      for (const char* p = x; *p; ++p) {
        wx += static_cast<unsigned char>(*p);
        cx += static_cast<wchar_t>(static_cast<unsigned char>(*p));
      }
      for (const char* p = y; *p; ++p) {
        wy += static_cast<unsigned char>(*p);
        cy += static_cast<wchar_t>(static_cast<unsigned char>(*p));
      }
      EXPECT_EQ(Sign(ZQGlob::wcscmpi(wx.c_str(), wy.c_str())),
                Sign(wcscasecmp(cx.c_str(), cy.c_str())));
      for (int n : {0, 1, 2, 3}) {
        EXPECT_EQ(Sign(ZQGlob::wcsncmpi(wx.c_str(), wy.c_str(), n)),
                  Sign(wcsncasecmp(cx.c_str(), cy.c_str(), n)));
      }
      EXPECT_EQ(Sign(ZQGlob::wcsncmpi(wx.c_str(), wy.c_str(), -1)),
                Sign(wcscasecmp(cx.c_str(), cy.c_str())));
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
  std::string utf8 = Iconv("UTF-8", "UTF-16LE", Utf16Bytes(text));
  ZQString s;
  s.Assign(text.c_str(), ZQ_CSET_OEM);
  EXPECT_EQ(Std(s), utf8);
  // Unit by unit when a zero unit is inside.
  U16 with_zero = text + U16(1, 0) + text;
  s.Assign(with_zero.data(), ZQ_CSET_OEM, static_cast<int>(with_zero.size()));
  EXPECT_EQ(Std(s), utf8 + std::string(1, '\0') + utf8);
  s.Assign(with_zero);  // std form: code set 0, whole string
  EXPECT_EQ(Std(s), utf8 + std::string(1, '\0') + utf8);

  ZQWString w;
  w.Assign(utf8.c_str(), ZQ_CSET_OEM);
  EXPECT_EQ(std::basic_string<unsigned short>(w.c_str(), w.length()), text);
  std::string zeroed = utf8 + std::string(1, '\0') + utf8;
  w.Assign(zeroed);
  EXPECT_EQ(std::basic_string<unsigned short>(w.c_str(), w.length()), with_zero);
  // A byte that starts no character keeps its value.
  w.Assign("a\xff" "b", ZQ_CSET_OEM);
  EXPECT_EQ(std::basic_string<unsigned short>(w.c_str(), w.length()), (U16{'a', 0xFF, 'b'}));
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
