// The engine: dispatch of every type, deliberate asymmetries, text, dates.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "types/datatype_helpers.h"
#include "zq/datetime.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/quadword.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

std::string Hex(const ZQString& s) { return zqtest::Hex(s.c_str(), s.length()); }
std::string Bytes(const ZQString& s) { return std::string(s.c_str(), s.length()); }
ZQString Raw(const std::string& s) { return ZQString(s.data(), static_cast<int>(s.size())); }
ZQString FromHex(const std::string& hex) { return Raw(zqtest::FromHex(hex)); }

// The bytes `t` stores for `v`, in hex; a mismatch between the count it
// returns and the bytes it appends shows as a trailing "!count".
template <typename V>
std::string Out(const ZQDType& t, V v) {
  ZQString r;
  const long n = t.Output(r, v);
  return Hex(r) + (n == r.length() ? "" : " !" + std::to_string(n));
}

// The value `t` reads from the hex bytes into a `V` that starts as `init`.
template <typename V>
V In(const ZQDType& t, const std::string& hex, V init) {
  t.Input(FromHex(hex), 0, init);
  return init;
}

using zqtest::Type;

// Every numeric type, written and read through every value kind.
TEST(Engine, RoundTripEveryNumericType) {
  struct Case {
    DATATYPE type;
    long length;
    short scale;
    std::vector<double> values;
  };
  const std::vector<double> whole = {0, 1, -1, 77, 127, -128, 12345, -9999};
  const std::vector<double> frac = {0, 1.5, -2.25, 1234.5, -0.015625, 1e10, -3e-5, -4321};
  const std::vector<double> single = {0, 1.5, -2.25, 1234.5, -0.015625, 77};
  const std::vector<Case> cases = {
      {ZQDT_SHORT, 0, 0, whole},
      {ZQDT_INTEGER, 0, 0, {0, 1, -1, 2147483647.0, -2147483648.0, 12345, -9999}},
      {ZQDT_FLOAT, 0, 0, frac},          {ZQDT_DECIMAL, 6, 2, {0, 1.5, -2.25, 1234.56, -99999.99}},
      {ZQDT_NUMBER, 6, 0, whole},        {ZQDT_PACKED, 10, 4, {0, 1.5, -2.25, 12345678.1234, -0.0001}},
      {ZQDT_BINARY64, 0, 0, {0, 1, -1, 1e15, -123456789012.0}},
      {ZQDT_DBASE_NUMERIC, 12, 0, {0, 1.5, -2.25, 1234.5}},
      {ZQDT_IBM_FLOAT, 8, 0, frac},      {ZQDT_VAX_FLOAT32, 0, 0, single},
      {ZQDT_VAX_FLOAT64, 0, 0, frac},    {ZQDT_MSBASIC_FLOAT, 0, 0, {1.5, -2.25, 1234.5, -0.015625}},
      {ZQDT_MSBASIC_DOUBLE, 0, 0, {1.5, -2.25, 1234.5, -0.015625, 1e10}},
      {ZQDT_ZONED, 10, 3, {0, 1.5, -2.25, 1234.567, -0.001}},
      {ZQDT_CRAY_FLOAT, 0, 0, frac},     {ZQDT_ACCPAC, 0, 0, whole},
      {ZQDT_TEC_BINARY, 0, 0, whole},    {ZQDT_CB_MULTIPUNCH, 8, 0, {0, 1, 4095, 40950001}},
      {ZQDT_CB_ALPHANUMERIC, 16, 0, {0, 1, 7, 12345678}},
      {ZQDT_CB_NUMERIC, 16, 0, {0, 1, 7, 12345678}},
      {ZQDT_MAGIC_NUMBER, 8, 0, frac},   {ZQDT_MAGIC_REAL, 0, 0, single},
      {ZQDT_MAGIC_EXTENDED, 0, 0, frac}, {ZQDT_IEEE_FLOAT32, 0, 0, single},
      {ZQDT_COMP, 3, 0, {0, 1, -1, 8388607, -8388608}},
      {ZQDT_COMP1, 0, 0, single},        {ZQDT_COMP2, 0, 0, frac},
      {ZQDT_COMPX, 4, 0, whole},         {ZQDT_BINARY8, 0, 0, {0, 1, -1, 127, -128}},
      {ZQDT_BINARY24, 0, 0, {0, 1, -1, 8388607, -8388608}},
      {ZQDT_PASCAL_REAL48, 0, 0, frac},  {ZQDT_INTEL_FLOAT80, 0, 0, frac},
      {ZQDT_BCD, 8, 2, {0, 1.5, -2.25, 12345.67}},
  };
  for (const Case& c : cases) {
    ZQDType t = Type(c.type, c.length, c.scale);
    for (double v : c.values) {
      SCOPED_TRACE(std::string(t.TypeName()) + " " + std::to_string(v));
      ZQString rec("ab");
      ASSERT_EQ(t.Output(rec, v), t.Length());
      ASSERT_EQ(rec.length(), 2 + t.Length());
      double back = -7777;
      EXPECT_EQ(t.Input(rec, 2, back), t.Length());
      EXPECT_NEAR(back, v, std::fabs(v) * 1e-6 + 1e-9);
      const long w = static_cast<long>(v);
      if (w != v || w < -32768 || w > 32767) continue;
      long l = -5;
      short s = -5;
      ZQQuadWord q;
      ZQDecimal x;
      EXPECT_EQ(t.Input(rec, 2, l) + t.Input(rec, 2, s) + t.Input(rec, 2, q) + t.Input(rec, 2, x),
                4 * t.Length());
      EXPECT_EQ((std::vector<long>{l, s, static_cast<long>(q.Value()), static_cast<long>(x)}),
                std::vector<long>(4, w));
      const std::string field = Hex(rec).substr(6);  // after "ab"
      EXPECT_EQ(Out(t, w) + Out(t, ZQQuadWord(w)) + Out(t, ZQDecimal(w)), field + field + field);
    }
  }
}

