// Unicode attributes and the character-class tests.
#include <gtest/gtest.h>

#include "zq/zqglob.h"

namespace {

TEST(UnicodeClasses, AttributesOfKnownCharacters) {
  struct {
    unsigned short u;
    unsigned short attrs;
  } cases[] = {
      {'A', ZQGlob::UC_UPPER | ZQGlob::UC_ALPHA | ZQGlob::UC_XDIGIT},
      {'g', ZQGlob::UC_LOWER | ZQGlob::UC_ALPHA},
      {'7', ZQGlob::UC_DIGIT | ZQGlob::UC_NUMBER | ZQGlob::UC_XDIGIT},
      {' ', 16},  // the space attribute is 16
      {0x00A0, ZQGlob::UC_SPACE},
      {0x3000, ZQGlob::UC_SPACE},
      {0x2028, ZQGlob::UC_SPACE},
      {'\t', ZQGlob::UC_CNTRL},
      {'!', ZQGlob::UC_PUNCT},
      {0x00BF, ZQGlob::UC_PUNCT},
      {'+', ZQGlob::UC_SYMBOL},
      {0x20AC, ZQGlob::UC_SYMBOL},
      {0x00C4, ZQGlob::UC_UPPER | ZQGlob::UC_ALPHA},
      {0x00DF, ZQGlob::UC_LOWER | ZQGlob::UC_ALPHA},
      {0x01C5, ZQGlob::UC_TITLE | ZQGlob::UC_ALPHA},
      {0x0416, ZQGlob::UC_UPPER | ZQGlob::UC_ALPHA},
      {0x05D0, ZQGlob::UC_ALPHA},
      {0x0661, ZQGlob::UC_DIGIT | ZQGlob::UC_NUMBER},
      {0x2167, ZQGlob::UC_NUMBER},
      {0x00BD, ZQGlob::UC_NUMBER},
      {0x0301, ZQGlob::UC_MARK},
      {0x4E2D, ZQGlob::UC_ALPHA},
      {0xAC00, ZQGlob::UC_ALPHA},
      {0xFF21, ZQGlob::UC_UPPER | ZQGlob::UC_ALPHA},
      {0xD800, 0},
      {0xE000, 0},
      {0xFFFF, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ZQGlob::GetUCAttrs(c.u), c.attrs) << std::hex << c.u;
  }
}

TEST(UnicodeClasses, TestsFollowTheAttributes) {
  // Tab, line feed and carriage return are spaces by rule, not by attribute.
  for (unsigned short u : {9, 10, 13}) {
    EXPECT_EQ(ZQGlob::GetUCAttrs(u) & ZQGlob::UC_SPACE, 0);
    EXPECT_TRUE(ZQGlob::IsUCSpace(u)) << u;
  }
  for (unsigned short u : {11, 12, 0, 97, 0x200B}) {
    EXPECT_FALSE(ZQGlob::IsUCSpace(u)) << u;
  }
  EXPECT_TRUE(ZQGlob::IsUCSpace(0x3000));

  EXPECT_TRUE(ZQGlob::IsUCAlnum('7') && ZQGlob::IsUCAlnum(0x4E2D) && !ZQGlob::IsUCAlnum('-'));
  EXPECT_TRUE(ZQGlob::IsUCXDigit('f') && !ZQGlob::IsUCXDigit('g') && !ZQGlob::IsUCXDigit(0xFF10));
  EXPECT_TRUE(ZQGlob::IsUCCntrl(0x7F) && !ZQGlob::IsUCCntrl(0xA0));
  EXPECT_TRUE(ZQGlob::IsUCTitle(0x01F2) && !ZQGlob::IsUCUpper(0x01F2));

  int upper = 0, lower = 0, digits = 0;
  for (unsigned u = 0; u < 0x10000; ++u) {
    unsigned short unit = static_cast<unsigned short>(u), a = ZQGlob::GetUCAttrs(unit);
    // Upper, lower and title case exclude each other and imply a letter.
    int cases = !!(a & ZQGlob::UC_UPPER) + !!(a & ZQGlob::UC_LOWER) + !!(a & ZQGlob::UC_TITLE);
    ASSERT_LE(cases, 1) << u;
    if (cases) {
      ASSERT_TRUE(a & ZQGlob::UC_ALPHA) << u;
    }
    upper += !!(a & ZQGlob::UC_UPPER);
    lower += !!(a & ZQGlob::UC_LOWER);
    digits += !!(a & ZQGlob::UC_DIGIT);
  }
  // Sizes of the Unicode categories in the 16-bit range, roughly.
  EXPECT_GT(upper, 900);
  EXPECT_GT(lower, 1200);
  EXPECT_GT(digits, 300);
}

}  // namespace
