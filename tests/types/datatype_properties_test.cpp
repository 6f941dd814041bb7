// Property setters: clamping, coupling, settable gates, and display widths.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "types/datatype_helpers.h"
#include "zq/dtype.h"

namespace {

using Act = void (*)(ZQDType&);

TEST(DatatypeProperties, LengthAndPrecisionCoupling) {
  const struct {
    const char* what;
    DATATYPE type;
    Act act;
    long length, precision;
  } cases[] = {
      {"packed length 5", ZQDT_PACKED, [](ZQDType& d) { d.Length(5); }, 5, 9},
      {"packed even digits kept", ZQDT_PACKED, [](ZQDType& d) { d.Precision(6); d.Length(4); }, 4, 6},
      {"packed no sign nibble", ZQDT_PACKED, [](ZQDType& d) { d.SignPos(16); d.Length(5); }, 5, 10},
      {"magic number odd kept", ZQDT_MAGIC_NUMBER, [](ZQDType& d) { d.Length(5); }, 5, 7},
      {"column binary odd raised", ZQDT_CB_NUMERIC, [](ZQDType& d) { d.Length(3); }, 4, 2},
      {"column binary cap", ZQDT_CB_ALPHANUMERIC, [](ZQDType& d) { d.Length(2147483647L); },
       2147483646L, 1073741823L},
      {"bcd signed", ZQDT_BCD, [](ZQDType& d) { d.Length(6); }, 6, 5},
      {"bcd unsigned", ZQDT_BCD, [](ZQDType& d) { d.Signed(false); d.Length(6); }, 6, 6},
      {"c string", ZQDT_CSTRING, [](ZQDType& d) { d.Length(10); }, 10, 9},
      {"pascal 1 full", ZQDT_PASCAL_STRING1, [](ZQDType& d) { d.Precision(255); }, 256, 255},
      {"pascal 2 clamp", ZQDT_PASCAL_STRING2, [](ZQDType& d) { d.Length(70000); }, 65537, 65535},
      {"text minimum", ZQDT_TEXT, [](ZQDType& d) { d.Length(-5); }, 1, 1},
      {"list maximum", ZQDT_LIST, [](ZQDType& d) { d.Length(300); }, 255, 16},
      {"zoned embedded sign", ZQDT_ZONED, [](ZQDType& d) { d.Length(10); }, 10, 10},
      {"zoned separate sign", ZQDT_ZONED, [](ZQDType& d) { d.SignPos(8); d.Length(10); }, 10, 9},
      {"leading separate precision", ZQDT_DISPLAY_SIGN_LEADING_SEP,
       [](ZQDType& d) { d.Precision(18); }, 19, 18},
      {"dbase length", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(10); }, 10, 8},
      {"dbase floor of one", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(1); }, 3, 1},
      {"dbase no places", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(10); d.DecimalPlaces(0); }, 10, 9},
      {"dbase signed again", ZQDT_DBASE_NUMERIC,
       [](ZQDType& d) { d.Length(10); d.Signed(false); d.Signed(true); }, 10, 8},
      {"fixed short", ZQDT_SHORT, [](ZQDType& d) { d.Length(4); d.Precision(9); }, 2, 4},
      {"decimal uncoupled", ZQDT_DECIMAL, [](ZQDType& d) { d.Length(13); d.Precision(25); }, 12, 20},
  };
  for (const auto& c : cases) {
    ZQDType d(c.type);
    c.act(d);
    EXPECT_EQ(d.Length(), c.length) << c.what;
    EXPECT_EQ(d.Precision(), c.precision) << c.what;
  }
}

// The binary digit and length tables where they are not the obvious ones.
TEST(DatatypeProperties, BinaryDigitAndLengthTables) {
  const struct {
    long length;
    bool is_signed;
    long digits;     // the precision a length gives
    long precision;  // and the length a precision needs
    long bytes;
  } cases[] = {{3, false, 7, 7, 3}, {3, true, 6, 7, 4}, {5, false, 12, 12, 5}, {5, true, 11, 12, 6},
               {6, false, 13, 13, 6}, {6, true, 12, 12, 6}, {8, false, 18, 19, 8}, {1, true, 2, 1, 1}};
  for (const auto& c : cases) {
    for (DATATYPE t : {ZQDT_COMP, ZQDT_COMP5, ZQDT_COMPX}) {
      ZQDType d(t);
      d.Signed(c.is_signed);
      d.MaxPrecision(40);
      d.Precision(40);  // out of every range: the length sets the high bound
      d.Length(c.length);
      EXPECT_EQ(d.Precision(), c.digits) << t << " " << c.is_signed << " " << c.length;
      d.Precision(c.precision);
      EXPECT_EQ(d.Length(), c.bytes) << t << " " << c.is_signed << " " << c.precision;
    }
  }
}

