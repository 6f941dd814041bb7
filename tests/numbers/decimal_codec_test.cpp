// ZQDecimal binary and packed fields, checked against GnuCOBOL's own
// COMP-3, BINARY and COMP-5 fields and against the documented layouts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

std::string Hex(ZQString const& s, long from = 0, long n = -1) {
  static const char kHex[] = "0123456789ABCDEF";
  if (n < 0) n = s.length() - from;
  std::string h;
  for (long i = from; i < from + n; ++i) {
    unsigned char b = static_cast<unsigned char>(s.c_str()[i]);
    if (!h.empty()) h += ' ';
    h += kHex[b >> 4];
    h += kHex[b & 15];
  }
  return h;
}

ZQString Bytes(std::initializer_list<int> bytes) {
  ZQString s;
  for (int b : bytes) s += static_cast<char>(b);
  return s;
}

std::string Text(ZQDecimal const& d) {
  char buf[64];
  return d.Print(buf, sizeof buf);
}

ZQDType Packed(long length, short scale, long sign_pos, long style,
               bool is_signed) {
  ZQDType t(ZQDT_PACKED);
  t.MinLength(0);
  t.MaxLength(64);
  t.MinPrecision(-1);
  t.MaxPrecision(128);
  t.Length(length);
  t.Scale(scale);
  t.SignPos(sign_pos);
  t.SignStyle(style);
  t.Signed(is_signed);
  return t;
}

TEST(DecimalPacked, Layouts) {
  struct Case {
    const char* value;
    long length;
    short scale;
    long sign_pos;
    long style;
    bool is_signed;
    const char* bytes;
  } cases[] = {
      {"-123", 2, 0, 2, 1, true, "12 3D"},
      {"123", 2, 0, 2, 16, true, "12 3B"},      // rmcobol
      {"123", 2, 0, 8, 1024, true, "12 3F"},    // acucobol
      {"123", 2, 0, 2, 1, true, "12 3C"},       // ibm
      {"123", 2, 0, 2, 2, true, "12 3C"},       // mfcobol
      {"-123", 2, 0, 2, 1, false, "12 3F"},     // unsigned: no sign kept
      {"-45", 2, 0, 1, 2, true, "50 45"},       // leading sign nibble
      {"45", 2, 0, 4, 2, false, "30 45"},       // leading ignores signedness
      {"-45", 2, 0, 16, 2, true, "50 45"},      // "none" with another style
      {"1234", 2, 0, 16, 1024, true, "12 34"},  // "none" with acucobol
      {"123456", 2, 0, 2, 1, true, "45 6C"},    // high digits dropped
      {"123.45", 4, 2, 2, 1, true, "00 12 34 5C"},
      {"123.456", 4, 2, 2, 1, true, "00 12 34 6C"},  // rounded
      {"2.5", 2, 0, 2, 1, true, "00 2C"},            // ties to even, as "%.0f"
      {"3.5", 2, 0, 2, 1, true, "00 4C"},
      {"2.50001", 2, 0, 2, 1, true, "00 3C"},
      {"-0.4", 2, 0, 2, 1, true, "00 0D"},    // the sign is taken first
      {"999.5", 2, 0, 2, 1, true, "00 0C"},   // 1000 does not fit
      {"12", 3, -1, 2, 1, true, "00 00 1C"},  // negative scale divides
      {"0.0000000001", 6, 10, 2, 1, true, "00 00 00 00 00 1C"},
      {"12345678901234567890123", 12, 0, 2, 1, true,
       "12 34 56 78 90 12 34 56 78 90 00 0C"},
  };
  for (const Case& c : cases) {
    ZQDType t = Packed(c.length, c.scale, c.sign_pos, c.style, c.is_signed);
    ASSERT_EQ(t.Length(), c.length);
    ZQString out("x");
    ZQDecimal d(c.value);
    EXPECT_EQ(d.PutPack(out, t), c.length);
    EXPECT_EQ(Hex(out, 1), c.bytes) << c.value;
  }
  ZQString out;
  EXPECT_EQ(ZQDecimal(5L).PutPack(out, Packed(0, 0, 2, 1, true)), 0);
  EXPECT_EQ(out.length(), 0);
}