// Exact decimals keep digits a double loses, and all 64 bits of binary.
TEST(Engine, DecimalFormIsExact) {
  const struct {
    ZQDType type;
    bool is_signed;
    const char* value;
    const char* hex;   // stored bytes
    const char* back;  // read back as a decimal
  } cases[] = {
      {Type(ZQDT_PACKED, 10, 4), true, "12345678901234.5678", "01 23 45 67 89 01 23 45 67 8C",
       "12345678901234.5678"},
      {Type(ZQDT_BINARY64, 0, 2), true, "-1.239", "85 FF FF FF FF FF FF FF", "-1.23"},  // truncated
      {Type(ZQDT_BINARY64), false, "18446744073709551615", "FF FF FF FF FF FF FF FF", nullptr},
      {Type(ZQDT_BINARY64), false, "9223372036854775808", "00 00 00 00 00 00 00 80", nullptr},
      {Type(ZQDT_BINARY64), true, "-4294967296", "00 00 00 00 FF FF FF FF", nullptr},
  };
  for (const auto& c : cases) {
    ZQDType t = c.type;
    t.Signed(c.is_signed);
    char back[64];
    EXPECT_EQ(Out(t, ZQDecimal(c.value)), c.hex) << c.value;
    EXPECT_STREQ(In(t, c.hex, ZQDecimal()).Print(back, sizeof(back)), c.back ? c.back : c.value);
  }
}

