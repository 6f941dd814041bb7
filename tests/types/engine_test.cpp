// The conversion engine: dispatch of every type through Input and Output,
// the deliberate asymmetries, scaling, text layouts, legacy dates, and the
// bounds of the record.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zq/datetime.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/quadword.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

std::string Hex(const ZQString& s) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string r;
  for (long i = 0; i < s.length(); ++i) {
    const unsigned char c = static_cast<unsigned char>(s.c_str()[i]);
    if (i) r += ' ';
    r += kDigits[c >> 4];
    r += kDigits[c & 15];
  }
  return r;
}

ZQString Raw(const char* bytes, int n) { return ZQString(bytes, n); }

ZQDType Type(DATATYPE t, long len = 0, short scale = 0) {
  ZQDType d(t);
  if (len > 0) {
    d.MaxLength(len > d.MaxLength() ? len : d.MaxLength());
    d.Length(len);
  }
  if (scale != 0) {
    d.MinScale(-20);
    d.MaxScale(20);
    d.Scale(scale);
  }
  return d;
}

std::string DecimalText(const ZQDecimal& d) {
  char buf[64];
  d.Print(buf, sizeof(buf), false);
  return buf;
}

// Every numeric type, written from a double and read back as a double.
TEST(Engine, DoubleRoundTripEveryNumericType) {
  struct Case {
    DATATYPE type;
    long length;
    short scale;
    std::vector<double> values;
  };
  const std::vector<double> whole = {0, 1, -1, 127, -128, 12345, -9999};
  const std::vector<double> frac = {0, 1.5, -2.25, 1234.5, -0.015625, 1e10, -3e-5};
  const std::vector<Case> cases = {
      {ZQDT_SHORT, 0, 0, whole},
      {ZQDT_INTEGER, 0, 0, {0, 1, -1, 2147483647.0, -2147483648.0}},
      {ZQDT_INTEGER, 0, 0, whole},
      {ZQDT_FLOAT, 0, 0, frac},
      {ZQDT_DECIMAL, 6, 2, {0, 1.5, -2.25, 1234.56, -99999.99}},
      {ZQDT_NUMBER, 6, 0, whole},
      {ZQDT_PACKED, 10, 4, {0, 1.5, -2.25, 12345678.1234, -0.0001}},
      {ZQDT_COMP3, 4, 2, {0, 12.34, -99.99, 1}},
      {ZQDT_BINARY64, 0, 0, {0, 1, -1, 1e15, -123456789012.0}},
      {ZQDT_DBASE_NUMERIC, 12, 0, {0, 1.5, -2.25, 1234.5}},
      {ZQDT_IBM_FLOAT, 8, 0, frac},
      {ZQDT_VAX_FLOAT32, 0, 0, {0, 1.5, -2.25, 1234.5, -0.015625}},
      {ZQDT_VAX_FLOAT64, 0, 0, frac},
      {ZQDT_MSBASIC_FLOAT, 0, 0, {1.5, -2.25, 1234.5, -0.015625}},
      {ZQDT_MSBASIC_DOUBLE, 0, 0, {1.5, -2.25, 1234.5, -0.015625, 1e10}},
      {ZQDT_ZONED, 10, 3, {0, 1.5, -2.25, 1234.567, -0.001}},
      {ZQDT_DISPLAY_SIGN_TRAILING, 8, 0, whole},
      {ZQDT_DISPLAY_SIGN_LEADING, 8, 1, {0, 1.5, -2.5, 1234.5}},
      {ZQDT_DISPLAY_SIGN_TRAILING_SEP, 8, 0, whole},
      {ZQDT_DISPLAY_SIGN_LEADING_SEP, 8, 2, {0, 1.5, -2.25, 1234.56}},
      {ZQDT_CRAY_FLOAT, 0, 0, frac},
      {ZQDT_ACCPAC, 0, 0, whole},
      {ZQDT_TEC_BINARY, 0, 0, whole},
      {ZQDT_CB_MULTIPUNCH, 8, 0, {0, 1, 4095, 40950001}},
      {ZQDT_CB_ALPHANUMERIC, 16, 0, {0, 1, 7, 12345678}},
      {ZQDT_CB_NUMERIC, 16, 0, {0, 1, 7, 12345678}},
      {ZQDT_MAGIC_NUMBER, 8, 0, frac},
      {ZQDT_MAGIC_REAL, 0, 0, {0, 1.5, -2.25, 1234.5}},
      {ZQDT_MAGIC_EXTENDED, 0, 0, frac},
      {ZQDT_IEEE_FLOAT32, 0, 0, {0, 1.5, -2.25, 1234.5, -0.015625}},
      {ZQDT_COMP, 2, 0, whole},
      {ZQDT_COMP, 3, 0, {0, 1, -1, 8388607, -8388608}},
      {ZQDT_COMP, 6, 2, {0, 1.5, -2.25, 123456789.12}},
      {ZQDT_COMP1, 0, 0, {0, 1.5, -2.25, 1234.5}},
      {ZQDT_COMP2, 0, 0, frac},
      {ZQDT_COMP5, 8, 0, {0, 1, -1, 1e15, -1e15}},
      {ZQDT_COMPX, 4, 0, whole},
      {ZQDT_BINARY8, 0, 0, {0, 1, -1, 127, -128}},
      {ZQDT_BINARY24, 0, 0, {0, 1, -1, 8388607, -8388608}},
      {ZQDT_PASCAL_REAL48, 0, 0, frac},
      {ZQDT_INTEL_FLOAT80, 0, 0, frac},
      {ZQDT_BCD, 8, 2, {0, 1.5, -2.25, 12345.67}},
  };
  for (const Case& c : cases) {
    ZQDType t = Type(c.type, c.length, c.scale);
    for (double v : c.values) {
      SCOPED_TRACE(std::string(t.TypeName()) + " " + std::to_string(v));
      ZQString rec("ab");
      const long n = t.Output(rec, v);
      ASSERT_EQ(n, t.Length());
      ASSERT_EQ(rec.length(), 2 + t.Length());
      double back = -7777;
      EXPECT_EQ(t.Input(rec, 2, back), t.Length());
      EXPECT_NEAR(back, v, std::fabs(v) * 1e-6 + 1e-9);
    }
  }
}

