// Code-set names and conversions through ZQGlob, checked against the C
// library's iconv where a code page is involved.
#include <errno.h>
#include <iconv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/zqglob.h"

namespace {

using U16 = std::basic_string<unsigned short>;

U16 W(const char* s) {
  U16 out;
  while (*s) out.push_back(static_cast<unsigned char>(*s++));
  return out;
}

std::string N(const unsigned short* s) {
  std::string out;
  while (s != nullptr && *s) out.push_back(static_cast<char>(*s++));
  return out;
}

// iconv over one complete input; false when it rejects any of it.
bool Iconv(const char* to, const char* from, const std::string& in, std::string* out) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  std::vector<char> buf(in.size() * 8 + 16);
  char* ip = const_cast<char*>(in.data());
  size_t il = in.size();
  char* op = buf.data();
  size_t ol = buf.size();
  bool ok = iconv(cd, &ip, &il, &op, &ol) != static_cast<size_t>(-1) &&
            iconv(cd, nullptr, nullptr, &op, &ol) != static_cast<size_t>(-1) && il == 0;
  iconv_close(cd);
  out->assign(buf.data(), op - buf.data());
  return ok;
}

// Units as UTF-16LE bytes and back, for iconv.
std::string Bytes(const U16& u) {
  return std::string(reinterpret_cast<const char*>(u.data()), u.size() * 2);
}
U16 Units(const std::string& b) {
  U16 out(b.size() / 2, 0);
  std::memcpy(&out[0], b.data(), out.size() * 2);
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
    EXPECT_EQ(ZQGlob::EncodingByName(W(c.name).c_str()), c.cs) << c.name;
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
    if (c.name == nullptr) {
      EXPECT_EQ(name, nullptr) << c.cs;
    } else {
      EXPECT_EQ(N(name), c.name) << c.cs;
    }
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
  EXPECT_TRUE(ZQGlob::IsLeadByte(0x82, ZQ_CSET_SHIFTJIS));
  EXPECT_TRUE(ZQGlob::IsLeadByte(static_cast<char>(0x82), ZQ_CSET_SHIFTJIS));
  EXPECT_FALSE(ZQGlob::IsLeadByte(0xB1, ZQ_CSET_SHIFTJIS));  // half-width katakana
  EXPECT_FALSE(ZQGlob::IsLeadByte(0x82, ZQ_CSET_CP1252));
  EXPECT_TRUE(ZQGlob::IsLeadByte(0xE2, ZQ_CSET_UTF8));
  EXPECT_FALSE(ZQGlob::IsLeadByte(0x82, ZQ_CSET_UTF8));
}

