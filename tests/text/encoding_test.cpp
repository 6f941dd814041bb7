// Code sets, UTF-8, EBCDIC tables and Unicode classes, against iconv where it can.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/ebcdic.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using zqtest::Iconv;
using zqtest::LE;
using zqtest::Std;
using zqtest::U16;
using zqtest::Widen;
using Bytes = std::basic_string<unsigned char>;

std::string N(const unsigned short* s) { return std::string(s, s + U16(s).size()); }

// `bytes` in `cs` are `units`, which encode as `encoded`: by routine and by class.
void RoundTrip(ZQ_CSET cs, const std::string& bytes, const U16& units,
               const std::string& encoded) {
  const int n = static_cast<int>(units.size()), m = static_cast<int>(encoded.size());
  std::vector<unsigned short> wide(n + 1, 0xAAAA);
  ASSERT_EQ(ZQGlob::MBStoWCS(wide.data(), bytes.c_str(), n + 1, cs), n);
  EXPECT_TRUE(U16(wide.data()) == units && ZQGlob::MBStoWCS(nullptr, bytes.c_str(), 0, cs) == n);
  std::string narrow(m + 1, 'x');
  ASSERT_EQ(ZQGlob::WCStoMBS(&narrow[0], units.c_str(), m + 1, cs), m);
  EXPECT_TRUE(narrow.c_str() == encoded);
  ZQWString w;
  ZQString s;
  ASSERT_TRUE(w.Assign(ZQString(bytes.c_str(), static_cast<int>(bytes.size())), cs));
  EXPECT_TRUE(Std(w) == units);
  ASSERT_TRUE(s.Assign(w, cs) && Std(s) == encoded);
  ASSERT_TRUE(w.Assign(s, cs) && Std(w) == units);
}

TEST(EncodingNames, NamesAndClasses) {
  struct {
    const char* name;
    int cs;
  } by_name[] = {
      {"utf-8", -3}, {"UTF-8", -3}, {"ucs-2", -2}, {"usascii", 1}, {"USASCII", 1}, {"oem", 0},
      {"iso-8859-1", 1}, {"cp1252", 2}, {"ISO-8859-9", 10}, {"CP1250", 11}, {"cp1258", 18},
      {"Shift_JIS", 19}, {"Shift-JIS", 19}, {"shift_jis", 19}, {"GB2312", 21}, {"KS_C_5601", 22},
      {"big5", 23}, {"KOI8-R", -1}, {"", -1}, {"CP1252 ", -1}, {"UTF8", -1}, {"ISO-8859-10", -1}};
  for (const auto& c : by_name) {
    EXPECT_EQ(ZQGlob::EncodingByName(Widen(c.name).c_str()), c.cs) << c.name;
  }
  EXPECT_EQ(ZQGlob::EncodingByName(nullptr), -1);

  struct {
    int cs;
    const char* name;  // null: no name
  } to_name[] = {
      {-3, "UTF-8"}, {-2, "UCS-2"}, {-1, nullptr}, {0, "OEM"}, {1, "ISO-8859-1"}, {2, "CP1252"},
      {3, "ISO-8859-2"}, {10, "ISO-8859-9"}, {11, "CP1250"}, {13, "CP1253"}, {18, "CP1258"},
      {19, "Shift_JIS"}, {20, "Shift_JIS"}, {21, "GB2312"}, {22, "ks_c_5601"}, {23, "Big5"},
      {24, nullptr}, {-4, nullptr}, {1000, nullptr}};
  for (const auto& c : to_name) {
    const unsigned short* name = ZQGlob::EncodingToName(static_cast<ZQ_CSET>(c.cs));
    EXPECT_TRUE(name == nullptr ? c.name == nullptr : N(name) == c.name) << c.cs;
  }
  // Every named value finds itself by its name, except 20 (only by value).
  for (int cs = -3; cs <= 23; ++cs) {
    const unsigned short* name = ZQGlob::EncodingToName(static_cast<ZQ_CSET>(cs));
    EXPECT_TRUE(!name || ZQGlob::EncodingByName(name) == (cs == 20 ? 19 : cs)) << cs;
  }

  for (int cs = -5; cs <= 25; ++cs) {
    bool iso = cs == 1 || (cs >= 3 && cs <= 10);
    EXPECT_EQ(ZQGlob::ISOEncoding(static_cast<ZQ_CSET>(cs)), iso) << cs;
    // Every module is in the build tree next to the runtime.
    bool valid = cs >= -3 && cs <= 23 && cs != -1;
    EXPECT_EQ(ZQGlob::ValidateEncoding(static_cast<ZQ_CSET>(cs)), valid) << cs;
  }
  struct {
    int cs, max;
  } maxima[] = {{-3, 4}, {-2, 2}, {1, 1}, {2, 1}, {3, 1}, {18, 1}, {19, 2}, {20, 2}, {21, 2},
                {22, 2}, {23, 2}};
  for (const auto& m : maxima) {
    EXPECT_EQ(ZQGlob::MBMaxChars(static_cast<ZQ_CSET>(m.cs)), m.max) << m.cs;
  }
  // 0xB1: half-width katakana.
  EXPECT_TRUE(ZQGlob::IsLeadByte(static_cast<char>(0x82), ZQ_CSET_SHIFTJIS) &&
              !ZQGlob::IsLeadByte(0xB1, ZQ_CSET_SHIFTJIS) &&
              !ZQGlob::IsLeadByte(0x82, ZQ_CSET_CP1252) && ZQGlob::IsLeadByte(0xE2, ZQ_CSET_UTF8) &&
              !ZQGlob::IsLeadByte(0x82, ZQ_CSET_UTF8));
  EXPECT_EQ(ZQGlob::GetCodePage(), 0x002501B5);
  // Unknown code sets convert through the locale.
  unsigned short got[32];
  for (int cs : {-1, -4, 24, 99}) {
    std::fill(got, got + 32, 0xAAAA);
    EXPECT_EQ(ZQGlob::MBStoWCS(got, "plain ASCII", 32, static_cast<ZQ_CSET>(cs)), 11) << cs;
    EXPECT_TRUE(U16(got) == Widen("plain ASCII")) << cs;
  }
}