// The other value kinds through the same table.
TEST(Engine, IntegerAndDecimalKindsRoundTrip) {
  const DATATYPE types[] = {ZQDT_SHORT,
                            ZQDT_INTEGER,
                            ZQDT_DECIMAL,
                            ZQDT_PACKED,
                            ZQDT_COMP3,
                            ZQDT_ZONED,
                            ZQDT_DISPLAY_SIGN_LEADING_SEP,
                            ZQDT_COMP,
                            ZQDT_COMP5,
                            ZQDT_COMPX,
                            ZQDT_BINARY24,
                            ZQDT_TEC_BINARY,
                            ZQDT_BINARY64,
                            ZQDT_IBM_FLOAT,
                            ZQDT_INTEL_FLOAT80,
                            ZQDT_ACCPAC};
  const long values[] = {0, 1, -1, 77, -4321, 9999};
  for (DATATYPE ty : types) {
    ZQDType t(ty);
    for (long v : values) {
      SCOPED_TRACE(std::string(t.TypeName()) + " " + std::to_string(v));
      ZQString rec;
      ASSERT_EQ(t.Output(rec, v), t.Length());
      long l = -5;
      short s = -5;
      ZQQuadWord q;
      ZQDecimal d;
      EXPECT_EQ(t.Input(rec, 0, l), t.Length());
      EXPECT_EQ(l, v);
      EXPECT_EQ(t.Input(rec, 0, s), t.Length());
      EXPECT_EQ(s, v);
      EXPECT_EQ(t.Input(rec, 0, q), t.Length());
      EXPECT_EQ(q.Value(), v);
      EXPECT_EQ(t.Input(rec, 0, d), t.Length());
      EXPECT_EQ(static_cast<long>(d), v);

      ZQString r2, r3, r4;
      t.Output(r2, ZQQuadWord(v));
      t.Output(r3, ZQDecimal(v));
      t.Output(r4, static_cast<double>(v));
      EXPECT_EQ(Hex(r2), Hex(rec));
      EXPECT_EQ(Hex(r3), Hex(rec));
      EXPECT_EQ(Hex(r4), Hex(rec));
    }
  }
}

