// Packed, zoned, binary and IEEE codecs against GnuCOBOL: COBOL writes
// fields that our readers must read, and reads fields that our writers wrote.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "types/cobol_oracle.h"
#include "types/codec_binary.h"
#include "types/codec_decimal.h"

namespace {

using namespace zq::codec;  // NOLINT: the codecs are the subject here
using zq_test::CobolOracle;

enum Kind { kPack, kZone, kBinary };

// The fields of one record of fields.cbl, in order.
const struct Field {
  const char* name;
  Kind kind;
  bool is_signed;
  long sign_pos;   // packed and zoned
  bool msb_first;  // binary
} kFields[] = {
    {"COMP-3 signed", kPack, true, kSignTrailingSeparate, false},
    {"COMP-3 unsigned", kPack, false, kSignTrailingSeparate, false},
    {"DISPLAY trailing", kZone, true, kSignTrailing, false},
    {"DISPLAY leading", kZone, true, kSignLeading, false},
    {"DISPLAY trailing separate", kZone, true, kSignTrailingSeparate, false},
    {"DISPLAY leading separate", kZone, true, kSignLeadingSeparate, false},
    {"DISPLAY unsigned", kZone, false, kSignTrailing, false},
    {"BINARY signed", kBinary, true, 0, true},
    {"BINARY unsigned", kBinary, false, 0, true},
    {"COMP-5 signed", kBinary, true, 0, false},
    {"COMP-5 unsigned", kBinary, false, 0, false},
};
constexpr size_t kFieldCount = sizeof(kFields) / sizeof(kFields[0]);

// Whole number of a read field, up to the first non-digit as atof reads it
// (an unsigned packed field ends in its 0xF nibble); false without digits.
bool TextToInt(const NumberText& t, int64_t* v) {
  int64_t r = 0;
  size_t i = 0;
  for (; i < t.text.size() && t.text[i] >= '0' && t.text[i] <= '9'; ++i) {
    r = r * 10 + (t.text[i] - '0');
  }
  *v = t.neg ? -r : r;
  return i > 0;
}

// Values of at most `digits` digits with random magnitudes, signs and
// lengths, and the extremes.
std::vector<int64_t> MakeValues(int digits, std::mt19937_64& rng) {
  int64_t max = 1;
  for (int i = 0; i < digits; ++i) max *= 10;
  std::vector<int64_t> v = {0, max - 1, -(max - 1), 1, -1};
  for (int i = 0; i < 150; ++i) {
    int64_t lim = 1;
    for (int j = 1 + static_cast<int>(rng() % digits); j > 0; --j) lim *= 10;
    const int64_t x = static_cast<int64_t>(rng() % static_cast<uint64_t>(lim));
    v.push_back((rng() & 1) ? -x : x);
  }
  return v;
}

class CobolFields : public ::testing::TestWithParam<const char*> {};

// For every digit count 1 to 18 and every usage: COBOL's bytes read back as
// the value, and our bytes read by COBOL give the value.
TEST_P(CobolFields, EveryUsageEveryLengthBothWays) {
  if (!CobolOracle::Available()) GTEST_SKIP() << "cobc not installed";
  const std::string sign_mode = GetParam();
  const long style = sign_mode == "EBCDIC" ? kStyleIbm : kStyleMfCobol;
  std::mt19937_64 rng(20261122 + sign_mode.size());
  CobolOracle cob;
  for (int nd = 1; nd <= 18; ++nd) {
    SCOPED_TRACE("digits " + std::to_string(nd));
    const std::string exe = "fields" + std::to_string(nd);
    ASSERT_TRUE(cob.Compile("fields.cbl", exe, "-fbinary-size=1--8 -fsign=" + sign_mode, "(ND)",
                            "(" + std::to_string(nd) + ")"));
    const std::vector<int> len = cob.Layout(exe);
    ASSERT_EQ(len.size(), kFieldCount);
    int rec_len = 0;
    for (int l : len) rec_len += l;
    const std::vector<int64_t> values = MakeValues(nd, rng);
    const std::string bin = cob.Encode(exe, values, nd, "fields.bin");
    ASSERT_EQ(bin.size(), values.size() * rec_len);

    std::string ours;
    std::vector<int64_t> wants;
    const uint8_t* p = reinterpret_cast<const uint8_t*>(bin.data());
    for (int64_t value : values) {
      for (size_t f = 0; f < kFieldCount; p += len[f], ++f) {
        const Field& fd = kFields[f];
        const int64_t want = fd.is_signed || value >= 0 ? value : -value;
        wants.push_back(want);
        SCOPED_TRACE(std::string(fd.name) + " value " + std::to_string(want));
        DecimalFormat fmt;
        fmt.length = len[f];
        fmt.is_signed = fd.is_signed;
        fmt.sign_pos = fd.sign_pos;
        fmt.sign_style = style;
        // Our readers on COBOL's bytes, and our writers from magnitude and sign.
        int64_t got = 0;
        NumberText t;
        const uint64_t mag = want < 0 ? 0 - static_cast<uint64_t>(want) : want;
        const std::string digits = std::to_string(mag);
        uint8_t out[32] = {0};
        if (fd.kind == kBinary) {
          got = GetBinary(p, len[f], fd.msb_first, fd.is_signed);
          PutBinary(out, want, len[f], fd.msb_first);
        } else {
          ASSERT_TRUE(fd.kind == kPack ? GetPack(p, fmt, &t) : GetZone(p, fmt, &t, nullptr));
          ASSERT_TRUE(TextToInt(t, &got)) << t.text.data();
          using PutText = void (*)(uint8_t*, const DecimalFormat&, const char*, size_t, bool);
          const PutText put = fd.kind == kPack ? PutText(PutPack) : PutText(PutZone);
          put(out, fmt, digits.data(), digits.size(), want < 0);
        }
        EXPECT_EQ(got, want);
        // The writers match COBOL byte for byte, except that a positive
        // leading-separate field carries no "+" (a digit stays there).
        if (!(fd.sign_pos == kSignLeadingSeparate && want >= 0 && fd.kind == kZone)) {
          EXPECT_EQ(std::string(reinterpret_cast<char*>(out), len[f]),
                    std::string(reinterpret_cast<const char*>(p), len[f]));
        }
        ours.append(reinterpret_cast<char*>(out), len[f]);
      }
    }
    // COBOL's reading of our bytes.
    EXPECT_EQ(cob.Decode(exe, "fields.bin", ours), wants);
  }
}

INSTANTIATE_TEST_SUITE_P(SignModes, CobolFields, ::testing::Values("ASCII", "EBCDIC"));

// COMP-1 and COMP-2 are IEEE single and double in this machine's order; the
// raw reader and writer must agree with COBOL on exact dyadic values.
TEST(CobolFloats, Comp1AndComp2BothWays) {
  if (!CobolOracle::Available()) GTEST_SKIP() << "cobc not installed";
  CobolOracle cob;
  ASSERT_TRUE(cob.Compile("floats.cbl", "floats", ""));
  std::mt19937_64 rng(7);
  std::vector<double> values = {0.0, 1.0, -1.5, 0.015625, 8388607.0};
  for (int i = 0; i < 300; ++i) {
    values.push_back(static_cast<double>(static_cast<int64_t>(rng() % (1 << 24)) - (1 << 23)) / 64);
  }
  std::vector<int64_t> micros, wants;
  for (double v : values) micros.push_back(static_cast<int64_t>(v * 1e6));
  const std::string bin = cob.Encode("floats", micros, 15, "floats.bin");
  ASSERT_EQ(bin.size(), values.size() * 12);
  std::string ours;
  for (size_t i = 0; i < values.size(); ++i) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(bin.data()) + 12 * i;
    float f;
    double d;
    GetRaw(p, 4, false, &f);
    GetRaw(p + 4, 8, false, &d);
    EXPECT_EQ(f, static_cast<float>(values[i]));
    EXPECT_EQ(d, values[i]);
    uint8_t out[12];
    const float fv = static_cast<float>(values[i]);
    PutRaw(out, &fv, 4, false);
    PutRaw(out + 4, &values[i], 8, false);
    ours.append(reinterpret_cast<char*>(out), 12);
    wants.insert(wants.end(), 2, micros[i]);
  }
  EXPECT_EQ(cob.Decode("floats", "floats.bin", ours), wants);
}

}  // namespace