TEST(DecimalPacked, Reading) {
  struct Case {
    ZQString field;
    short scale;
    long sign_pos;
    long style;
    bool is_signed;
    const char* value;
  } cases[] = {
      {Bytes({0x12, 0x3B}), 0, 2, 1, true, "123"},  // only 0xD is negative
      {Bytes({0x12, 0x3D}), 0, 8, 1, true, "-123"},
      {Bytes({0x12, 0x3F}), 0, 2, 1, false, "123"},  // 0xF ends the digits
      {Bytes({0x12, 0x34}), 0, 2, 1, false, "1234"},
      {Bytes({0x50, 0x45}), 0, 1, 2, false, "-45"},  // leading 5 or D
      {Bytes({0xD0, 0x45}), 0, 4, 2, true, "-45"},
      {Bytes({0x30, 0x45}), 0, 1, 2, true, "45"},
      {Bytes({0x12, 0x34}), 0, 16, 1024, true, "1234"},
      {Bytes({0x00, 0x12, 0x34, 0x5C}), 2, 2, 1, true, "123.45"},
      {Bytes({0x00, 0x00, 0x1C}), -1, 2, 1, true, "10"},
      {Bytes({0x00, 0x00, 0x1D}), 12, 2, 1, true, "-0.000000000001"},
      {Bytes({0x1A, 0x3C}), 0, 2, 1, true, "1"},  // 0xA ends the number
      {Bytes({0x00, 0x0D}), 0, 2, 1, true, "0"},
  };
  for (const Case& c : cases) {
    ZQDType t =
        Packed(c.field.length(), c.scale, c.sign_pos, c.style, c.is_signed);
    ZQString record("ab");
    record += c.field;
    ZQDecimal d(77L);
    EXPECT_EQ(d.GetPack(record, 2, t), c.field.length()) << c.value;
    EXPECT_EQ(Text(d), c.value);
  }
  // A field beyond the record yields zero; a zero length leaves the value.
  ZQDecimal d(77L);
  EXPECT_EQ(d.GetPack(Bytes({0x12}), 0, Packed(2, 0, 2, 1, true)), 0);
  EXPECT_EQ(Text(d), "0");
  d = 77L;
  EXPECT_EQ(d.GetPack(Bytes({0x12}), -1, Packed(1, 0, 2, 1, true)), 0);
  ZQDType empty = Packed(0, 0, 2, 1, true);
  ASSERT_EQ(empty.Length(), 0);
  d = 77L;
  EXPECT_EQ(d.GetPack(Bytes({0x12}), 0, empty), 0);
  EXPECT_EQ(Text(d), "77");
}

TEST(DecimalBinary, Layouts) {
  struct Case {
    const char* value;
    int length;
    bool msb_first;
    const char* bytes;
  } cases[] = {
      {"-2", 8, false, "FE FF FF FF FF FF FF FF"},
      {"-2", 8, true, "FF FF FF FF FF FF FF FE"},
      {"258.9", 2, false, "02 01"},  // the fraction is truncated
      {"-258.9", 2, true, "FE FE"},
      {"65536", 2, false, "00 00"},  // only the low bytes are kept
      {"-1", 10, true, "FF FF FF FF FF FF FF FF FF FF"},
      {"1", 10, false, "01 00 00 00 00 00 00 00 00 00"},
      {"18446744073709551615", 8, true, "FF FF FF FF FF FF FF FF"},
      // Beyond 2^64 the whole part wraps.
      {"18446744073709551617", 8, true, "00 00 00 00 00 00 00 01"},
  };
  for (const Case& c : cases) {
    ZQString out;
    EXPECT_EQ(ZQDecimal(c.value).PutBinary(out, c.length, c.msb_first),
              c.length);
    EXPECT_EQ(Hex(out), c.bytes) << c.value;
  }
  ZQString out;
  EXPECT_EQ(ZQDecimal(5L).PutBinary(out, 0, false), 0);
  EXPECT_EQ(out.length(), 0);

  struct ReadCase {
    ZQString field;
    bool msb_first;
    bool is_signed;
    const char* value;
  } reads[] = {
      {Bytes({0xFF}), false, true, "-1"},
      {Bytes({0xFF}), false, false, "255"},
      {Bytes({0x01, 0x80}), false, true, "-32767"},
      {Bytes({0x01, 0x80}), true, true, "384"},
      {Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), true, false,
       "18446744073709551615"},
      {Bytes({0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}), false, true,
       "-9223372036854775808"},
      {Bytes({0x12, 0x34, 0x56}), true, false, "1193046"},
  };
  for (const ReadCase& r : reads) {
    ZQString record("z");
    record += r.field;
    ZQDecimal d;
    EXPECT_EQ(
        d.GetBinary(record, 1, r.field.length(), r.msb_first, r.is_signed),
        r.field.length());
    EXPECT_EQ(Text(d), r.value);
  }
  ZQDecimal d(5L);
  EXPECT_EQ(d.GetBinary(Bytes({1, 2}), 1, 2, false, true), 0);
  EXPECT_TRUE(d == ZQDecimal());
  EXPECT_EQ(d.GetBinary(Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9}), 0, 9, false, true),
            0);
}

