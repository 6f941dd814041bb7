// Unicode attributes and the character-class tests.
#include <gtest/gtest.h>

#include "zq/zqglob.h"

namespace {

TEST(UnicodeClasses, AttributesOfKnownCharacters) {
  enum : unsigned short {
    kUp = ZQGlob::UC_UPPER, kLo = ZQGlob::UC_LOWER, kTi = ZQGlob::UC_TITLE,
    kAl = ZQGlob::UC_ALPHA, kDi = ZQGlob::UC_DIGIT, kNu = ZQGlob::UC_NUMBER,
    kXd = ZQGlob::UC_XDIGIT, kSp = ZQGlob::UC_SPACE, kCn = ZQGlob::UC_CNTRL,
    kPu = ZQGlob::UC_PUNCT, kSy = ZQGlob::UC_SYMBOL, kMa = ZQGlob::UC_MARK,
  };
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