// Exact decimals keep digits that a double would lose.
TEST(Engine, DecimalFormIsExact) {
  ZQDType t = Type(ZQDT_PACKED, 10, 4);
  ZQDecimal v("12345678901234.5678");
  ZQString rec;
  ASSERT_EQ(t.Output(rec, v), 10);
  EXPECT_EQ(Hex(rec), "01 23 45 67 89 01 23 45 67 8C");
  ZQDecimal back;
  ASSERT_EQ(t.Input(rec, 0, back), 10);
  EXPECT_EQ(DecimalText(back), "12345678901234.5678");

  ZQDType z = Type(ZQDT_ZONED, 6, 1);
  z.SignStyle(2);
  ZQString zr;
  z.Output(zr, ZQDecimal("-1234.25"));  // 12342.5 rounds half to even
  EXPECT_EQ(std::string(zr.c_str(), 6), "01234r");
  z.Output(zr, ZQDecimal("1234.35"));
  EXPECT_EQ(std::string(zr.c_str() + 6, 6), "012344");

  ZQDType b = Type(ZQDT_BINARY64, 0, 2);
  ZQString br;
  b.Output(br, ZQDecimal("-1.239"));
  EXPECT_EQ(Hex(br), "85 FF FF FF FF FF FF FF");  // truncated
  ZQDecimal bd;
  b.Input(br, 0, bd);
  EXPECT_EQ(DecimalText(bd), "-1.23");

  // 64-bit binary takes the whole 64 bits: unsigned values beyond 2^63-1 and
  // signed values at both ends, written from a decimal and read back.
  const struct {
    bool is_signed;
    const char* value;
    const char* hex;
  } wide[] = {
      {false, "18446744073709551615", "FF FF FF FF FF FF FF FF"},
      {false, "9223372036854775808", "00 00 00 00 00 00 00 80"},
      {true, "9223372036854775807", "FF FF FF FF FF FF FF 7F"},
      {true, "-9223372036854775808", "00 00 00 00 00 00 00 80"},
      {true, "-4294967296", "00 00 00 00 FF FF FF FF"},
  };
  for (const auto& w : wide) {
    ZQDType u = Type(ZQDT_BINARY64);
    u.Signed(w.is_signed);
    ZQString ur;
    ASSERT_EQ(u.Output(ur, ZQDecimal(w.value)), 8) << w.value;
    EXPECT_EQ(Hex(ur), w.hex) << w.value;
    ZQDecimal ud;
    u.Input(ur, 0, ud);
    EXPECT_EQ(DecimalText(ud), w.value);
  }
}