TEST(Engine, DocumentedAsymmetries) {
  // An unsigned Integer never stores a negative number; Integer storage
  // truncates after scaling; a wide Comp from a long has four value bytes
  // and extension bytes. A 1-byte Comp always sign-extends; an 8-bit binary
  // honours Signed; of the Comp lengths only 3 honours Signed.
  const struct {
    ZQDType type;
    bool msb, is_signed, write;
    double value;
    const char* hex;
  } cases[] = {
      {Type(ZQDT_INTEGER), false, false, true, -5.0, "05 00 00 00"},
      {Type(ZQDT_INTEGER, 0, 2), false, true, true, 12.349, "D2 04 00 00"},
      {Type(ZQDT_INTEGER, 0, 2), false, true, false, 12.34, "D2 04 00 00"},
      {Type(ZQDT_COMP, 8), false, true, true, -2.0, "FE FF FF FF FF FF FF FF"},
      {Type(ZQDT_COMP, 8), true, true, true, -2.0, "FF FF FF FF FF FF FF FE"},
      {Type(ZQDT_COMP, 8), true, false, true, -2.0, "00 00 00 00 FF FF FF FE"},
      {Type(ZQDT_COMP, 1), false, false, false, -1.0, "FF"},
      {Type(ZQDT_BINARY8), false, false, false, 255.0, "FF"},
      {Type(ZQDT_BINARY8), false, true, false, -1.0, "FF"},
      {Type(ZQDT_COMP, 3), false, false, false, 16777215.0, "FF FF FF"},
  };
  for (const auto& c : cases) {
    ZQDType t = c.type;
    t.MSBFirst(c.msb);
    t.Signed(c.is_signed);
    if (!c.write) {
      EXPECT_EQ(In(t, c.hex, 0.0), c.value) << t.TypeName() << " " << c.hex;
    } else {
      EXPECT_EQ(t.Type() == ZQDT_COMP ? Out(t, static_cast<long>(c.value)) : Out(t, c.value), c.hex)
          << t.TypeName() << " " << c.value;
    }
  }
  EXPECT_EQ(In(Type(ZQDT_INTEGER, 0, 2), "D2 04 00 00", 0L), 12);

  // Signed display: text in is parsed and overpunched; text out is raw.
  ZQDType ds = Type(ZQDT_DISPLAY_SIGN_TRAILING, 4);
  ds.SignStyle(2);
  EXPECT_EQ(Out(ds, ZQString("-12")), "20 20 31 72");  // "  1r": a space-padded type
  ZQString raw;
  EXPECT_EQ(ds.Input(FromHex("20 20 31 72"), 0, raw), 4);
  EXPECT_EQ(Bytes(raw), "  1r");

  // Numeric types give no text; text into a numeric type is parsed.
  const ZQDType fl(ZQDT_FLOAT);
  ZQString text("unchanged");
  EXPECT_EQ(fl.Input(FromHex(Out(fl, 2.5)), 0, text), 0);
  EXPECT_STREQ(text.c_str(), "unchanged");
  EXPECT_EQ(In(fl, Out(fl, ZQString("-7.25xyz")), 0.0), -7.25);
  EXPECT_EQ(In(fl, Out(fl, ZQString("junk")), 1.0), 0.0);

  // Types without a numeric codec return 0 and write nothing.
  for (DATATYPE t : {ZQDT_TEXT, ZQDT_COMPLEX, ZQDT_DATETIME, ZQDT_BOOLEAN, ZQDT_NAME,
                     ZQDT_STRUCTURE, ZQDT_MEMO, ZQDT_CSTRING}) {
    const ZQDType ty(t);
    ZQString rec;
    double d = 42;
    const ZQString digits("0123456789abcdef0123");
    EXPECT_EQ((std::vector<long>{ty.Output(rec, 1.0), ty.Output(rec, 1L), rec.length(),
                                 ty.Input(digits, 0, d), static_cast<long>(d)}),
              (std::vector<long>{0, 0, 0, 0, 42}))
        << ty.TypeName();
  }

  // The Microsoft BASIC writers leave the field out when they cannot encode.
  const ZQDType mbf(ZQDT_MSBASIC_DOUBLE);
  EXPECT_EQ(Out(mbf, 0.0), " !8");
  EXPECT_EQ(Out(mbf, 1.0), "00 00 00 00 00 00 00 81");
}

