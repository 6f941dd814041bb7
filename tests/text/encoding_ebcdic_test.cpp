// EBCDIC tables against the C library's iconv converters.
#include <iconv.h>

#include <string>

#include <gtest/gtest.h>

#include "zq/ebcdic.h"

namespace {

// The ISO-8859-1 byte iconv gives for one EBCDIC byte, or -1.
int IconvToLatin1(iconv_t cd, unsigned char b) {
  char in = static_cast<char>(b), out[8];
  char* ip = &in;
  char* op = out;
  size_t il = 1, ol = sizeof(out);
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1) || op - out != 1) return -1;
  return static_cast<unsigned char>(out[0]);
}

TEST(Ebcdic, TablesMatchIconv) {
  const int pages[] = {37, 273, 277, 278, 280, 284, 285, 297, 500, 871, 1047};
  for (int cp : pages) {
    SCOPED_TRACE(cp);
    ASSERT_TRUE(ZQEbcdic::IsSupported(cp));
    const unsigned char* to = ZQEbcdic::ToISOTable(cp);
    const unsigned char* from = ZQEbcdic::FromISOTable(cp);
    ASSERT_NE(to, nullptr);
    ASSERT_NE(from, nullptr);
    std::string name = "IBM" + std::string(cp < 100 ? "0" : "") + std::to_string(cp);
    iconv_t cd = iconv_open("ISO-8859-1", name.c_str());
    ASSERT_NE(cd, reinterpret_cast<iconv_t>(-1));
    int folded = 0;
    for (int b = 0; b < 256; ++b) {
      int want = IconvToLatin1(cd, static_cast<unsigned char>(b));
      if (want < 0) {
        ++folded;  // 285's overline: iconv has no ISO-8859-1 form for it
        EXPECT_EQ(cp, 285);
        EXPECT_EQ(to[b], 0xAF);
      } else {
        EXPECT_EQ(to[b], want) << b;
      }
      EXPECT_EQ(from[to[b]], b) << b;
    }
    EXPECT_LE(folded, 1);
    iconv_close(cd);
  }
  for (int cp : {0, 1, 36, 819, 1140, -37}) {
    EXPECT_FALSE(ZQEbcdic::IsSupported(cp));
    EXPECT_EQ(ZQEbcdic::ToISOTable(cp), nullptr);
    EXPECT_EQ(ZQEbcdic::FromISOTable(cp), nullptr);
  }
}

TEST(Ebcdic, TranslatesBuffersInPlace) {
  char text[] = "Hello, EBCDIC 123!";
  std::string original = text;
  int n = static_cast<int>(original.size());
  ASSERT_TRUE(ZQEbcdic::FromISO(text, n, 37));
  EXPECT_EQ(static_cast<unsigned char>(text[0]), 0xC8);  // H
  EXPECT_EQ(static_cast<unsigned char>(text[1]), 0x85);  // e
  EXPECT_EQ(static_cast<unsigned char>(text[5]), 0x6B);  // ,
  EXPECT_EQ(text[n], '\0');                              // only n bytes
  ASSERT_TRUE(ZQEbcdic::ToISO(text, n, 37));
  EXPECT_EQ(original, text);
  // Unsupported code pages and bad arguments leave the buffer alone.
  EXPECT_FALSE(ZQEbcdic::ToISO(text, n, 819));
  EXPECT_FALSE(ZQEbcdic::FromISO(text, -1, 37));
  EXPECT_FALSE(ZQEbcdic::FromISO(nullptr, 4, 37));
  EXPECT_EQ(original, text);
  EXPECT_TRUE(ZQEbcdic::ToISO(text, 0, 500));
  EXPECT_EQ(original, text);
}

}  // namespace
