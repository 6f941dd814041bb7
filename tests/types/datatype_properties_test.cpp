// Property setters: clamping, the coupling of length and precision, the
// re-application of the length by sign and decimal changes, settable gates.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "types/datatype_helpers.h"
#include "zq/dtype.h"

namespace {

struct CouplingCase {
  const char* what;
  DATATYPE type;
  std::function<void(ZQDType&)> act;
  long length;
  long precision;
};

TEST(DatatypeProperties, LengthAndPrecisionCoupling) {
  const CouplingCase cases[] = {
      {"packed length 5", ZQDT_PACKED, [](ZQDType& d) { d.Length(5); }, 5, 9},
      {"packed then precision 8", ZQDT_PACKED, [](ZQDType& d) { d.Length(5); d.Precision(8); }, 5, 8},
      {"packed even digits kept", ZQDT_PACKED, [](ZQDType& d) { d.Precision(6); d.Length(4); }, 4, 6},
      {"packed precision 9", ZQDT_PACKED, [](ZQDType& d) { d.Precision(9); }, 5, 9},
      {"packed no sign nibble", ZQDT_PACKED, [](ZQDType& d) { d.SignPos(16); d.Length(5); }, 5, 10},
      {"packed no sign precision", ZQDT_PACKED, [](ZQDType& d) { d.SignPos(16); d.Precision(11); }, 6, 11},
      {"number like packed", ZQDT_NUMBER, [](ZQDType& d) { d.Length(6); }, 6, 11},
      {"comp-3 like packed", ZQDT_COMP3, [](ZQDType& d) { d.Precision(3); }, 2, 3},
      {"magic number length", ZQDT_MAGIC_NUMBER, [](ZQDType& d) { d.Length(6); }, 6, 10},
      {"magic number odd kept", ZQDT_MAGIC_NUMBER, [](ZQDType& d) { d.Length(5); }, 5, 7},
      {"magic number precision", ZQDT_MAGIC_NUMBER, [](ZQDType& d) { d.Precision(9); }, 6, 9},
      {"column binary odd raised", ZQDT_CB_NUMERIC, [](ZQDType& d) { d.Length(3); }, 4, 2},
      {"column binary precision", ZQDT_CB_MULTIPUNCH, [](ZQDType& d) { d.Precision(5); }, 10, 5},
      {"column binary cap", ZQDT_CB_ALPHANUMERIC, [](ZQDType& d) { d.Length(2147483647L); },
       2147483646L, 1073741823L},
      {"comp length 2", ZQDT_COMP, [](ZQDType& d) { d.Length(2); }, 2, 4},
      {"comp in bounds kept", ZQDT_COMP, [](ZQDType& d) { d.Precision(8); d.Length(4); }, 4, 8},
      {"bcd signed", ZQDT_BCD, [](ZQDType& d) { d.Length(6); }, 6, 5},
      {"bcd unsigned", ZQDT_BCD, [](ZQDType& d) { d.Signed(false); d.Length(6); }, 6, 6},
      {"bcd precision", ZQDT_BCD, [](ZQDType& d) { d.Precision(10); }, 11, 10},
      {"c string", ZQDT_CSTRING, [](ZQDType& d) { d.Length(10); }, 10, 9},
      {"pascal 1 full", ZQDT_PASCAL_STRING1, [](ZQDType& d) { d.Precision(255); }, 256, 255},
      {"pascal 2 clamp", ZQDT_PASCAL_STRING2, [](ZQDType& d) { d.Length(70000); }, 65537, 65535},
      {"pascal 2 precision", ZQDT_PASCAL_STRING2, [](ZQDType& d) { d.Precision(8); }, 10, 8},
      {"text same", ZQDT_TEXT, [](ZQDType& d) { d.Length(40); }, 40, 40},
      {"varchar same", ZQDT_VARCHAR, [](ZQDType& d) { d.Precision(7); }, 7, 7},
      {"text minimum", ZQDT_TEXT, [](ZQDType& d) { d.Length(-5); }, 1, 1},
      {"list maximum", ZQDT_LIST, [](ZQDType& d) { d.Length(300); }, 255, 16},
      {"zoned embedded sign", ZQDT_ZONED, [](ZQDType& d) { d.Length(10); }, 10, 10},
      {"zoned separate sign", ZQDT_ZONED, [](ZQDType& d) { d.SignPos(8); d.Length(10); }, 10, 9},
      {"trailing separate", ZQDT_DISPLAY_SIGN_TRAILING_SEP, [](ZQDType& d) { d.Length(10); }, 10, 9},
      {"leading separate precision", ZQDT_DISPLAY_SIGN_LEADING_SEP,
       [](ZQDType& d) { d.Precision(18); }, 19, 18},
      {"dbase length", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(10); }, 10, 8},
      {"dbase floor of one", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(1); }, 3, 1},
      {"dbase no decimals", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(10); d.DecimalPlaces(0); }, 10, 9},
      {"dbase decimals back", ZQDT_DBASE_NUMERIC,
       [](ZQDType& d) { d.Length(10); d.DecimalPlaces(0); d.DecimalPlaces(3); }, 10, 8},
      {"dbase unsigned", ZQDT_DBASE_NUMERIC, [](ZQDType& d) { d.Length(10); d.Signed(false); }, 10, 9},
      {"dbase signed again", ZQDT_DBASE_NUMERIC,
       [](ZQDType& d) { d.Length(10); d.Signed(false); d.Signed(true); }, 10, 8},
      {"zoned unsigned separate", ZQDT_ZONED,
       [](ZQDType& d) { d.SignPos(4); d.Length(10); d.Signed(false); }, 10, 9},
      {"fixed short", ZQDT_SHORT, [](ZQDType& d) { d.Length(4); d.Precision(9); }, 2, 4},
      {"decimal has no coupling", ZQDT_DECIMAL, [](ZQDType& d) { d.Length(13); d.Precision(25); }, 12, 20},
  };
  for (const CouplingCase& c : cases) {
    SCOPED_TRACE(c.what);
    ZQDType d(c.type);
    c.act(d);
    EXPECT_EQ(d.Length(), c.length);
    EXPECT_EQ(d.Precision(), c.precision);
  }
}