// A field that does not lie inside the record is no value: 0 and untouched.
TEST(Engine, ShortRecordsAreNotReadPast) {
  for (const char* const* name = ZQDType::GetAllTypedefs(); *name != nullptr; ++name) {
    DATATYPE ty;
    ASSERT_TRUE(ZQDType::TypeByName(*name, ty));
    const ZQDType t(ty);
    SCOPED_TRACE(*name);
    const ZQString rec = Raw(std::string(t.Length() + 3, '\x11'));
    for (long off : {-1L, 4L, t.Length() + 3, 1L << 40}) {
      double d = 42;
      long l = 42;
      short s = 42;
      ZQQuadWord q(42L);
      ZQDecimal dec(42L);
      ZQString text("keep");
      EXPECT_EQ((std::vector<long>{t.Input(rec, off, d), t.Input(rec, off, l), t.Input(rec, off, s),
                                   t.Input(rec, off, q), t.Input(rec, off, dec),
                                   static_cast<long>(d), l, s, static_cast<long>(q.Value()),
                                   static_cast<long>(dec)}),
                (std::vector<long>{0, 0, 0, 0, 0, 42, 42, 42, 42, 42}))
          << off;
      t.Input(rec, off, text);
      EXPECT_LE(text.length(), 4);
    }
  }
}

TEST(Engine, TextLayouts) {
  const struct {
    DATATYPE type;
    bool varlen;
    const char* text;
    std::string stored;
  } writes[] = {
      {ZQDT_TEXT, false, "abc", "abc   "}, {ZQDT_TEXT, false, "abcdefgh", "abcdef"},
      {ZQDT_CSTRING, false, "abc", std::string("abc  \0", 6)},
      {ZQDT_CSTRING, true, "abc", std::string("abc\0", 4)},
      {ZQDT_PASCAL_STRING1, false, "abc", "\x05" "abc  "},
      {ZQDT_PASCAL_STRING1, true, "abc", "\x03" "abc"},
      {ZQDT_PASCAL_STRING2, false, "abc", std::string("\x04\x00" "abc ", 6)},
      {ZQDT_PASCAL_STRING2, true, "abc", std::string("\x03\x00" "abc", 5)},
  };
  for (const auto& c : writes) {
    ZQDType t = Type(c.type, 6);
    t.VariableLength(c.varlen);
    ZQString rec;
    EXPECT_EQ(t.Output(rec, ZQString(c.text)), static_cast<long>(c.stored.size())) << t.TypeName();
    EXPECT_EQ(Bytes(rec), c.stored) << t.TypeName();
  }

  // Fixed C strings are cut at a zero byte; a fixed Pascal 1 prefix is
  // trusted, a fixed Pascal 2 prefix ignored; variable forms consume what
  // they hold and their prefixes are signed; pad characters are kept.
  const struct {
    DATATYPE type;
    bool varlen, msb;
    std::string rec;
    long consumed;
    const char* text;
  } reads[] = {
      {ZQDT_CSTRING, false, false, std::string("ab\0cdef", 7), 6, "ab"},
      {ZQDT_PASCAL_STRING1, false, false, "\x02" "abcdefgh", 6, "ab"},
      {ZQDT_PASCAL_STRING1, false, false, "\x08" "abcdefgh", 6, "abcdefgh"},
      {ZQDT_PASCAL_STRING2, false, false, std::string("\x01\x00" "abcdefgh", 10), 6, "abcd"},
      {ZQDT_PASCAL_STRING1, true, false, "\x03" "abcdefgh", 4, "abc"},
      {ZQDT_PASCAL_STRING1, true, false, "\x90" "abc", 1, ""},
      {ZQDT_PASCAL_STRING2, true, true, std::string("\x00\x02" "abc", 5), 4, "ab"},
      {ZQDT_CSTRING, true, false, std::string("xyz\0q", 5), 4, "xyz"},
      {ZQDT_CSTRING, true, false, "xyz", 3, "xyz"},  // no terminator: to the end
      {ZQDT_MEMO, true, false, "whatever", 0, ""}, {ZQDT_TEXT, false, false, "ab   cd", 5, "ab   "},
  };
  for (const auto& c : reads) {
    ZQDType t = Type(c.type, c.type == ZQDT_TEXT ? 5 : c.type == ZQDT_MEMO ? 0 : 6);
    t.VariableLength(c.varlen);
    t.MSBFirst(c.msb);
    ZQString text;
    EXPECT_EQ(t.Input(Raw(c.rec), 0, text), c.consumed) << t.TypeName() << " " << c.rec;
    EXPECT_STREQ(text.c_str(), c.text) << t.TypeName() << " " << c.rec;
  }

  // Column binary carries text both ways.
  const ZQDType cb = Type(ZQDT_CB_ALPHANUMERIC, 8);
  EXPECT_EQ(Out(cb, ZQString("HI 5")), "20 02 20 01 00 00 00 10");
  ZQString text;
  EXPECT_EQ(cb.Input(FromHex("20 02 20 01 00 00 00 10"), 0, text), 8);
  EXPECT_STREQ(text.c_str(), "HI 5");
}