// Every character of every code set (modules included) as iconv has it, and
// units that must have no form where iconv has none.
TEST(EncodingConversion, EveryCharacterMatchesIconv) {
  // The iconv names of code sets 1 to 23.
  const char* names[] = {"ISO-8859-1", "CP1252", "ISO-8859-2", "ISO-8859-3", "ISO-8859-4",
                         "ISO-8859-5", "ISO-8859-6", "ISO-8859-7", "ISO-8859-8", "ISO-8859-9",
                         "CP1250", "CP1251", "CP1253", "CP1254", "CP1255", "CP1256", "CP1257",
                         "CP1258", "SHIFT_JIS", "CP932", "CP936", "CP949", "CP950"};
  for (int n = 1; n <= 23; ++n) {
    SCOPED_TRACE(names[n - 1]);
    const ZQ_CSET cs = static_cast<ZQ_CSET>(n);
    Iconv decode("UTF-16LE", names[n - 1]), encode(names[n - 1], "UTF-16LE");
    std::string text, got;
    U16 units;
    auto check = [&](const std::string& ch) {
      unsigned short u = 0;
      int len = ZQGlob::MBtoWC(&u, ch.data(), static_cast<int>(ch.size()), cs);
      if (!decode.Convert(ch, &got) || got.size() != 2) return false;
      // MBLen with -1: up to the zero byte.
      EXPECT_TRUE(len == static_cast<int>(ch.size()) && u == zqtest::FromLE(got)[0] &&
                  ZQGlob::MBLen(ch.c_str(), -1, cs) == len) << testing::PrintToString(ch);
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
      } else {  // the five bytes CP1252 leaves unassigned are their own units
        const int len = ZQGlob::MBtoWC(&u, one.c_str(), 1, cs);
        EXPECT_TRUE(n == 2 ? len == 1 && u == b : len == -1) << b;
      }
    }
    ASSERT_GT(units.size(), 90u);
    EXPECT_EQ(ZQGlob::MBLen("", 1, cs), 0);
    // Code pages with duplicate codes encode each unit as iconv picks it.
    RoundTrip(cs, text, units, encode(LE(units)));

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

TEST(EncodingConversion, StaysInBounds) {
  struct {
    int cs;
    std::string bytes;
    int n;
    int want;
  } cases[] = {
      {19, "\x82", 1, -1}, {21, "\xB0", 1, -1},  // lead bytes alone
      {19, "\x82\xA0", 2, 2}, {-3, "\xE2\x82", 2, -1}, {-3, "\xF0\x9F\x98", 3, -1},
      {-3, "\xC3\xA4", 2, 2}, {-2, "A", 1, -1},  // half a unit
      {1, "A", 1, 1}, {2, "\x80", 1, 1}, {5, "A", 1, 1},
  };
  unsigned short u = 0;
  for (const auto& c : cases) {
    const char* in = zqtest::PutGuarded(0, c.bytes.data(), c.bytes.size());
    EXPECT_EQ(ZQGlob::MBtoWC(&u, in, c.n, static_cast<ZQ_CSET>(c.cs)), c.want) << c.cs;
    EXPECT_EQ(ZQGlob::MBLen(in, c.n, static_cast<ZQ_CSET>(c.cs)), c.want) << c.cs;
  }
  EXPECT_EQ(ZQGlob::MBtoWC(&u, "A", 0, ZQ_CSET_CP1252), -1);
  // Writing stops at the capacity.
  for (int cs : {-3, -2, 1, 2, 3, 19, 23}) {
    SCOPED_TRACE(cs);
    ZQ_CSET set = static_cast<ZQ_CSET>(cs);
    const unsigned short text[] = {'a', 'b', 'c', 'd', 'e', 0};
    char bytes[16];
    std::fill(bytes, bytes + 16, 0x55);
    const int unit_bytes = cs == -2 ? 2 : 1;
    EXPECT_EQ(ZQGlob::WCStoMBS(bytes, text, 3 * unit_bytes, set), 3 * unit_bytes);
    EXPECT_EQ(bytes[3 * unit_bytes], 0x55);
    char narrow[16] = {};
    ASSERT_EQ(ZQGlob::WCStoMBS(narrow, text, sizeof(narrow), set), 5 * unit_bytes);
    unsigned short units[8] = {0, 0, 0, 0xAAAA};
    EXPECT_EQ(ZQGlob::MBStoWCS(units, narrow, 3, set), 3);
    EXPECT_TRUE(units[0] == 'a' && units[3] == 0xAAAA);
    EXPECT_EQ(ZQGlob::MBStoWCS(units, narrow, -1, set), 0);
  }
  // Two-byte characters are never split.
  const unsigned short kanji[] = {0x65E5, 0x672C, 0};
  char out[8] = {0, 0, 0x55};
  EXPECT_TRUE(ZQGlob::WCStoMBS(out, kanji, 3, ZQ_CSET_SHIFTJIS) == 2 && out[2] == 0x55);
}


TEST(Utf8Test, LenientDecoding) {
  struct {
    Bytes in;
    int cap;
    int want;
    U16 units;
  } cases[] = {
      {{0xF0, 0x9F, 0x98, 0x80}, 8, 2, {0xD83D, 0xDE00}}, {{'a', 0xE2, 0x82}, 8, -1, {}},
      {{0xF8, 0x88, 0x80, 0x80, 0x80}, 8, -2, {}},
      {{0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}, 8, -2, {}},
      {{0xF4, 0x90, 0x80, 0x80}, 8, -2, {}},  // above 0x10FFFF
      {{0xF4, 0x8F, 0xBF, 0xBF}, 8, 2, {0xDBFF, 0xDFFF}}, {{'a', 0, 'b'}, 8, 3, {'a', 0, 'b'}},
      {{0xC0, 0x80}, 8, 1, {0x0000}},      // overlong forms are taken
      {{0xC3, 0x41}, 8, 1, {0x0081}},      // trail bytes are not checked
      {{0x80, 'b'}, 8, 2, {0x0080, 'b'}},  // a stray trail byte is a unit
      {{'a', 'b', 'c'}, 3, -2, {}},        // no room for the zero unit
      {{'a', 'b', 'c'}, 4, 3, {'a', 'b', 'c'}}, {{}, 1, 0, {}},
      {{0xF0, 0x9F, 0x98, 0x80}, 2, -2, {}},  // the pair needs two units
  };
  for (const auto& c : cases) {
    std::vector<unsigned short> out(16, 0xAAAA);
    int n = ZQGlob::UTF8ToUnicode(c.in.data(), static_cast<int>(c.in.size()), out.data(), c.cap);
    EXPECT_EQ(n, c.want) << testing::PrintToString(c.in);
    EXPECT_TRUE(n < 0 || U16(out.data(), n + 1) == c.units + U16(1, 0));
    EXPECT_TRUE(std::all_of(out.begin() + c.cap, out.end(), [](int u) { return u == 0xAAAA; }));
  }
  unsigned short out[4];
  const auto* text = reinterpret_cast<const unsigned char*>("h\xc3\xa9");
  EXPECT_TRUE(ZQGlob::UTF8ToUnicode(text, -1, out, 4) == 2 && out[1] == 0xE9);  // to the zero
  EXPECT_EQ(ZQGlob::UTF8ToUnicode(nullptr, 5, out, 4), 0);
  EXPECT_EQ(ZQGlob::UTF8ToUnicode(text, 1, nullptr, 4), -2);

  // One sequence alone (0: not tried) and through the code-set routine.
  struct {
    Bytes in;
    int want, mbtowc;
    unsigned short unit;
  } one[] = {
      {{'A'}, 1, 1, 'A'}, {{0xC3, 0xA9}, 2, 2, 0xE9}, {{0xE2, 0x82, 0xAC}, 3, 3, 0x20AC},
      {{0xC1, 0x81}, 2, 2, 0x41},  // overlong forms are taken
      {{0xC3, 0x41}, 2, 2, 0x81},  // trail bytes are not checked
      {{0xF0, 0x9F, 0x98, 0x80}, 4, -1, 0xF600},  // the low 16 bits; no one unit
      {{0xF8, 0x88, 0x80, 0x80, 0x80}, -1, -1, 0x1111}, {{0xFF, 0, 0, 0, 0, 0}, -1, -1, 0x1111},
      {{0xE2, 0x82}, 0, -1, 0x1111},
  };
  for (const auto& c : one) {
    unsigned short u = 0x1111, v = 0x1111;
    EXPECT_TRUE(c.want == 0 || (ZQGlob::UTF8ToUnicode(c.in.data(), u) == c.want && u == c.unit))
        << testing::PrintToString(c.in);
    const std::string in(c.in.begin(), c.in.end());
    EXPECT_EQ(ZQGlob::MBtoWC(&v, in.c_str(), static_cast<int>(in.size()), ZQ_CSET_UTF8), c.mbtowc);
    EXPECT_EQ(v, c.mbtowc > 0 ? c.unit : 0x1111);
  }
  struct {
    unsigned char lead;
    int want;
  } leads[] = {{0x00, 1}, {0x7F, 1}, {0x80, 1}, {0xBF, 1}, {0xC0, 2}, {0xDF, 2}, {0xE0, 3},
               {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 5}, {0xFB, 5}, {0xFC, 6}, {0xFF, 6}};
  for (const auto& l : leads) EXPECT_EQ(ZQGlob::BytesInUTF8(l.lead), l.want) << int(l.lead);
}

// Every unit but surrogates, alone and as one text (and with pairs), as iconv has it.
TEST(Utf8Test, EveryUnitMatchesIconv) {
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
    char cs_out[4];
    ASSERT_TRUE(ZQGlob::WCtoMB(cs_out, u, ZQ_CSET_UTF8) == n && std::memcmp(cs_out, out, n) == 0);
  }
  Iconv to_utf8("UTF-8", "UTF-16LE");
  EXPECT_EQ(got, to_utf8(LE(all)));
  RoundTrip(ZQ_CSET_UTF8, got, all, got);
  ZQWString wide;
  ZQString narrow;
  ASSERT_TRUE(wide.Assign(ZQString(got.c_str(), static_cast<int>(got.size())), ZQ_CSET_UTF8));
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_UCS2));  // UCS-2: the units' own bytes
  EXPECT_TRUE(Std(narrow) == LE(all));

  const U16 pairs = all + U16{0xD83D, 0xDE00, 'a', 0xDBFF, 0xDFFF, 0xD800, 0xDC00, 0};
  const std::string want = to_utf8(LE(pairs));  // ends with the zero
  const int n = static_cast<int>(want.size()), units = static_cast<int>(pairs.size());
  std::vector<unsigned char> out(n, 0xAA);
  ASSERT_EQ(ZQGlob::UnicodeToUTF8(pairs.data(), units - 1, out.data(), n), n - 1);
  EXPECT_TRUE(std::string(out.begin(), out.end()) == want);
  std::vector<unsigned short> back(units, 0xAAAA);
  ASSERT_EQ(ZQGlob::UTF8ToUnicode(out.data(), n - 1, back.data(), units), units - 1);
  EXPECT_TRUE(U16(back.data(), units) == pairs);

  // Zero is one byte, a lone low surrogate three, a high one none.
  unsigned char one[4] = {0xAA, 0xAA, 0xAA, 0xAA};
  char* as_char = reinterpret_cast<char*>(one);
  EXPECT_TRUE(ZQGlob::UnicodeToUTF8(0xD800, one) == -1 &&
              ZQGlob::WCtoMB(as_char, 0xDBFF, ZQ_CSET_UTF8) == -1);
  EXPECT_EQ(Bytes(one, 4), Bytes(4, 0xAA));
  EXPECT_TRUE(ZQGlob::UnicodeToUTF8(0x0000, one) == 1 && one[0] == 0);
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(0xDC00, one), 3);
  EXPECT_EQ(Bytes(one, 3), Bytes({0xED, 0xB0, 0x80}));
  const U16 euro = {0x20AC, 0x20AC};
  unsigned char buf[8];
  EXPECT_EQ(ZQGlob::UnicodeToUTF8(euro.c_str(), -1, buf, 7), 6);  // -1: up to the zero

  // UCS-2 through the routines: the units' own bytes.
  const unsigned short text[] = {0x20AC, 'A', 0x4E2D, 0};
  char raw[8];
  ASSERT_EQ(ZQGlob::WCStoMBS(raw, text, 8, ZQ_CSET_UCS2), 6);
  EXPECT_EQ(std::memcmp(raw, text, 8), 0);
  unsigned short ucs2[4], u = 0;
  ASSERT_EQ(ZQGlob::MBStoWCS(ucs2, raw, 4, ZQ_CSET_UCS2), 3);
  EXPECT_EQ(U16(ucs2), U16(text));
  EXPECT_TRUE(ZQGlob::MBtoWC(&u, raw, 2, ZQ_CSET_UCS2) == 2 && u == 0x20AC);
  EXPECT_EQ(ZQGlob::MBLen(raw + 6, 2, ZQ_CSET_UCS2), 0);
}