TEST(DatatypeProperties, BinaryDigitAndLengthTables) {
  // High bound of the admissible digits for each length, unsigned/signed.
  const long high[9][2] = {{0, 0}, {2, 2}, {4, 4}, {7, 6}, {9, 9}, {12, 11}, {13, 12}, {16, 16}, {18, 18}};
  for (DATATYPE t : {ZQDT_COMP, ZQDT_COMP5, ZQDT_COMPX}) {
    for (bool is_signed : {false, true}) {
      for (long len = 1; len <= 8; ++len) {
        SCOPED_TRACE(std::to_string(t) + (is_signed ? " signed " : " unsigned ") + std::to_string(len));
        ZQDType d(t);
        d.Signed(is_signed);
        d.MaxPrecision(40);
        d.Precision(40);  // out of every range: the length sets the high bound
        EXPECT_EQ(d.Length(), 8);
        d.Length(len);
        EXPECT_EQ(d.Length(), len);
        EXPECT_EQ(d.Precision(), high[len][is_signed ? 1 : 0]);
      }
    }
  }
  // Bytes needed for each digit count, unsigned/signed.
  const long bytes[20][2] = {{1, 1}, {1, 1}, {1, 1}, {2, 2}, {2, 2}, {3, 3}, {3, 3}, {3, 4}, {4, 4}, {4, 4},
                             {5, 5}, {5, 5}, {5, 6}, {6, 6}, {6, 6}, {7, 7}, {7, 7}, {8, 8}, {8, 8}, {8, 8}};
  for (bool is_signed : {false, true}) {
    for (long p = 1; p <= 19; ++p) {
      SCOPED_TRACE(std::string(is_signed ? "signed " : "unsigned ") + std::to_string(p));
      ZQDType d(ZQDT_COMP);
      d.Signed(is_signed);
      d.Precision(p);
      EXPECT_EQ(d.Length(), bytes[p][is_signed ? 1 : 0]);
    }
  }
}

TEST(DatatypeProperties, ClampingOfScaleAndDecimals) {
  ZQDType d(ZQDT_DECIMAL);
  EXPECT_EQ(d.Scale(-30), -20);
  EXPECT_EQ(d.Scale(21), 20);
  EXPECT_EQ(d.DecimalPlaces(30), 20);
  EXPECT_EQ(d.DecimalPlaces(-1), 0);
  ZQDType c1(ZQDT_COMP1);
  EXPECT_EQ(c1.DecimalPlaces(5), 2);
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
}

TEST(DatatypeProperties, SettableGatesAndSharedBits) {
  ZQDType d(ZQDT_INTEGER);  // pad character, separators, variable length not settable
  d.SetPadChar('*');
  d.SetPadChar("#");
  EXPECT_EQ(d.PadChar(), ' ');
  EXPECT_EQ(d.DecimalSeparator(','), '.');
  EXPECT_EQ(d.ThousandSeparator(','), 0);
  d.VariableLength(true);
  d.Identity(true);
  EXPECT_FALSE(d.VariableLength());
  // Signedness and byte order are stored whether settable or not.
  ZQDType v(ZQDT_VAX_FLOAT32);
  v.Signed(false);
  v.MSBFirst(true);
  EXPECT_FALSE(v.Signed());
  EXPECT_TRUE(v.MSBFirst());

  d.DecimalSeparator_Settable(true);
  d.ThousandSeparator_Settable(true);
  EXPECT_EQ(d.DecimalSeparator(','), ',');
  EXPECT_EQ(d.ThousandSeparator('.'), '.');

  // Identity and variable length are one stored bit.
  EXPECT_TRUE(d.Identity_Settable(true));
  d.Identity(true);
  EXPECT_TRUE(d.VariableLength());
  ZQDType m(ZQDT_MEMO);
  m.VariableLength(true);
  EXPECT_TRUE(m.Identity());
  EXPECT_FALSE(m.Identity_Meaningful());
  m.Identity_SetMeaningful();
  EXPECT_TRUE(m.Identity_Meaningful());
  m.Length_NotMeaningful();
  EXPECT_FALSE(m.Length_Meaningful());
  EXPECT_FALSE(m.Length_Settable(false));
  EXPECT_FALSE(m.Length_Settable());

  // Nulls: allowed by default, the value bit is "not null".
  EXPECT_TRUE(m.Nulls());
  m.Nulls(false);
  EXPECT_FALSE(m.Nulls());
  EXPECT_TRUE(m.Nulls_Meaningful(true));
  EXPECT_TRUE(m.Nulls_Meaningful());
}

TEST(DatatypeProperties, PadCharacterTexts) {
  struct Case {
    const char* text;
    unsigned short pad;
  } cases[] = {{nullptr, ' '}, {" x", ' '}, {"", 0}, {"*", '*'}, {"'#'", '#'}, {"\\t", '\t'},
               {"\\x41", 'A'}, {"'\\''", '\''}, {"ab", 'a'}};
  for (const Case& c : cases) {
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

}  // namespace