// ISO-8859-1, CP1252 and every module code set, through ZQGlob, against
// iconv: every byte, every unit, and a text of every character.
TEST(EncodingConversion, SingleByteCodeSetsMatchIconv) {
  struct {
    int cs;
    const char* iconv_name;
  } sets[] = {{1, "ISO-8859-1"}, {2, "CP1252"},  {3, "ISO-8859-2"}, {6, "ISO-8859-5"},
              {10, "ISO-8859-9"}, {11, "CP1250"}, {12, "CP1251"},    {16, "CP1256"},
              {17, "CP1257"}};
  for (const auto& s : sets) {
    SCOPED_TRACE(s.iconv_name);
    ZQ_CSET cs = static_cast<ZQ_CSET>(s.cs);
    std::string text;
    U16 units;
    for (int b = 1; b < 256; ++b) {
      std::string one(1, static_cast<char>(b)), want;
      unsigned short u = 0;
      int len = ZQGlob::MBtoWC(&u, one.c_str(), 1, cs);
      if (Iconv("UTF-16LE", s.iconv_name, one, &want)) {
        ASSERT_EQ(len, 1) << b;
        ASSERT_EQ(u, Units(want)[0]) << b;
      } else if (s.cs == 2) {
        // The five bytes CP1252 leaves unassigned stand for themselves.
        ASSERT_EQ(len, 1) << b;
        ASSERT_EQ(u, b) << b;
      } else {
        ASSERT_EQ(len, -1) << b;
        continue;
      }
      text += one;
      units += u;
      char back[4] = {};
      ASSERT_EQ(ZQGlob::WCtoMB(back, u, cs), 1);
      ASSERT_EQ(back[0], one[0]);
      EXPECT_EQ(ZQGlob::MBLen(one.c_str(), 1, cs), 1);
    }
    EXPECT_EQ(ZQGlob::MBLen("", 1, cs), 0);
    std::vector<unsigned short> out(text.size() + 2, 0xAAAA);
    ASSERT_EQ(ZQGlob::MBStoWCS(out.data(), text.c_str(), static_cast<int>(out.size()), cs),
              static_cast<int>(units.size()));
    EXPECT_EQ(U16(out.data()), units);
    std::string bytes(text.size() + 1, 'x');
    ASSERT_EQ(ZQGlob::WCStoMBS(&bytes[0], units.c_str(), static_cast<int>(bytes.size()), cs),
              static_cast<int>(text.size()));
    EXPECT_EQ(bytes.c_str(), text);
    // Units iconv cannot map have no form here either.
    int checked = 0;
    for (uint32_t u = 0x100; u < 0x10000; u += 7) {
      if (u >= 0xD800 && u <= 0xDFFF) continue;
      std::string want;
      char out1[4];
      bool mapped = Iconv(s.iconv_name, "UTF-16LE", Bytes(U16(1, u)), &want);
      int len = ZQGlob::WCtoMB(out1, static_cast<unsigned short>(u), cs);
      ASSERT_EQ(len, mapped ? 1 : -1) << u;
      if (mapped) {
        EXPECT_EQ(out1[0], want[0]);
      }
      ++checked;
    }
    EXPECT_GT(checked, 1000);
  }
}