TEST(Ebcdic, TablesMatchIconv) {
  auto iconv_name = [](int cp) { return (cp < 100 ? "IBM0" : "IBM") + std::to_string(cp); };
  const int pages[] = {37, 273, 277, 278, 280, 284, 285, 297, 500, 871, 1047};
  for (int cp : pages) {
    SCOPED_TRACE(cp);
    const unsigned char *to = ZQEbcdic::ToISOTable(cp), *from = ZQEbcdic::FromISOTable(cp);
    ASSERT_TRUE(ZQEbcdic::IsSupported(cp) && to != nullptr && from != nullptr);
    zqtest::Iconv cd("ISO-8859-1", iconv_name(cp).c_str());
    int folded = 0;
    for (int b = 0; b < 256; ++b) {
      std::string out;
      if (cd.Convert(std::string(1, static_cast<char>(b)), &out) && out.size() == 1) {
        EXPECT_EQ(to[b], static_cast<unsigned char>(out[0])) << b;
      } else {  // 285's overline: iconv has no ISO-8859-1 form for it
        EXPECT_TRUE(cp == 285 && to[b] == 0xAF && ++folded == 1) << b;
      }
      EXPECT_EQ(from[to[b]], b) << b;
    }
  }
  for (int cp : {0, 1, 36, 819, 1140, -37}) {
    EXPECT_FALSE(ZQEbcdic::IsSupported(cp) || ZQEbcdic::ToISOTable(cp) ||
                 ZQEbcdic::FromISOTable(cp)) << cp;
  }

  char text[] = "Hello, EBCDIC 123!";
  const std::string original = text;
  int n = static_cast<int>(original.size());
  ASSERT_TRUE(ZQEbcdic::FromISO(text, n, 37));
  EXPECT_EQ(std::string(text), zqtest::Iconv(iconv_name(37).c_str(), "ISO-8859-1")(original));
  EXPECT_EQ(text[n], '\0');  // only n bytes
  ASSERT_TRUE(ZQEbcdic::ToISO(text, n, 37));
  EXPECT_EQ(original, text);
  // Unsupported code pages and bad arguments leave the buffer alone.
  EXPECT_FALSE(ZQEbcdic::ToISO(text, n, 819) || ZQEbcdic::FromISO(text, -1, 37) ||
               ZQEbcdic::FromISO(nullptr, 4, 37));
  EXPECT_TRUE(ZQEbcdic::ToISO(text, 0, 500));
  EXPECT_EQ(original, text);
}