TEST(DatatypeProperties, ClampingAndSettableGates) {
  ZQDType d(ZQDT_DECIMAL);
  EXPECT_EQ((std::vector<long>{d.Scale(-30), d.Scale(21), d.DecimalPlaces(30), d.DecimalPlaces(-1),
                               ZQDType(ZQDT_COMP1).DecimalPlaces(5)}),
            (std::vector<long>{-20, 20, 20, 0, 2}));
  // Bounds are stored as given and then govern the setters.
  d.MinScale(2);
  EXPECT_EQ(d.Scale(0), 2);
  d.MaxLength(6);
  EXPECT_EQ(d.Length(10), 6);
  // Contradictory bounds do not make the setters call each other forever.
  ZQDType t(ZQDT_TEXT);
  t.MinLength(10);
  t.MaxPrecision(5);
  t.Length(12);
  EXPECT_EQ(t.Length(), 10);

  ZQDType i(ZQDT_INTEGER);  // pad character, separators, variable length not settable
  i.SetPadChar('*');
  i.SetPadChar("#");
  EXPECT_EQ(i.PadChar(), ' ');
  EXPECT_EQ(i.DecimalSeparator(','), '.');
  EXPECT_EQ(i.ThousandSeparator(','), 0);
  i.VariableLength(true);
  i.Identity(true);
  EXPECT_FALSE(i.VariableLength());
  // Signedness and byte order are stored whether settable or not.
  ZQDType v(ZQDT_VAX_FLOAT32);
  v.Signed(false);
  v.MSBFirst(true);
  EXPECT_TRUE(!v.Signed() && v.MSBFirst());
  i.DecimalSeparator_Settable(true);
  i.ThousandSeparator_Settable(true);
  EXPECT_EQ(i.DecimalSeparator(','), ',');
  EXPECT_EQ(i.ThousandSeparator('.'), '.');
  // Identity and variable length are one stored bit.
  EXPECT_TRUE(i.Identity_Settable(true));
  i.Identity(true);
  EXPECT_TRUE(i.VariableLength());
  ZQDType m(ZQDT_MEMO);
  m.VariableLength(true);
  EXPECT_TRUE(m.Identity() && !m.Identity_Meaningful() && !m.Length_Settable(false));
}

TEST(DatatypeProperties, PadCharacterTexts) {
  const struct {
    const char* text;
    unsigned short pad;
  } cases[] = {{nullptr, ' '}, {" x", ' '}, {"", 0}, {"*", '*'}, {"'#'", '#'}, {"\\t", '\t'},
               {"\\x41", 'A'}, {"'\\''", '\''}, {"ab", 'a'}};
  for (const auto& c : cases) {
    ZQDType d(ZQDT_TEXT);
    d.SetPadChar('?');
    d.SetPadChar(c.text);
    EXPECT_EQ(d.PadChar(), c.pad) << zqtest::Str(c.text);
  }
  ZQDType d(ZQDT_TEXT);
  char buf[16];
  d.SetPadChar('\'');
  EXPECT_STREQ(d.GetPadChar(buf), "'\\''");
  d.SetPadChar('\0');
  EXPECT_STREQ(d.GetPadChar(buf), "'\\0'");
}

// Display widths; pictures are measured on 27 September 1955 12:59:59.
TEST(DatatypeProperties, DisplayWidthByType) {
  const struct {
    const char* what;
    DATATYPE type;
    Act act;
    long width;
  } cases[] = {
      {"decimal 7.2 signed", ZQDT_DECIMAL, [](ZQDType&) {}, 9},
      {"text ignores sign", ZQDT_TEXT, [](ZQDType& d) { d.Signed(true); }, 16},
      {"name is measured like a number", ZQDT_NAME, [](ZQDType& d) { d.Signed(true); }, 17},
      {"boolean default", ZQDT_BOOLEAN, [](ZQDType&) {}, 5},
      {"boolean longer false word", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture("J.Nein"); }, 4},
      {"boolean without picture", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture(""); }, 5},
      {"date without picture", ZQDT_DATE, [](ZQDType& d) { d.Picture(nullptr); }, 10},
      {"btrieve date by precision", ZQDT_BTRIEVE_DATE, [](ZQDType& d) { d.Picture("d-mon-yyyy"); }, 8},
      {"16-bit logical by precision", ZQDT_LOGICAL16, [](ZQDType& d) { d.Picture("Yes.No"); }, 1},
      {"zoned", ZQDT_ZONED, [](ZQDType&) {}, 18},
      {"d-mon-yyyy", ZQDT_DATE, [](ZQDType& d) { d.Picture("d-mon-yyyy"); }, 11},
      {"H24:MM", ZQDT_TIME, [](ZQDType& d) { d.Picture("H24:MM"); }, 5},
      {"dd.mm.yy", ZQDT_DATETIME, [](ZQDType& d) { d.Picture("dd.mm.yy"); }, 8},
  };
  for (const auto& c : cases) {
    ZQDType d(c.type);
    c.act(d);
    EXPECT_EQ(d.CalculateDisplayLength(), c.width) << c.what;
  }
}

}  // namespace
