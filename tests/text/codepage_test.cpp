// Code-set names and conversions through ZQGlob and the string classes,
// checked against glibc's iconv.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using zqtest::FromLE;
using zqtest::Iconv;
using zqtest::LE;
using zqtest::Std;
using zqtest::U16;
using zqtest::Widen;

std::string N(const unsigned short* s) {
  std::string out;
  while (s != nullptr && *s) out.push_back(static_cast<char>(*s++));
  return out;
}

TEST(EncodingNames, LookUpInTableOrder) {
  struct {
    const char* name;
    int cs;
  } by_name[] = {
      {"utf-8", -3},     {"UTF-8", -3},      {"ucs-2", -2},       {"usascii", 1},
      {"USASCII", 1},    {"oem", 0},         {"iso-8859-1", 1},   {"cp1252", 2},
      {"ISO-8859-9", 10}, {"CP1250", 11},    {"cp1258", 18},      {"Shift_JIS", 19},
      {"Shift-JIS", 19}, {"shift_jis", 19},  {"GB2312", 21},      {"KS_C_5601", 22},
      {"big5", 23},      {"KOI8-R", -1},     {"", -1},            {"CP1252 ", -1},
      {"UTF8", -1},      {"ISO-8859-10", -1},
  };
  for (const auto& c : by_name) {
    EXPECT_EQ(ZQGlob::EncodingByName(Widen(c.name).c_str()), c.cs) << c.name;
  }
  EXPECT_EQ(ZQGlob::EncodingByName(nullptr), -1);

  struct {
    int cs;
    const char* name;  // null: no name
  } to_name[] = {
      {-3, "UTF-8"},  {-2, "UCS-2"},  {-1, nullptr},       {0, "OEM"},
      {1, "ISO-8859-1"}, {2, "CP1252"}, {3, "ISO-8859-2"},  {10, "ISO-8859-9"},
      {11, "CP1250"}, {13, "CP1253"}, {18, "CP1258"},      {19, "Shift_JIS"},
      {20, "Shift_JIS"}, {21, "GB2312"}, {22, "ks_c_5601"}, {23, "Big5"},
      {24, nullptr},  {-4, nullptr},  {1000, nullptr},
  };
  for (const auto& c : to_name) {
    const unsigned short* name = ZQGlob::EncodingToName(static_cast<ZQ_CSET>(c.cs));
    EXPECT_EQ(name == nullptr, c.name == nullptr) << c.cs;
    EXPECT_EQ(N(name), c.name != nullptr ? c.name : "") << c.cs;
  }
  // Every named value finds itself by its name, except 20 (only by value).
  for (int cs = -3; cs <= 23; ++cs) {
    const unsigned short* name = ZQGlob::EncodingToName(static_cast<ZQ_CSET>(cs));
    if (name == nullptr) continue;
    EXPECT_EQ(ZQGlob::EncodingByName(name), cs == 20 ? 19 : cs) << cs;
  }
}

TEST(EncodingNames, ClassifiesCodeSets) {
  for (int cs = -5; cs <= 25; ++cs) {
    bool iso = cs == 1 || (cs >= 3 && cs <= 10);
    EXPECT_EQ(ZQGlob::ISOEncoding(static_cast<ZQ_CSET>(cs)), iso) << cs;
    // Every module is in the build tree next to the runtime.
    bool valid = cs >= -3 && cs <= 23 && cs != -1;
    EXPECT_EQ(ZQGlob::ValidateEncoding(static_cast<ZQ_CSET>(cs)), valid) << cs;
  }
  struct {
    int cs, max;
  } maxima[] = {{-3, 4}, {-2, 2}, {1, 1}, {2, 1}, {3, 1}, {18, 1},
                {19, 2}, {20, 2}, {21, 2}, {22, 2}, {23, 2}};
  for (const auto& m : maxima) {
    EXPECT_EQ(ZQGlob::MBMaxChars(static_cast<ZQ_CSET>(m.cs)), m.max) << m.cs;
  }
  EXPECT_TRUE(ZQGlob::IsLeadByte(static_cast<char>(0x82), ZQ_CSET_SHIFTJIS));
  EXPECT_FALSE(ZQGlob::IsLeadByte(0xB1, ZQ_CSET_SHIFTJIS));  // half-width katakana
  EXPECT_FALSE(ZQGlob::IsLeadByte(0x82, ZQ_CSET_CP1252));
  EXPECT_TRUE(ZQGlob::IsLeadByte(0xE2, ZQ_CSET_UTF8));
  EXPECT_FALSE(ZQGlob::IsLeadByte(0x82, ZQ_CSET_UTF8));
  EXPECT_EQ(ZQGlob::GetCodePage(), 0x002501B5);
}