TEST(EncodingConversion, DoubleByteCodeSetsMatchIconv) {
  struct {
    int cs;
    const char* iconv_name;
    const char* sample;  // UTF-8 text
  } sets[] = {
      {19, "SHIFT_JIS", "ｱｲ 日本語のテキスト"},
      {20, "CP932", "①②Ⅲ 日本語～"},
      {21, "CP936", "中文文本，汉字"},
      {22, "CP949", "한국어 텍스트"},
      {23, "CP950", "繁體中文"},
  };
  for (const auto& s : sets) {
    SCOPED_TRACE(s.iconv_name);
    ZQ_CSET cs = static_cast<ZQ_CSET>(s.cs);
    std::string bytes, utf16;
    ASSERT_TRUE(Iconv(s.iconv_name, "UTF-8", s.sample, &bytes));
    ASSERT_TRUE(Iconv("UTF-16LE", "UTF-8", s.sample, &utf16));
    U16 want = Units(utf16);
    unsigned short out[64];
    ASSERT_EQ(ZQGlob::MBStoWCS(out, bytes.c_str(), 64, cs), static_cast<int>(want.size()));
    EXPECT_EQ(U16(out), want);
    EXPECT_EQ(ZQGlob::MBStoWCS(nullptr, bytes.c_str(), 0, cs), static_cast<int>(want.size()));
    char back[128];
    ASSERT_EQ(ZQGlob::WCStoMBS(back, want.c_str(), sizeof(back), cs),
              static_cast<int>(bytes.size()));
    EXPECT_EQ(std::string(back), bytes);
    // Character by character, with lengths.
    size_t at = 0, unit = 0;
    while (at < bytes.size()) {
      unsigned short u;
      int len = ZQGlob::MBtoWC(&u, bytes.c_str() + at, static_cast<int>(bytes.size() - at), cs);
      ASSERT_GT(len, 0);
      EXPECT_EQ(ZQGlob::MBLen(bytes.c_str() + at, -1, cs), len);
      EXPECT_EQ(u, want[unit++]);
      char enc[4];
      ASSERT_EQ(ZQGlob::WCtoMB(enc, u, cs), len);
      EXPECT_EQ(std::string(enc, len), bytes.substr(at, len));
      at += len;
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
    int len = ZQGlob::WCStoMBS(narrow, text, sizeof(narrow), set);
    ASSERT_EQ(len, 5 * unit_bytes);
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

// UTF-8 and UCS-2 through the code-set routines: valid text as iconv has
// it, and the library's lenient decoding of the rest.
TEST(EncodingConversion, Utf8AndUcs2) {
  U16 all;
  for (uint32_t u = 1; u < 0x10000; ++u) {
    if (u < 0xD800 || u > 0xDFFF) all.push_back(static_cast<unsigned short>(u));
  }
  all += {0xD83D, 0xDE00, 0xDBFF, 0xDFFF};  // two characters beyond the BMP
  std::string utf8;
  ASSERT_TRUE(Iconv("UTF-8", "UTF-16LE", Bytes(all), &utf8));
  std::vector<char> bytes(utf8.size() + 1);
  ASSERT_EQ(ZQGlob::WCStoMBS(bytes.data(), all.c_str(), static_cast<int>(bytes.size()),
                             ZQ_CSET_UTF8),
            static_cast<int>(utf8.size()));
  EXPECT_EQ(std::string(bytes.data()), utf8);
  std::vector<unsigned short> units(all.size() + 1);
  ASSERT_EQ(ZQGlob::MBStoWCS(units.data(), utf8.c_str(), static_cast<int>(units.size()),
                             ZQ_CSET_UTF8),
            static_cast<int>(all.size()));
  EXPECT_EQ(U16(units.data()), all);

  struct {
    const char* bytes;
    int mbtowc;      // result of MBtoWC with n = strlen
    unsigned short unit;
  } one[] = {
      {"\xC3\xA4", 2, 0xE4},
      {"\xE2\x82\xAC", 3, 0x20AC},
      {"\xC1\x81", 2, 0x41},         // overlong forms are accepted
      {"\xC3\x41", 2, 0x81},         // trailing bytes are not checked
      {"\xF0\x9F\x98\x80", -1, 0},   // beyond one unit
      {"\xF8\x88\x80\x80\x80", -1, 0},
      {"\xE2\x82", -1, 0},
  };
  for (const auto& c : one) {
    unsigned short u = 0;
    int n = static_cast<int>(std::strlen(c.bytes));
    EXPECT_EQ(ZQGlob::MBtoWC(&u, c.bytes, n, ZQ_CSET_UTF8), c.mbtowc) << c.bytes;
    if (c.mbtowc > 0) {
      EXPECT_EQ(u, c.unit) << c.bytes;
    }
  }
  char out[8] = {};
  EXPECT_EQ(ZQGlob::WCtoMB(out, 0xDC00, ZQ_CSET_UTF8), 3);
  EXPECT_EQ(std::string(out, 3), "\xED\xB0\x80");
  EXPECT_EQ(ZQGlob::WCtoMB(out, 0xD800, ZQ_CSET_UTF8), -1);
  unsigned short u16[4];
  EXPECT_EQ(ZQGlob::MBStoWCS(u16, "a\xF8\x88", 4, ZQ_CSET_UTF8), -1);
  const unsigned short lone_high[] = {'a', 0xD800, 'b', 0};
  EXPECT_EQ(ZQGlob::WCStoMBS(out, lone_high, 8, ZQ_CSET_UTF8), -1);

  // UCS-2: the narrow text is the units themselves.
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

TEST(EncodingCodePage, StoresOneValue) {
  EXPECT_EQ(ZQGlob::GetCodePage(), 0x002501B5);
  EXPECT_EQ(ZQGlob::SetCodePage(850), 0);
  EXPECT_EQ(ZQGlob::GetCodePage(), 850);
  EXPECT_EQ(ZQGlob::SetCodePage(-1), 0);
  EXPECT_EQ(ZQGlob::GetCodePage(), -1);
  ZQGlob::SetCodePage(0x002501B5);
}

}  // namespace