TEST(UnicodeClasses, AttributesAndTests) {
  enum : unsigned short {
    kUp = ZQGlob::UC_UPPER, kLo = ZQGlob::UC_LOWER, kTi = ZQGlob::UC_TITLE,
    kAl = ZQGlob::UC_ALPHA, kDi = ZQGlob::UC_DIGIT, kNu = ZQGlob::UC_NUMBER,
    kXd = ZQGlob::UC_XDIGIT, kSp = ZQGlob::UC_SPACE, kCn = ZQGlob::UC_CNTRL,
    kPu = ZQGlob::UC_PUNCT, kSy = ZQGlob::UC_SYMBOL, kMa = ZQGlob::UC_MARK};
  const struct {
    unsigned short u, attrs;
  } cases[] = {
      {'A', kUp | kAl | kXd}, {'g', kLo | kAl},  {'7', kDi | kNu | kXd}, {' ', 16},
      {0x00A0, kSp},          {0x3000, kSp},     {0x2028, kSp},          {'\t', kCn},
      {'!', kPu},             {0x00BF, kPu},     {'+', kSy},             {0x20AC, kSy},
      {0x00C4, kUp | kAl},    {0x00DF, kLo | kAl}, {0x01C5, kTi | kAl},  {0x0416, kUp | kAl},
      {0x05D0, kAl},          {0x0661, kDi | kNu}, {0x2167, kNu},        {0x00BD, kNu},
      {0x0301, kMa},          {0x4E2D, kAl},     {0xAC00, kAl},          {0xFF21, kUp | kAl},
      {0xD800, 0},            {0xE000, 0},       {0xFFFF, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(ZQGlob::GetUCAttrs(c.u), c.attrs) << std::hex << c.u;

  // Tab, line feed and carriage return are spaces by rule, not by attribute.
  for (unsigned short u : {9, 10, 13}) {
    EXPECT_TRUE(ZQGlob::IsUCSpace(u) && !(ZQGlob::GetUCAttrs(u) & ZQGlob::UC_SPACE)) << u;
  }
  for (unsigned short u : {11, 12, 0, 97, 0x200B}) EXPECT_FALSE(ZQGlob::IsUCSpace(u)) << u;
  EXPECT_TRUE(ZQGlob::IsUCSpace(0x3000));
  EXPECT_TRUE(ZQGlob::IsUCAlnum('7') && ZQGlob::IsUCAlnum(0x4E2D) && !ZQGlob::IsUCAlnum('-'));
  EXPECT_TRUE(ZQGlob::IsUCXDigit('f') && !ZQGlob::IsUCXDigit('g') && !ZQGlob::IsUCXDigit(0xFF10));
  EXPECT_TRUE(ZQGlob::IsUCCntrl(0x7F) && !ZQGlob::IsUCCntrl(0xA0));
  EXPECT_TRUE(ZQGlob::IsUCTitle(0x01F2) && !ZQGlob::IsUCUpper(0x01F2));
  // Upper, lower and title case exclude each other and imply a letter.
  int counts[3] = {};
  for (unsigned u = 0; u < 0x10000; ++u) {
    unsigned short a = ZQGlob::GetUCAttrs(static_cast<unsigned short>(u));
    bool is[3] = {(a & ZQGlob::UC_UPPER) != 0, (a & ZQGlob::UC_LOWER) != 0,
                  (a & ZQGlob::UC_TITLE) != 0};
    ASSERT_LE(is[0] + is[1] + is[2], (a & ZQGlob::UC_ALPHA) ? 1 : 0) << u;
    counts[0] += is[0];
    counts[1] += is[1];
    counts[2] += (a & ZQGlob::UC_DIGIT) != 0;
  }
  EXPECT_TRUE(counts[0] > 900 && counts[1] > 1200 && counts[2] > 300);
}

}  // namespace