// Every code set, built in or served by a module: every character iconv
// knows (single bytes, and pairs after the code set's lead bytes) through
// the one-character and string routines and through the string classes,
// and a sweep of units that must have no form where iconv has none.
TEST(EncodingConversion, EveryCharacterMatchesIconv) {
  const struct {
    int cs;
    const char* iconv_name;
  } sets[] = {
      {1, "ISO-8859-1"}, {2, "CP1252"},     {3, "ISO-8859-2"},  {4, "ISO-8859-3"},
      {5, "ISO-8859-4"}, {6, "ISO-8859-5"}, {7, "ISO-8859-6"},  {8, "ISO-8859-7"},
      {9, "ISO-8859-8"}, {10, "ISO-8859-9"}, {11, "CP1250"},    {12, "CP1251"},
      {13, "CP1253"},    {14, "CP1254"},    {15, "CP1255"},     {16, "CP1256"},
      {17, "CP1257"},    {18, "CP1258"},    {19, "SHIFT_JIS"},  {20, "CP932"},
      {21, "CP936"},     {22, "CP949"},     {23, "CP950"},
  };
  for (const auto& c : sets) {
    SCOPED_TRACE(c.iconv_name);
    ZQ_CSET cs = static_cast<ZQ_CSET>(c.cs);
    Iconv decode("UTF-16LE", c.iconv_name), encode(c.iconv_name, "UTF-16LE");
    std::string text, got;
    U16 units;
    auto check = [&](const std::string& ch) {
      unsigned short u = 0;
      int len = ZQGlob::MBtoWC(&u, ch.data(), static_cast<int>(ch.size()), cs);
      if (!decode.Convert(ch, &got) || got.size() != 2) return false;
      EXPECT_EQ(len, static_cast<int>(ch.size()));
      EXPECT_EQ(u, FromLE(got)[0]) << testing::PrintToString(ch);
      EXPECT_EQ(ZQGlob::MBLen(ch.c_str(), -1, cs), len);  // -1: up to the zero byte
      char enc[4];
      len = ZQGlob::WCtoMB(enc, u, cs);
      EXPECT_EQ(std::string(enc, std::max(len, 0)), encode(LE(U16(1, u))));
      text += ch;
      units += u;
      return true;
    };
    for (int b = 1; b < 256; ++b) {
      std::string one(1, static_cast<char>(b));
      if (check(one)) continue;
      unsigned short u = 0;
      if (ZQGlob::IsLeadByte(b, cs)) {
        for (int t = 1; t < 256; ++t) check(one + static_cast<char>(t));
      } else if (c.cs == 2) {  // the five bytes CP1252 leaves unassigned
        EXPECT_EQ(ZQGlob::MBtoWC(&u, one.c_str(), 1, cs), 1);
        EXPECT_EQ(u, b);
      } else {
        EXPECT_EQ(ZQGlob::MBtoWC(&u, one.c_str(), 1, cs), -1) << b;
      }
    }
    ASSERT_GT(units.size(), 90u);
    EXPECT_EQ(ZQGlob::MBLen("", 1, cs), 0);
    std::vector<unsigned short> wide(units.size() + 1, 0xAAAA);
    ASSERT_EQ(ZQGlob::MBStoWCS(wide.data(), text.c_str(), static_cast<int>(wide.size()), cs),
              static_cast<int>(units.size()));
    EXPECT_TRUE(U16(wide.data()) == units);
    EXPECT_EQ(ZQGlob::MBStoWCS(nullptr, text.c_str(), 0, cs), static_cast<int>(units.size()));
    // Code pages with duplicate codes encode each unit as iconv picks it.
    std::string encoded = encode(LE(units)), narrow(encoded.size() + 1, 'x');
    ASSERT_EQ(ZQGlob::WCStoMBS(&narrow[0], units.c_str(), static_cast<int>(narrow.size()), cs),
              static_cast<int>(encoded.size()));
    EXPECT_TRUE(narrow.c_str() == encoded);
    ZQWString w;
    ZQString s;
    ASSERT_TRUE(w.Assign(ZQString(text.c_str(), static_cast<int>(text.size())), cs));
    EXPECT_TRUE(Std(w) == units);
    ASSERT_TRUE(s.Assign(w, cs));
    EXPECT_TRUE(Std(s) == encoded);
    ASSERT_TRUE(w.Assign(s, cs));
    EXPECT_TRUE(Std(w) == units);

    for (uint32_t u = 0x100; u < 0x10000; u += 7) {
      if (u >= 0xD800 && u <= 0xDFFF) continue;
      char out[4];
      bool mapped = encode.Convert(LE(U16(1, u)), &got) &&
                    static_cast<int>(got.size()) <= ZQGlob::MBMaxChars(cs);
      int len = ZQGlob::WCtoMB(out, static_cast<unsigned short>(u), cs);
      ASSERT_EQ(len, mapped ? static_cast<int>(got.size()) : -1) << u;
      ASSERT_EQ(std::string(out, std::max(len, 0)), mapped ? got : "") << u;
    }
  }
}