// GnuCOBOL writes records of these fields from the values the test gives it.
const char kProgram[] = R"(       IDENTIFICATION DIVISION.
       PROGRAM-ID. GENNUM.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT IN-FILE ASSIGN TO "in.txt"
               ORGANIZATION IS LINE SEQUENTIAL.
           SELECT OUT-FILE ASSIGN TO "out.bin"
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD IN-FILE.
       01 IN-REC.
          05 I-P1 PIC S9(7) SIGN LEADING SEPARATE.
          05 I-P2 PIC 9(7).
          05 I-P3 PIC S9(5)V99 SIGN LEADING SEPARATE.
          05 I-P4 PIC S9(18) SIGN LEADING SEPARATE.
          05 I-B1 PIC S9(18) SIGN LEADING SEPARATE.
          05 I-B2 PIC S9(4) SIGN LEADING SEPARATE.
          05 I-B3 PIC 9(9).
       FD OUT-FILE.
       01 OUT-REC.
          05 O-P1 PIC S9(7) COMP-3.
          05 O-P2 PIC 9(7) COMP-3.
          05 O-P3 PIC S9(5)V99 COMP-3.
          05 O-P4 PIC S9(18) COMP-3.
          05 O-B1 PIC S9(18) BINARY.
          05 O-B2 PIC S9(4) COMP-5.
          05 O-B3 PIC 9(9) BINARY.
       WORKING-STORAGE SECTION.
       01 WS-EOF PIC X VALUE "N".
       PROCEDURE DIVISION.
           OPEN INPUT IN-FILE OUTPUT OUT-FILE
           PERFORM UNTIL WS-EOF = "Y"
              READ IN-FILE
                 AT END MOVE "Y" TO WS-EOF
                 NOT AT END
                    MOVE I-P1 TO O-P1
                    MOVE I-P2 TO O-P2
                    MOVE I-P3 TO O-P3
                    MOVE I-P4 TO O-P4
                    MOVE I-B1 TO O-B1
                    MOVE I-B2 TO O-B2
                    MOVE I-B3 TO O-B3
                    WRITE OUT-REC
              END-READ
           END-PERFORM
           CLOSE IN-FILE OUT-FILE
           STOP RUN.
)";

struct Field {
  int digits;  // digits in the input picture
  int scale;   // digits after the implied point
  bool is_signed;
  int length;  // stored bytes
};

// Field order of the records above.
const Field kFields[] = {
    {7, 0, true, 4},  {7, 0, false, 4}, {7, 2, true, 4},  {18, 0, true, 10},
    {18, 0, true, 8}, {4, 0, true, 2},  {9, 0, false, 4},
};

// A random value of the field as its decimal text and its input picture.
void RandomValue(std::mt19937_64& rng, Field const& f, std::string* text,
                 std::string* picture) {
  std::string digits;
  int used = 1 + static_cast<int>(rng() % f.digits);
  for (int i = 0; i < f.digits; ++i) {
    digits += i < f.digits - used ? '0' : static_cast<char>('0' + rng() % 10);
  }
  // No negative zeros: COBOL and ZQDecimal both store those as positive.
  bool negative = f.is_signed && rng() % 2 &&
                  digits.find_first_not_of('0') != std::string::npos;
  *picture = f.is_signed ? (negative ? "-" : "+") + digits : digits;
  std::string whole = digits.substr(0, f.digits - f.scale);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
  *text = (negative ? "-" : "") + whole;
  if (f.scale > 0) *text += "." + digits.substr(f.digits - f.scale);
}

bool HaveCobc() { return std::system("command -v cobc >/dev/null 2>&1") == 0; }

TEST(DecimalCobol, PackedAndBinaryFieldsMatch) {
  if (!HaveCobc()) GTEST_SKIP() << "cobc is not installed";
  char dir_template[] = "/tmp/zq_decimal_cobol_XXXXXX";
  ASSERT_NE(mkdtemp(dir_template), nullptr);
  std::string dir = dir_template;
  std::ofstream(dir + "/gen.cob") << kProgram;

  std::mt19937_64 rng(42);
  const int kRecords = 500;
  std::vector<std::vector<std::string>> values(kRecords);
  {
    std::ofstream in(dir + "/in.txt");
    for (int r = 0; r < kRecords; ++r) {
      for (const Field& f : kFields) {
        std::string text, picture;
        RandomValue(rng, f, &text, &picture);
        values[r].push_back(text);
        in << picture;
      }
      in << '\n';
    }
  }
  std::string cmd = "cd " + dir + " && cobc -x -o gen gen.cob && ./gen";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  std::ifstream bin(dir + "/out.bin", std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(bin)),
                  std::istreambuf_iterator<char>());
  std::system(("rm -rf " + dir).c_str());

  int record_length = 0;
  for (const Field& f : kFields) record_length += f.length;
  ASSERT_EQ(static_cast<int>(all.size()), kRecords * record_length);

  ZQString file(all.data(), static_cast<int>(all.size()));
  for (int r = 0; r < kRecords; ++r) {
    int offset = r * record_length;
    for (int i = 0; i < 7; ++i) {
      const Field& f = kFields[i];
      const std::string& text = values[r][i];
      ZQDecimal want(text.c_str());
      ZQDecimal got;
      ZQString written;
      if (i < 4) {
        ZQDType t =
            Packed(f.length, static_cast<short>(f.scale), 2, 2, f.is_signed);
        ASSERT_EQ(got.GetPack(file, offset, t), f.length);
        want.PutPack(written, t);
      } else {
        // COMP-5 is stored in the machine's order, BINARY most significant
        // first.
        bool msb = i != 5;
        ASSERT_EQ(got.GetBinary(file, offset, f.length, msb, f.is_signed),
                  f.length);
        want.PutBinary(written, f.length, msb);
      }
      ASSERT_EQ(Text(got), Text(want)) << "record " << r << " field " << i;
      ASSERT_EQ(Hex(written), Hex(file, offset, f.length)) << text;
      offset += f.length;
    }
  }
}

}  // namespace
