// EBCDIC tables against the C library's iconv converters.
#include <string>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/ebcdic.h"

namespace {

std::string IconvName(int cp) {
  return "IBM" + std::string(cp < 100 ? "0" : "") + std::to_string(cp);
}

TEST(Ebcdic, TablesMatchIconv) {
  const int pages[] = {37, 273, 277, 278, 280, 284, 285, 297, 500, 871, 1047};
  for (int cp : pages) {
    SCOPED_TRACE(cp);
    ASSERT_TRUE(ZQEbcdic::IsSupported(cp));
    const unsigned char* to = ZQEbcdic::ToISOTable(cp);
    const unsigned char* from = ZQEbcdic::FromISOTable(cp);
    ASSERT_TRUE(to != nullptr && from != nullptr);
    zqtest::Iconv cd("ISO-8859-1", IconvName(cp).c_str());
    int folded = 0;
    for (int b = 0; b < 256; ++b) {
      std::string out;
      if (cd.Convert(std::string(1, static_cast<char>(b)), &out) && out.size() == 1) {
        EXPECT_EQ(to[b], static_cast<unsigned char>(out[0])) << b;
      } else {
        ++folded;  // 285's overline: iconv has no ISO-8859-1 form for it
        EXPECT_EQ(cp, 285);
        EXPECT_EQ(to[b], 0xAF);
      }
      EXPECT_EQ(from[to[b]], b) << b;
    }
    EXPECT_LE(folded, 1);
  }
  for (int cp : {0, 1, 36, 819, 1140, -37}) {
    EXPECT_FALSE(ZQEbcdic::IsSupported(cp));
    EXPECT_EQ(ZQEbcdic::ToISOTable(cp), nullptr);
    EXPECT_EQ(ZQEbcdic::FromISOTable(cp), nullptr);
  }
}

TEST(Ebcdic, TranslatesBuffersInPlace) {
  char text[] = "Hello, EBCDIC 123!";
  const std::string original = text;
  int n = static_cast<int>(original.size());
  ASSERT_TRUE(ZQEbcdic::FromISO(text, n, 37));
  EXPECT_EQ(std::string(text), zqtest::Iconv(IconvName(37).c_str(), "ISO-8859-1")(original));
  EXPECT_EQ(text[n], '\0');  // only n bytes
  ASSERT_TRUE(ZQEbcdic::ToISO(text, n, 37));
  EXPECT_EQ(original, text);
  // Unsupported code pages and bad arguments leave the buffer alone.
  EXPECT_FALSE(ZQEbcdic::ToISO(text, n, 819));
  EXPECT_FALSE(ZQEbcdic::FromISO(text, -1, 37));
  EXPECT_FALSE(ZQEbcdic::FromISO(nullptr, 4, 37));
  EXPECT_TRUE(ZQEbcdic::ToISO(text, 0, 500));
  EXPECT_EQ(original, text);
}

}  // namespace