// A page whose last bytes are followed by an unreadable page: a routine that
// reads past its count faults.
class GuardedBytes {
 public:
  GuardedBytes() {
    page_ = sysconf(_SC_PAGESIZE);
    base_ = static_cast<char*>(
        mmap(nullptr, page_ * 2, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + page_, page_, PROT_NONE);
  }
  ~GuardedBytes() { munmap(base_, page_ * 2); }
  const char* Put(const std::string& bytes) {
    char* at = base_ + page_ - bytes.size();
    std::memcpy(at, bytes.data(), bytes.size());
    return at;
  }

 private:
  long page_;
  char* base_;
};

TEST(EncodingConversion, NeverReadsPastTheCount) {
  GuardedBytes guard;
  struct {
    int cs;
    std::string bytes;
    int n;
    int want;
  } cases[] = {
      {19, "\x82", 1, -1},          // Shift_JIS lead byte alone
      {21, "\xB0", 1, -1},          // GBK lead byte alone
      {19, "\x82\xA0", 2, 2},       // a complete pair
      {-3, "\xE2\x82", 2, -1},      // UTF-8 cut short
      {-3, "\xF0\x9F\x98", 3, -1},  // four-byte sequence cut short
      {-3, "\xC3\xA4", 2, 2},
      {-2, "A", 1, -1},             // half a unit
      {1, "A", 1, 1},
      {2, "\x80", 1, 1},
      {5, "A", 1, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.cs);
    const char* in = guard.Put(c.bytes);
    unsigned short u = 0;
    EXPECT_EQ(ZQGlob::MBtoWC(&u, in, c.n, static_cast<ZQ_CSET>(c.cs)), c.want);
    EXPECT_EQ(ZQGlob::MBLen(in, c.n, static_cast<ZQ_CSET>(c.cs)), c.want);
  }
  unsigned short u = 0;
  EXPECT_EQ(ZQGlob::MBtoWC(&u, "A", 0, ZQ_CSET_CP1252), -1);
}

TEST(EncodingConversion, NeverWritesPastTheCapacity) {
  for (int cs : {-3, -2, 1, 2, 3, 19, 23}) {
    SCOPED_TRACE(cs);
    ZQ_CSET set = static_cast<ZQ_CSET>(cs);
    const unsigned short text[] = {'a', 'b', 'c', 'd', 'e', 0};
    char bytes[16];
    std::memset(bytes, 0x55, sizeof(bytes));
    int unit_bytes = cs == -2 ? 2 : 1;
    EXPECT_EQ(ZQGlob::WCStoMBS(bytes, text, 3 * unit_bytes, set), 3 * unit_bytes);
    EXPECT_EQ(bytes[3 * unit_bytes], 0x55);
    char narrow[16] = {};
    ASSERT_EQ(ZQGlob::WCStoMBS(narrow, text, sizeof(narrow), set), 5 * unit_bytes);
    unsigned short units[8];
    std::fill(units, units + 8, 0xAAAA);
    EXPECT_EQ(ZQGlob::MBStoWCS(units, narrow, 3, set), 3);
    EXPECT_EQ(units[3], 0xAAAA);
    EXPECT_EQ(ZQGlob::MBStoWCS(units, narrow, -1, set), 0);
    EXPECT_EQ(units[0], 'a');
  }
  // Two-byte characters and surrogate pairs are never split.
  const unsigned short kanji[] = {0x65E5, 0x672C, 0};
  char out[8];
  std::memset(out, 0x55, sizeof(out));
  EXPECT_EQ(ZQGlob::WCStoMBS(out, kanji, 3, ZQ_CSET_SHIFTJIS), 2);
  EXPECT_EQ(out[2], 0x55);
  const unsigned short pair[] = {0xD83D, 0xDE00, 0};
  std::memset(out, 0x55, sizeof(out));
  EXPECT_EQ(ZQGlob::WCStoMBS(out, pair, 3, ZQ_CSET_UTF8), 0);
  EXPECT_EQ(ZQGlob::WCStoMBS(out, pair, 4, ZQ_CSET_UTF8), 4);
  unsigned short units[2] = {0xAAAA, 0xAAAA};
  EXPECT_EQ(ZQGlob::MBStoWCS(units, "\xF0\x9F\x98\x80", 1, ZQ_CSET_UTF8), 0);
  EXPECT_EQ(units[0], 0xAAAA);
}

// UTF-8 and UCS-2 through the code-set routines and the string classes:
// valid text as iconv has it, and the library's lenient decoding of the rest.
TEST(EncodingConversion, Utf8AndUcs2) {
  U16 all;
  for (uint32_t u = 1; u < 0x10000; ++u) {
    if (u < 0xD800 || u > 0xDFFF) all.push_back(static_cast<unsigned short>(u));
  }
  const U16 beyond = all + U16{0xD83D, 0xDE00, 0xDBFF, 0xDFFF};  // two pairs
  std::string utf8 = Iconv("UTF-8", "UTF-16LE")(LE(beyond));
  std::vector<char> bytes(utf8.size() + 1);
  ASSERT_EQ(ZQGlob::WCStoMBS(bytes.data(), beyond.c_str(), static_cast<int>(bytes.size()),
                             ZQ_CSET_UTF8),
            static_cast<int>(utf8.size()));
  EXPECT_EQ(std::string(bytes.data()), utf8);
  std::vector<unsigned short> units(beyond.size() + 1);
  ASSERT_EQ(ZQGlob::MBStoWCS(units.data(), utf8.c_str(), static_cast<int>(units.size()),
                             ZQ_CSET_UTF8),
            static_cast<int>(beyond.size()));
  EXPECT_TRUE(U16(units.data()) == beyond);
  // The string classes carry one unit per sequence: the basic plane only.
  utf8 = Iconv("UTF-8", "UTF-16LE")(LE(all));
  ZQWString wide;
  ZQString narrow;
  ASSERT_TRUE(wide.Assign(ZQString(utf8.c_str(), static_cast<int>(utf8.size())), ZQ_CSET_UTF8));
  ASSERT_TRUE(Std(wide) == all);
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_UTF8));
  EXPECT_TRUE(Std(narrow) == utf8);
  // UCS-2: the narrow form is the units' own bytes.
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_UCS2));
  EXPECT_TRUE(Std(narrow) == LE(all));
  ASSERT_TRUE(wide.Assign(narrow, ZQ_CSET_UCS2));
  EXPECT_TRUE(Std(wide) == all);

  struct {
    const char* bytes;
    int mbtowc;  // result of MBtoWC with n = strlen
    unsigned short unit;
  } one[] = {
      {"\xC3\xA4", 2, 0xE4},
      {"\xE2\x82\xAC", 3, 0x20AC},
      {"\xC1\x81", 2, 0x41},        // overlong forms are accepted
      {"\xC3\x41", 2, 0x81},        // trailing bytes are not checked
      {"\xF0\x9F\x98\x80", -1, 0},  // beyond one unit
      {"\xF8\x88\x80\x80\x80", -1, 0},
      {"\xE2\x82", -1, 0},
  };
  for (const auto& c : one) {
    unsigned short u = 0;
    int n = static_cast<int>(std::strlen(c.bytes));
    EXPECT_EQ(ZQGlob::MBtoWC(&u, c.bytes, n, ZQ_CSET_UTF8), c.mbtowc) << c.bytes;
    EXPECT_EQ(c.mbtowc > 0 ? u : 0, c.unit) << c.bytes;
  }
  char out[8] = {};
  EXPECT_EQ(ZQGlob::WCtoMB(out, 0xDC00, ZQ_CSET_UTF8), 3);
  EXPECT_EQ(std::string(out, 3), "\xED\xB0\x80");
  EXPECT_EQ(ZQGlob::WCtoMB(out, 0xD800, ZQ_CSET_UTF8), -1);
  unsigned short u16[4];
  EXPECT_EQ(ZQGlob::MBStoWCS(u16, "a\xF8\x88", 4, ZQ_CSET_UTF8), -1);
  const unsigned short lone_high[] = {'a', 0xD800, 'b', 0};
  EXPECT_EQ(ZQGlob::WCStoMBS(out, lone_high, 8, ZQ_CSET_UTF8), -1);

  const unsigned short text[] = {0x20AC, 'A', 0x4E2D, 0};
  char raw[8];
  ASSERT_EQ(ZQGlob::WCStoMBS(raw, text, 8, ZQ_CSET_UCS2), 6);
  EXPECT_EQ(std::memcmp(raw, text, 8), 0);
  unsigned short back[4];
  ASSERT_EQ(ZQGlob::MBStoWCS(back, raw, 4, ZQ_CSET_UCS2), 3);
  EXPECT_EQ(U16(back), U16(text));
  unsigned short u = 0;
  EXPECT_EQ(ZQGlob::MBtoWC(&u, raw, 2, ZQ_CSET_UCS2), 2);
  EXPECT_EQ(u, 0x20AC);
  EXPECT_EQ(ZQGlob::MBLen(raw + 6, 2, ZQ_CSET_UCS2), 0);
}

TEST(EncodingConversion, UnknownCodeSetsUseTheLocale) {
  const char text[] = "plain ASCII";
  unsigned short want[32], got[32];
  int n = ZQGlob::MBStoWCS(want, text, 32, ZQ_CSET_OEM);
  ASSERT_EQ(n, 11);
  for (int cs : {-1, -4, 24, 99}) {
    std::fill(got, got + 32, 0);
    EXPECT_EQ(ZQGlob::MBStoWCS(got, text, 32, static_cast<ZQ_CSET>(cs)), n) << cs;
    EXPECT_EQ(U16(got), U16(want)) << cs;
  }
}

}  // namespace