TEST(Engine, DocumentedAsymmetries) {
  ZQString rec;
  // An unsigned Integer never stores a negative number.
  ZQDType ui(ZQDT_INTEGER);
  ui.Signed(false);
  ui.Output(rec, -5.0);
  EXPECT_EQ(Hex(rec), "05 00 00 00");

  // A 1-byte Comp always sign-extends; an 8-bit binary honours Signed.
  const ZQString ff = Raw("\xFF", 1);
  ZQDType comp = Type(ZQDT_COMP, 1);
  comp.Signed(false);
  double d = 0;
  comp.Input(ff, 0, d);
  EXPECT_EQ(d, -1.0);
  ZQDType b8(ZQDT_BINARY8);
  b8.Signed(false);
  b8.Input(ff, 0, d);
  EXPECT_EQ(d, 255.0);
  b8.Signed(true);
  b8.Input(ff, 0, d);
  EXPECT_EQ(d, -1.0);
  // Only the 3-byte Comp honours Signed.
  ZQDType comp3 = Type(ZQDT_COMP, 3);
  comp3.Signed(false);
  comp3.Input(Raw("\xFF\xFF\xFF", 3), 0, d);
  EXPECT_EQ(d, 16777215.0);

  // Wide Comp from a long: four value bytes and extension bytes.
  ZQDType c8 = Type(ZQDT_COMP, 8);
  c8.MSBFirst(false);
  rec.clear();
  c8.Output(rec, -2L);
  EXPECT_EQ(Hex(rec), "FE FF FF FF FF FF FF FF");
  c8.MSBFirst(true);
  rec.clear();
  c8.Output(rec, -2L);
  EXPECT_EQ(Hex(rec), "FF FF FF FF FF FF FF FE");
  c8.Signed(false);
  rec.clear();
  c8.Output(rec, -2L);
  EXPECT_EQ(Hex(rec), "00 00 00 00 FF FF FF FE");

  // Integer storage truncates after scaling.
  ZQDType i2(ZQDT_INTEGER);
  i2.Scale(2);
  i2.MinScale(-20);
  i2.MaxScale(20);
  i2.Scale(2);
  rec.clear();
  i2.Output(rec, 12.349);
  EXPECT_EQ(Hex(rec), "D2 04 00 00");
  long l = 0;
  i2.Input(rec, 0, l);
  EXPECT_EQ(l, 12);  // integer scaling truncates
  i2.Input(rec, 0, d);
  EXPECT_EQ(d, 12.34);

  // Signed display: text in is parsed and overpunched; text out is raw.
  ZQDType ds = Type(ZQDT_DISPLAY_SIGN_TRAILING, 4);
  ds.SignStyle(2);
  rec.clear();
  EXPECT_EQ(ds.Output(rec, ZQString("-12")), 4);
  EXPECT_EQ(std::string(rec.c_str(), 4), "  1r");  // space-padded type
  ZQString text;
  EXPECT_EQ(ds.Input(rec, 0, text), 4);
  EXPECT_EQ(std::string(text.c_str(), text.length()), "  1r");

  // Numeric types give no text; text into a numeric type is parsed.
  ZQDType fl(ZQDT_FLOAT);
  rec.clear();
  fl.Output(rec, 2.5);
  text = "unchanged";
  EXPECT_EQ(fl.Input(rec, 0, text), 0);
  EXPECT_STREQ(text.c_str(), "unchanged");
  rec.clear();
  EXPECT_EQ(fl.Output(rec, ZQString("-7.25xyz")), 8);
  fl.Input(rec, 0, d);
  EXPECT_EQ(d, -7.25);
  rec.clear();
  fl.Output(rec, ZQString("junk"));
  fl.Input(rec, 0, d);
  EXPECT_EQ(d, 0.0);

  // Types without a numeric codec return 0 and write nothing.
  for (DATATYPE t : {ZQDT_TEXT, ZQDT_COMPLEX, ZQDT_DATETIME, ZQDT_BOOLEAN, ZQDT_NAME,
                     ZQDT_STRUCTURE, ZQDT_MEMO, ZQDT_CSTRING}) {
    ZQDType ty(t);
    rec.clear();
    EXPECT_EQ(ty.Output(rec, 1.0), 0) << ty.TypeName();
    EXPECT_EQ(ty.Output(rec, 1L), 0) << ty.TypeName();
    EXPECT_EQ(rec.length(), 0);
    d = 42;
    EXPECT_EQ(ty.Input(ZQString("0123456789abcdef0123"), 0, d), 0);
    EXPECT_EQ(d, 42);
  }

  // The Microsoft BASIC writers leave the field out when they cannot encode.
  ZQDType mbf(ZQDT_MSBASIC_DOUBLE);
  rec.clear();
  EXPECT_EQ(mbf.Output(rec, 0.0), 8);
  EXPECT_EQ(rec.length(), 0);
  mbf.Output(rec, 1.0);
  EXPECT_EQ(Hex(rec), "00 00 00 00 00 00 00 81");
}

