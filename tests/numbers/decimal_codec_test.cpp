// ZQDecimal binary and packed fields, checked against GnuCOBOL's own
// COMP-3, BINARY and COMP-5 fields and against the documented layouts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
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
  std::string h;
  for (long i = from; i < (n < 0 ? s.length() : from + n); ++i) {
    unsigned char b = static_cast<unsigned char>(s.c_str()[i]);
    h += std::string(h.empty() ? "" : " ") + kHex[b >> 4] + kHex[b & 15];
  }
  return h;
}

// Bytes written as "12 3D", appended to `prefix`.
ZQString Unhex(const char* prefix, const std::string& hex) {
  ZQString s(prefix);
  for (size_t i = 0; i + 1 < hex.size(); i += 3) {
    s += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return s;
}

std::string Text(ZQDecimal const& d) {
  char buf[64];
  return d.Print(buf, sizeof buf);
}

ZQDType Packed(long length, short scale, long sign_pos, long style, bool is_signed) {
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
  // Each field is read back from the bytes; a null value is a field that
  // writing never produces.
  struct Case {
    const char* value;
    long length;
    short scale;
    long sign_pos, style;
    bool is_signed;
    const char *bytes, *read;
  } cases[] = {
      {"-123", 2, 0, 2, 1, true, "12 3D", "-123"},   {"3.5", 2, 0, 2, 1, true, "00 4C", "4"},
      {"123", 2, 0, 2, 16, true, "12 3B", "123"},    // rmcobol
      {"123", 2, 0, 8, 1024, true, "12 3F", "123"},  // acucobol
      {"123", 2, 0, 2, 1, true, "12 3C", "123"},     // ibm
      {"-123", 2, 0, 2, 1, false, "12 3F", "123"},   // unsigned: no sign kept
      {"-45", 2, 0, 1, 2, true, "50 45", "-45"},     // leading sign nibble
      {"45", 2, 0, 4, 2, false, "30 45", "45"},      // leading ignores signedness
      {"-45", 2, 0, 16, 2, true, "50 45", "-45"},    // "none" with another style
      {"1234", 2, 0, 16, 1024, true, "12 34", "1234"},  // "none" with acucobol
      {"123456", 2, 0, 2, 1, true, "45 6C", "456"},     // high digits dropped
      {"123.45", 4, 2, 2, 1, true, "00 12 34 5C", "123.45"},
      {"123.456", 4, 2, 2, 1, true, "00 12 34 6C", "123.46"},  // rounded
      {"2.5", 2, 0, 2, 1, true, "00 2C", "2"},  // ties to even, as "%.0f"
      {"2.50001", 2, 0, 2, 1, true, "00 3C", "3"},
      {"-0.4", 2, 0, 2, 1, true, "00 0D", "0"},   // the sign is taken first
      {"999.5", 2, 0, 2, 1, true, "00 0C", "0"},  // 1000 does not fit
      {"12", 3, -1, 2, 1, true, "00 00 1C", "10"},  // negative scale divides
      {"0.0000000001", 6, 10, 2, 1, true, "00 00 00 00 00 1C", "0.0000000001"},
      {"12345678901234567890123", 12, 0, 2, 1, true, "12 34 56 78 90 12 34 56 78 90 00 0C",
       "12345678901234567890000"},
      {nullptr, 2, 0, 2, 1, true, "12 3B", "123"},  // only 0xD is negative
      {nullptr, 2, 0, 8, 1, true, "12 3D", "-123"}, {nullptr, 2, 0, 2, 1, false, "12 34", "1234"},
      {nullptr, 2, 0, 1, 2, false, "50 45", "-45"},  // leading 5 or D
      {nullptr, 2, 0, 4, 2, true, "D0 45", "-45"},  {nullptr, 2, 0, 1, 2, true, "30 45", "45"},
      {nullptr, 3, 12, 2, 1, true, "00 00 1D", "-0.000000000001"},
      {nullptr, 2, 0, 2, 1, true, "1A 3C", "1"},  // 0xA ends the number
  };
  for (const Case& c : cases) {
    ZQDType t = Packed(c.length, c.scale, c.sign_pos, c.style, c.is_signed);
    ASSERT_EQ(t.Length(), c.length);
    ZQString out("x");
    if (c.value != nullptr) {
      EXPECT_EQ(ZQDecimal(c.value).PutPack(out, t), c.length);
      EXPECT_EQ(Hex(out, 1), c.bytes) << c.value;
    }
    ZQDecimal d(77L);
    EXPECT_EQ(d.GetPack(Unhex("ab", c.bytes), 2, t), c.length) << c.bytes;
    EXPECT_EQ(Text(d), c.read) << c.bytes;
  }
  // An empty field writes nothing and leaves the value; a field beyond the
  // record yields zero.
  ZQString out;
  ZQDType empty = Packed(0, 0, 2, 1, true);
  ASSERT_EQ(empty.Length(), 0);
  EXPECT_EQ(ZQDecimal(5L).PutPack(out, empty), 0);
  EXPECT_EQ(out.length(), 0);
  ZQDecimal d(77L);
  EXPECT_EQ(d.GetPack(Unhex("", "12"), 0, empty), 0);
  EXPECT_EQ(Text(d), "77");
  EXPECT_EQ(d.GetPack(Unhex("", "12"), -1, Packed(1, 0, 2, 1, true)), 0);
  EXPECT_EQ(d.GetPack(Unhex("", "12"), 0, Packed(2, 0, 2, 1, true)), 0);
  EXPECT_EQ(Text(d), "0");
}

TEST(DecimalBinary, Layouts) {
  // A null value is read only, a null read value written only.
  struct Case { const char* value; int length; bool msb, is_signed; const char *bytes, *read; };
  const Case cases[] = {
      {"-2", 8, false, true, "FE FF FF FF FF FF FF FF", "-2"},
      {"258.9", 2, false, true, "02 01", "258"},  // the fraction is truncated
      {"-258.9", 2, true, true, "FE FE", "-258"},
      {"65536", 2, false, true, "00 00", "0"},  // only the low bytes are kept
      {"-1", 10, true, true, "FF FF FF FF FF FF FF FF FF FF", nullptr},
      {"1", 10, false, true, "01 00 00 00 00 00 00 00 00 00", nullptr},
      {"18446744073709551615", 8, true, false, "FF FF FF FF FF FF FF FF",
       "18446744073709551615"},
      // Beyond 2^64 the whole part wraps.
      {"18446744073709551617", 8, true, false, "00 00 00 00 00 00 00 01", "1"},
      {nullptr, 1, false, false, "FF", "255"},    {nullptr, 2, false, true, "01 80", "-32767"},
      {nullptr, 2, true, true, "01 80", "384"},   {nullptr, 3, true, false, "12 34 56", "1193046"},
      {nullptr, 8, false, true, "00 00 00 00 00 00 00 80", "-9223372036854775808"},
  };
  for (const Case& c : cases) {
    ZQString out;
    if (c.value != nullptr) {
      EXPECT_EQ(ZQDecimal(c.value).PutBinary(out, c.length, c.msb), c.length);
      EXPECT_EQ(Hex(out), c.bytes) << c.value;
    }
    ZQDecimal d;
    if (c.read == nullptr) continue;
    EXPECT_EQ(d.GetBinary(Unhex("z", c.bytes), 1, c.length, c.msb, c.is_signed), c.length);
    EXPECT_EQ(Text(d), c.read) << c.bytes;
  }
  ZQString out;
  EXPECT_EQ(ZQDecimal(5L).PutBinary(out, 0, false), 0);
  EXPECT_EQ(out.length(), 0);
  // Fields beyond the record or wider than eight bytes are not read.
  ZQDecimal d(5L);
  EXPECT_EQ(d.GetBinary(Unhex("", "01 02"), 1, 2, false, true), 0);
  EXPECT_TRUE(d == ZQDecimal());
  EXPECT_EQ(d.GetBinary(Unhex("", "01 02 03 04 05 06 07 08 09"), 0, 9, false, true), 0);
}

// Fields of the records GnuCOBOL writes: the picture, the usage of the
// stored field and its size.
struct Field { int digits, scale; bool is_signed; const char* usage; int length; };
const Field kFields[] = {
    {7, 0, true, "COMP-3", 4},  {7, 0, false, "COMP-3", 4}, {7, 2, true, "COMP-3", 4},
    {18, 0, true, "COMP-3", 10}, {18, 0, true, "BINARY", 8}, {4, 0, true, "COMP-5", 2},
    {9, 0, false, "BINARY", 4},
};

// A program that moves each line of display fields to the stored fields.
std::string CobolProgram() {
  std::string in, out;
  int n = 0;
  for (const Field& f : kFields) {
    std::string pic = std::string(f.is_signed ? "S" : "") + "9(" +
                      std::to_string(f.digits - f.scale) + ")" +
                      (f.scale > 0 ? "V9(" + std::to_string(f.scale) + ")" : "");
    std::string name = "  05 F" + std::to_string(++n) + " PIC " + pic;
    in += name + (f.is_signed ? " SIGN LEADING SEPARATE.\n" : ".\n");
    out += name + " " + f.usage + ".\n";
  }
  return "IDENTIFICATION DIVISION.\nPROGRAM-ID. GENNUM.\n"
         "ENVIRONMENT DIVISION.\nINPUT-OUTPUT SECTION.\nFILE-CONTROL.\n"
         "  SELECT IN-FILE ASSIGN TO \"in.txt\" ORGANIZATION IS LINE SEQUENTIAL.\n"
         "  SELECT OUT-FILE ASSIGN TO \"out.bin\" ORGANIZATION IS SEQUENTIAL.\n"
         "DATA DIVISION.\nFILE SECTION.\nFD IN-FILE.\n01 IN-REC.\n" + in +
         "FD OUT-FILE.\n01 OUT-REC.\n" + out +
         "PROCEDURE DIVISION.\n  OPEN INPUT IN-FILE OUTPUT OUT-FILE\n"
         "  PERFORM UNTIL 1 = 0\n"
         "    READ IN-FILE AT END CLOSE IN-FILE OUT-FILE STOP RUN END-READ\n"
         "    MOVE CORRESPONDING IN-REC TO OUT-REC\n    WRITE OUT-REC\n"
         "  END-PERFORM.\n";
}

// A random value of the field as its decimal text and its input picture.
void RandomValue(std::mt19937_64& rng, Field const& f, std::string* text, std::string* picture) {
  std::string digits(f.digits, '0');
  int used = 1 + static_cast<int>(rng() % f.digits);
  for (int i = f.digits - used; i < f.digits; ++i) digits[i] = static_cast<char>('0' + rng() % 10);
  // No negative zeros: COBOL and ZQDecimal both store those as positive.
  bool negative = f.is_signed && rng() % 2 && digits.find_first_not_of('0') != std::string::npos;
  *picture = f.is_signed ? (negative ? "-" : "+") + digits : digits;
  std::string whole = digits.substr(0, f.digits - f.scale);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
  *text = (negative ? "-" : "") + whole;
  if (f.scale > 0) *text += "." + digits.substr(f.digits - f.scale);
}

TEST(DecimalCobol, PackedAndBinaryFieldsMatch) {
  if (std::system("command -v cobc >/dev/null 2>&1") != 0) GTEST_SKIP() << "no cobc";
  char dir_template[] = "/tmp/zq_decimal_cobol_XXXXXX";
  ASSERT_NE(mkdtemp(dir_template), nullptr);
  std::string dir = dir_template;
  std::ofstream(dir + "/gen.cob") << CobolProgram();
  std::mt19937_64 rng(42);
  const int kRecords = 500;
  std::vector<std::string> values;
  {
    std::ofstream in(dir + "/in.txt");
    for (int r = 0; r < kRecords; ++r) {
      for (const Field& f : kFields) {
        std::string text, picture;
        RandomValue(rng, f, &text, &picture);
        values.push_back(text);
        in << picture;
      }
      in << '\n';
    }
  }
  std::string cmd = "cd " + dir + " && cobc -free -x -o gen gen.cob && ./gen";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  std::ifstream bin(dir + "/out.bin", std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(bin)), std::istreambuf_iterator<char>());
  std::system(("rm -rf " + dir).c_str());
  ASSERT_EQ(all.size(), kRecords * 36u);
  ZQString file(all.data(), static_cast<int>(all.size()));
  for (int offset = 0, i = 0; i < kRecords * 7; offset += kFields[i++ % 7].length) {
    const Field& f = kFields[i % 7];
    ZQDecimal want(values[i].c_str()), got;
    ZQString written;
    if (std::string(f.usage) == "COMP-3") {
      ZQDType t = Packed(f.length, static_cast<short>(f.scale), 2, 2, f.is_signed);
      ASSERT_EQ(got.GetPack(file, offset, t), f.length);
      want.PutPack(written, t);
    } else {
      // COMP-5 is stored in the machine's order, BINARY most significant first.
      bool msb = std::string(f.usage) != "COMP-5";
      ASSERT_EQ(got.GetBinary(file, offset, f.length, msb, f.is_signed), f.length);
      want.PutBinary(written, f.length, msb);
    }
    ASSERT_EQ(Text(got), Text(want)) << "field " << i;
    ASSERT_EQ(Hex(written), Hex(file, offset, f.length)) << values[i];
  }
}

}  // namespace
