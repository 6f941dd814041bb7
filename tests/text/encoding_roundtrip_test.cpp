// ZQWString and ZQString carry text through every code set and back, with
// the C library's iconv deciding what the units must be.
#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using U16 = std::basic_string<unsigned short>;

struct CodeSet {
  int cs;
  const char* iconv_name;
};

const CodeSet kCodeSets[] = {
    {1, "ISO-8859-1"}, {2, "CP1252"},     {3, "ISO-8859-2"},  {4, "ISO-8859-3"},
    {5, "ISO-8859-4"}, {6, "ISO-8859-5"}, {7, "ISO-8859-6"},  {8, "ISO-8859-7"},
    {9, "ISO-8859-8"}, {10, "ISO-8859-9"}, {11, "CP1250"},    {12, "CP1251"},
    {13, "CP1253"},    {14, "CP1254"},    {15, "CP1255"},     {16, "CP1256"},
    {17, "CP1257"},    {18, "CP1258"},    {19, "SHIFT_JIS"},  {20, "CP932"},
    {21, "CP936"},     {22, "CP949"},     {23, "CP950"},
};

// The single BMP unit iconv makes of one character's bytes, or 0.
unsigned short IconvUnit(iconv_t cd, const std::string& bytes) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char out[16];
  char* ip = const_cast<char*>(bytes.data());
  size_t il = bytes.size();
  char* op = out;
  size_t ol = sizeof(out);
  if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1) ||
      iconv(cd, nullptr, nullptr, &op, &ol) == static_cast<size_t>(-1) || op - out != 2) {
    return 0;
  }
  unsigned short u;
  std::memcpy(&u, out, 2);
  return u;
}

// Units to bytes with iconv, all at once.
bool IconvEncode(const char* code, const U16& units, std::string* out) {
  iconv_t cd = iconv_open(code, "UTF-16LE");
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  out->assign(units.size() * 4 + 4, '\0');
  char* ip = reinterpret_cast<char*>(const_cast<unsigned short*>(units.data()));
  size_t il = units.size() * 2;
  char* op = &(*out)[0];
  size_t ol = out->size();
  bool ok = iconv(cd, &ip, &il, &op, &ol) != static_cast<size_t>(-1);
  iconv_close(cd);
  out->resize(out->size() - ol);
  return ok;
}

// Index of the first element where `a` and `b` differ, -1 when equal (keeps
// failure messages short for texts of thousands of characters).
template <typename S>
long FirstDifference(const S& a, const S& b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    if (a[i] != b[i]) return static_cast<long>(i);
  }
  return a.size() == b.size() ? -1 : static_cast<long>(n);
}

TEST(EncodingRoundTrip, EveryCharacterOfEveryCodeSet) {
  for (const CodeSet& c : kCodeSets) {
    SCOPED_TRACE(c.iconv_name);
    ZQ_CSET cs = static_cast<ZQ_CSET>(c.cs);
    iconv_t cd = iconv_open("UTF-16LE", c.iconv_name);
    ASSERT_NE(cd, reinterpret_cast<iconv_t>(-1));
    // Every character iconv knows, each as iconv decodes it alone.
    std::string text;
    U16 want;
    for (int b = 1; b < 256; ++b) {
      std::string one(1, static_cast<char>(b));
      unsigned short u = IconvUnit(cd, one);
      if (u != 0) {
        text += one;
        want += u;
        continue;
      }
      if (!ZQGlob::IsLeadByte(b, cs)) continue;
      for (int t = 1; t < 256; ++t) {
        std::string two = one + static_cast<char>(t);
        if ((u = IconvUnit(cd, two)) != 0) {
          text += two;
          want += u;
        }
      }
    }
    iconv_close(cd);
    ASSERT_GT(want.size(), 90u);

    // Bytes to units as iconv decodes them; units to the bytes iconv
    // encodes them as (code pages with duplicate codes pick one); and those
    // bytes back to the same units.
    ZQWString wide;
    ASSERT_TRUE(wide.Assign(ZQString(text.c_str(), static_cast<int>(text.size())), cs));
    EXPECT_EQ(FirstDifference(U16(wide.c_str(), wide.length()), want), -1);
    std::string encoded;
    ASSERT_TRUE(IconvEncode(c.iconv_name, want, &encoded));
    ZQString narrow;
    ASSERT_TRUE(narrow.Assign(wide, cs));
    EXPECT_EQ(FirstDifference(std::string(narrow.c_str(), narrow.length()), encoded), -1);
    ZQWString again;
    ASSERT_TRUE(again.Assign(narrow, cs));
    EXPECT_EQ(FirstDifference(U16(again.c_str(), again.length()), want), -1);
  }
}

TEST(EncodingRoundTrip, Utf8Ucs2AndLocale) {
  // UTF-8 of every BMP character but the surrogates.
  U16 all;
  for (unsigned u = 1; u < 0x10000; ++u) {
    if (u < 0xD800 || u > 0xDFFF) all.push_back(static_cast<unsigned short>(u));
  }
  iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
  std::string utf8(all.size() * 3, '\0');
  char* ip = reinterpret_cast<char*>(&all[0]);
  size_t il = all.size() * 2;
  char* op = &utf8[0];
  size_t ol = utf8.size();
  ASSERT_NE(iconv(cd, &ip, &il, &op, &ol), static_cast<size_t>(-1));
  iconv_close(cd);
  utf8.resize(utf8.size() - ol);

  ZQWString wide;
  ASSERT_TRUE(wide.Assign(ZQString(utf8.c_str(), static_cast<int>(utf8.size())), ZQ_CSET_UTF8));
  ASSERT_EQ(U16(wide.c_str(), wide.length()), all);
  ZQString narrow;
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_UTF8));
  EXPECT_EQ(std::string(narrow.c_str(), narrow.length()), utf8);

  // UCS-2: the narrow form is the units' own bytes.
  ASSERT_TRUE(wide.Assign(ZQString(reinterpret_cast<const char*>(all.data()),
                                   static_cast<int>(all.size() * 2)),
                          ZQ_CSET_UCS2));
  ASSERT_EQ(U16(wide.c_str(), wide.length()), all);
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_UCS2));
  ASSERT_EQ(narrow.length(), static_cast<long>(all.size() * 2));
  EXPECT_EQ(std::memcmp(narrow.c_str(), all.data(), all.size() * 2), 0);

  // The current locale of this process is C: ASCII goes through unchanged.
  std::string ascii;
  for (int b = 1; b < 128; ++b) ascii += static_cast<char>(b);
  ASSERT_TRUE(wide.Assign(ZQString(ascii.c_str()), ZQ_CSET_OEM));
  ASSERT_EQ(wide.length(), 127);
  for (int b = 1; b < 128; ++b) EXPECT_EQ(wide.c_str()[b - 1], b);
  ASSERT_TRUE(narrow.Assign(wide, ZQ_CSET_OEM));
  EXPECT_EQ(std::string(narrow.c_str(), narrow.length()), ascii);
}

}  // namespace