// A field that does not lie inside the record is no value: 0 and untouched.
TEST(Engine, ShortRecordsAreNotReadPast) {
  const DATATYPE all[] = {ZQDT_SHORT,
                          ZQDT_INTEGER,
                          ZQDT_FLOAT,
                          ZQDT_DECIMAL,
                          ZQDT_DATE,
                          ZQDT_TIME,
                          ZQDT_NUMBER,
                          ZQDT_DBASE_NUMERIC,
                          ZQDT_IBM_FLOAT,
                          ZQDT_VAX_FLOAT32,
                          ZQDT_VAX_FLOAT64,
                          ZQDT_BINARY64,
                          ZQDT_MSBASIC_FLOAT,
                          ZQDT_MSBASIC_DOUBLE,
                          ZQDT_PACKED,
                          ZQDT_ZONED,
                          ZQDT_CRAY_FLOAT,
                          ZQDT_ACCPAC,
                          ZQDT_CB_MULTIPUNCH,
                          ZQDT_CB_ALPHANUMERIC,
                          ZQDT_CB_NUMERIC,
                          ZQDT_BTRIEVE_DATE,
                          ZQDT_BTRIEVE_TIME,
                          ZQDT_MAGIC_DATE,
                          ZQDT_MAGIC_TIME,
                          ZQDT_MAGIC_NUMBER,
                          ZQDT_MAGIC_REAL,
                          ZQDT_MAGIC_EXTENDED,
                          ZQDT_IEEE_FLOAT32,
                          ZQDT_DISPLAY_SIGN_TRAILING,
                          ZQDT_DISPLAY_SIGN_LEADING_SEP,
                          ZQDT_COMP,
                          ZQDT_COMP1,
                          ZQDT_COMP2,
                          ZQDT_COMP3,
                          ZQDT_COMP5,
                          ZQDT_COMPX,
                          ZQDT_BINARY8,
                          ZQDT_BINARY24,
                          ZQDT_TEC_BINARY,
                          ZQDT_PASCAL_REAL48,
                          ZQDT_SALESALLY_DATE,
                          ZQDT_SALESALLY_TIME,
                          ZQDT_TIME_MINUTES,
                          ZQDT_INTEL_FLOAT80,
                          ZQDT_BCD,
                          ZQDT_TEXT,
                          ZQDT_CSTRING,
                          ZQDT_PASCAL_STRING1,
                          ZQDT_PASCAL_STRING2};
  for (DATATYPE ty : all) {
    ZQDType t(ty);
    SCOPED_TRACE(t.TypeName());
    const ZQString rec(std::string(t.Length() + 3, '\x11').c_str(),
                       static_cast<int>(t.Length() + 3));
    for (long off : {-1L, 4L, t.Length() + 3, 1L << 40}) {
      double d = 42;
      long l = 42;
      short s = 42;
      ZQQuadWord q(42L);
      ZQDecimal dec(42L);
      ZQString text("keep");
      EXPECT_EQ(t.Input(rec, off, d), 0);
      EXPECT_EQ(t.Input(rec, off, l), 0);
      EXPECT_EQ(t.Input(rec, off, s), 0);
      EXPECT_EQ(t.Input(rec, off, q), 0);
      EXPECT_EQ(t.Input(rec, off, dec), 0);
      EXPECT_EQ(d, 42);
      EXPECT_EQ(l, 42);
      EXPECT_EQ(s, 42);
      EXPECT_EQ(q.Value(), 42);
      EXPECT_EQ(static_cast<long>(dec), 42);
      t.Input(rec, off, text);
      EXPECT_LE(text.length(), 4);
    }
  }
}