TEST(Engine, LegacyDatesAndTimes) {
  const long day = ZQDateTime::cal_jul(11, 22, 2026);
  // Written from a long, the stored bytes and the value read back.
  const struct {
    DATATYPE type;
    long value;
    const char* hex;
    long back;
  } writes[] = {
      {ZQDT_BTRIEVE_TIME, 49530, "00 1E 2D 0D", 49530}, {ZQDT_BTRIEVE_DATE, 0, "00 00 00 00", 0},
      {ZQDT_BTRIEVE_DATE, day, "16 0B EA 07", day}, {ZQDT_TIME_MINUTES, 5459, "5A 00", 5400},
      {ZQDT_SALESALLY_TIME, 59, "02 00", 40},
      {ZQDT_SALESALLY_DATE, 0, "05 8A", 720896},  // not special: the low 16 bits of -685563
      {ZQDT_MAGIC_DATE, day, "9E B3 00 00", day},  // day - 693962
  };
  for (const auto& w : writes) {
    const ZQDType t(w.type);
    long v = -1;
    const long n = t.Input(FromHex(w.hex), 0, v);
    EXPECT_EQ(Out(t, w.value) + " " + std::to_string(n) + " " + std::to_string(v),
              w.hex + (" " + std::to_string(t.Length())) + " " + std::to_string(w.back))
        << t.TypeName() << " " << w.value;
  }
  // Stored values read into a long; a length other than the format's reads as 0.
  ZQDType odd(ZQDT_MAGIC_TIME);
  odd.MinLength(1);
  odd.MaxLength(8);
  odd.Length(2);
  const struct {
    ZQDType type;
    const char* hex;
    long value;
  } reads[] = {
      {ZQDType(ZQDT_SALESALLY_DATE), "01 00", 685564},
      {ZQDType(ZQDT_MAGIC_DATE), "01 00 00 00", 693963},
      {ZQDType(ZQDT_MAGIC_TIME), "10 0E 00 00", 3600}, {odd, "10 0E 00 00", 0},
  };
  for (const auto& r : reads) EXPECT_EQ(In(r.type, r.hex, -1L), r.value) << r.hex;

  // The 64-bit integer forms carry dates too; the double form does not.
  const ZQDType md(ZQDT_MAGIC_DATE);
  ZQQuadWord q;
  EXPECT_EQ(md.Input(FromHex("01 00 00 00"), 0, q), 4);
  EXPECT_EQ(q.Value(), 693963);
  EXPECT_EQ(Out(md, ZQQuadWord(static_cast<long long>(day))), Out(md, day));
  EXPECT_EQ(In(md, "01 00 00 00", 3.0), 3.0);
  double d = 0;
  EXPECT_EQ(md.Input(FromHex("01 00 00 00"), 0, d), 0);
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

  // A blank dBASE field is no number, which reads as 0.
  EXPECT_EQ(In(Type(ZQDT_DBASE_NUMERIC, 8), "20 20 20 20 20 20 20 20", 1.0), 0.0);
}

}  // namespace