TEST(Engine, TextLayouts) {
  struct Case {
    DATATYPE type;
    bool varlen;
    long length;
    const char* text;
    std::string stored;
    long result;
  };
  const Case cases[] = {
      {ZQDT_TEXT, false, 6, "abc", "abc   ", 6},
      {ZQDT_TEXT, false, 3, "abcdef", "abc", 3},
      {ZQDT_CSTRING, false, 6, "abc", std::string("abc  \0", 6), 6},
      {ZQDT_CSTRING, true, 6, "abc", std::string("abc\0", 4), 4},
      {ZQDT_PASCAL_STRING1, false, 6, "abc",
       "\x05"
       "abc  ",
       6},
      {ZQDT_PASCAL_STRING1, true, 6, "abc",
       "\x03"
       "abc",
       4},
      {ZQDT_PASCAL_STRING2, false, 6, "abc",
       std::string("\x04\x00"
                   "abc ",
                   6),
       6},
      {ZQDT_PASCAL_STRING2, true, 6, "abc",
       std::string("\x03\x00"
                   "abc",
                   5),
       5},
  };
  for (const Case& c : cases) {
    ZQDType t = Type(c.type, c.length);
    t.VariableLength(c.varlen);
    SCOPED_TRACE(std::string(t.TypeName()) + (c.varlen ? " variable" : " fixed"));
    ZQString rec;
    EXPECT_EQ(t.Output(rec, ZQString(c.text)), c.result);
    EXPECT_EQ(std::string(rec.c_str(), rec.length()), c.stored);
  }
  ZQString text;
  // Fixed C string: cut at the first zero byte.
  ZQDType cs = Type(ZQDT_CSTRING, 6);
  EXPECT_EQ(cs.Input(ZQString(std::string("ab\0cdef", 7).c_str(), 7), 0, text), 6);
  EXPECT_STREQ(text.c_str(), "ab");
  // Fixed Pascal 1: the prefix is trusted; fixed Pascal 2: it is ignored.
  ZQDType p1 = Type(ZQDT_PASCAL_STRING1, 6);
  EXPECT_EQ(p1.Input(ZQString("\x02"
                              "abcdefgh"),
                     0, text),
            6);
  EXPECT_STREQ(text.c_str(), "ab");
  EXPECT_EQ(p1.Input(ZQString("\x08"
                              "abcdefgh"),
                     0, text),
            6);
  EXPECT_STREQ(text.c_str(), "abcdefgh");
  ZQDType p2 = Type(ZQDT_PASCAL_STRING2, 6);
  EXPECT_EQ(p2.Input(ZQString(std::string("\x01\x00"
                                          "abcdefgh",
                                          10)
                                  .c_str(),
                              10),
                     0, text),
            6);
  EXPECT_STREQ(text.c_str(), "abcd");
  // Variable forms consume what they hold; prefixes are signed.
  p1.VariableLength(true);
  EXPECT_EQ(p1.Input(ZQString("\x03"
                              "abcdefgh"),
                     0, text),
            4);
  EXPECT_STREQ(text.c_str(), "abc");
  EXPECT_EQ(p1.Input(ZQString("\x90"
                              "abc"),
                     0, text),
            1);
  EXPECT_STREQ(text.c_str(), "");
  p2.VariableLength(true);
  p2.MSBFirst(true);
  EXPECT_EQ(p2.Input(ZQString(std::string("\x00\x02"
                                          "abc",
                                          5)
                                  .c_str(),
                              5),
                     0, text),
            4);
  EXPECT_STREQ(text.c_str(), "ab");
  cs.VariableLength(true);
  EXPECT_EQ(cs.Input(ZQString(std::string("xyz\0q", 5).c_str(), 5), 0, text), 4);
  EXPECT_STREQ(text.c_str(), "xyz");
  EXPECT_EQ(cs.Input(ZQString("xyz"), 0, text), 3);  // no terminator: to the end
  ZQDType memo(ZQDT_MEMO);
  memo.VariableLength(true);
  EXPECT_EQ(memo.Input(ZQString("whatever"), 0, text), 0);
  // Pad characters are kept on reading.
  ZQDType tx = Type(ZQDT_TEXT, 5);
  EXPECT_EQ(tx.Input(ZQString("ab   cd"), 0, text), 5);
  EXPECT_STREQ(text.c_str(), "ab   ");
  // Column binary carries text both ways.
  ZQDType cb = Type(ZQDT_CB_ALPHANUMERIC, 8);
  ZQString rec;
  EXPECT_EQ(cb.Output(rec, ZQString("HI 5")), 8);
  EXPECT_EQ(Hex(rec), "20 02 20 01 00 00 00 10");
  EXPECT_EQ(cb.Input(rec, 0, text), 8);
  EXPECT_STREQ(text.c_str(), "HI 5");
}

TEST(Engine, LegacyDatesAndTimes) {
  ZQString rec;
  long v = -1;
  ZQDType bt(ZQDT_BTRIEVE_TIME);
  bt.Output(rec, 49530L);
  EXPECT_EQ(Hex(rec), "00 1E 2D 0D");
  EXPECT_EQ(bt.Input(rec, 0, v), 4);
  EXPECT_EQ(v, 49530);

  ZQDType bd(ZQDT_BTRIEVE_DATE);
  rec.clear();
  bd.Output(rec, 0L);
  EXPECT_EQ(Hex(rec), "00 00 00 00");
  bd.Input(rec, 0, v);
  EXPECT_EQ(v, 0);
  const long day = ZQDateTime::cal_jul(11, 22, 2026);
  rec.clear();
  bd.Output(rec, day);
  EXPECT_EQ(Hex(rec), "16 0B EA 07");
  bd.Input(rec, 0, v);
  EXPECT_EQ(v, day);

  ZQDType mins(ZQDT_TIME_MINUTES);
  mins.Input(Raw("\x5A\x00", 2), 0, v);
  EXPECT_EQ(v, 5400);
  rec.clear();
  mins.Output(rec, 5459L);
  EXPECT_EQ(Hex(rec), "5A 00");

  ZQDType sa(ZQDT_SALESALLY_TIME);
  rec.clear();
  sa.Output(rec, 59L);
  EXPECT_EQ(Hex(rec), "02 00");
  sa.Input(rec, 0, v);
  EXPECT_EQ(v, 40);

  ZQDType sad(ZQDT_SALESALLY_DATE);
  sad.Input(Raw("\x01\x00", 2), 0, v);
  EXPECT_EQ(v, 685564);
  rec.clear();
  sad.Output(rec, 0L);  // not special: the low 16 bits of -685563
  EXPECT_EQ(Hex(rec), "05 8A");
  ZQDType md(ZQDT_MAGIC_DATE);
  md.Input(Raw("\x01\x00\x00\x00", 4), 0, v);
  EXPECT_EQ(v, 693963);
  rec.clear();
  md.Output(rec, day);
  md.Input(rec, 0, v);
  EXPECT_EQ(v, day);
  ZQDType mt(ZQDT_MAGIC_TIME);
  mt.Input(Raw("\x10\x0E\x00\x00", 4), 0, v);
  EXPECT_EQ(v, 3600);

  // A length other than the format's reads as 0.
  ZQDType odd(ZQDT_MAGIC_TIME);
  odd.MinLength(1);
  odd.MaxLength(8);
  odd.Length(2);
  v = 5;
  odd.Input(Raw("\x10\x0E\x00\x00", 4), 0, v);
  EXPECT_EQ(v, 0);
  // The 64-bit integer forms carry dates too; the others do not.
  ZQQuadWord q;
  EXPECT_EQ(md.Input(Raw("\x01\x00\x00\x00", 4), 0, q), 4);
  EXPECT_EQ(q.Value(), 693963);
  rec.clear();
  md.Output(rec, ZQQuadWord(static_cast<long long>(day)));
  md.Input(rec, 0, v);
  EXPECT_EQ(v, day);
  double d = 3;
  EXPECT_EQ(md.Input(Raw("\x01\x00\x00\x00", 4), 0, d), 0);
  EXPECT_EQ(d, 3);
}

TEST(Engine, WideZonedAndDBase) {
  ZQDType z = Type(ZQDT_ZONED, 5, 2);
  z.SignStyle(1);
  ZQWString w;
  EXPECT_EQ(z.PutZone(w, -1.23), 5);
  ASSERT_EQ(w.length(), 5);
  std::string narrow;
  for (long i = 0; i < w.length(); ++i) narrow += static_cast<char>(w.c_str()[i]);
  EXPECT_EQ(narrow, "0012L");
  double d = 0;
  EXPECT_EQ(z.GetZone(w, 0, d), 5);
  EXPECT_DOUBLE_EQ(d, -1.23);
  EXPECT_EQ(z.GetZone(w, 1, d), 0);

  ZQDType db = Type(ZQDT_DBASE_NUMERIC, 8);
  db.DecimalPlaces(2);
  ZQString rec;
  db.Output(rec, 3.14159);
  EXPECT_STREQ(rec.c_str(), "    3.14");
  db.Input(ZQString("        "), 0, d);
  EXPECT_EQ(d, 0.0);
}

}  // namespace
