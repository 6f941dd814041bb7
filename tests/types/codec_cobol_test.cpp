// Packed, zoned, binary and IEEE codecs against GnuCOBOL: COBOL writes
// fields that our readers must read, and reads fields that our writers wrote.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "types/cobol_oracle.h"
#include "types/codec_binary.h"
#include "types/codec_decimal.h"

namespace {

using zq::codec::DecimalFormat;
using zq::codec::NumberText;
using zq_test::CobolOracle;

enum Kind { kPack, kZone, kBinary };

// The fields of one record of fields.cbl, in order.
struct Field {
  const char* name;
  Kind kind;
  bool is_signed;
  long sign_pos;   // packed and zoned
  bool msb_first;  // binary
};

const Field kFields[] = {
    {"COMP-3 signed", kPack, true, zq::codec::kSignTrailingSeparate, false},
    {"COMP-3 unsigned", kPack, false, zq::codec::kSignTrailingSeparate, false},
    {"DISPLAY trailing", kZone, true, zq::codec::kSignTrailing, false},
    {"DISPLAY leading", kZone, true, zq::codec::kSignLeading, false},
    {"DISPLAY trailing separate", kZone, true, zq::codec::kSignTrailingSeparate, false},
    {"DISPLAY leading separate", kZone, true, zq::codec::kSignLeadingSeparate, false},
    {"DISPLAY unsigned", kZone, false, zq::codec::kSignTrailing, false},
    {"BINARY signed", kBinary, true, 0, true},
    {"BINARY unsigned", kBinary, false, 0, true},
    {"COMP-5 signed", kBinary, true, 0, false},
    {"COMP-5 unsigned", kBinary, false, 0, false},
};
constexpr int kFieldCount = sizeof(kFields) / sizeof(kFields[0]);

// Whole number of a read field, up to the first non-digit as atof reads it
// (an unsigned packed field ends in its 0xF nibble); false without digits.
bool TextToInt(const NumberText& t, int64_t* v) {
  int64_t r = 0;
  size_t i = 0;
  for (; i < t.text.size() && t.text[i] >= '0' && t.text[i] <= '9'; ++i) {
    r = r * 10 + (t.text[i] - '0');
  }
  if (i == 0) return false;
  *v = t.neg ? -r : r;
  return true;
}

// Values of at most `digits` digits with random magnitudes, signs and
// lengths, and the extremes.
std::vector<int64_t> MakeValues(int digits, std::mt19937_64& rng) {
  int64_t max = 1;
  for (int i = 0; i < digits; ++i) max *= 10;
  std::vector<int64_t> v = {0, max - 1, -(max - 1), 1, -1};
  for (int i = 0; i < 150; ++i) {
    const int k = 1 + static_cast<int>(rng() % digits);
    int64_t lim = 1;
    for (int j = 0; j < k; ++j) lim *= 10;
    int64_t x = static_cast<int64_t>(rng() % static_cast<uint64_t>(lim));
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
  const long style = sign_mode == "EBCDIC" ? zq::codec::kStyleIbm : zq::codec::kStyleMfCobol;
  std::mt19937_64 rng(20261122 + sign_mode.size());
  CobolOracle cob;
  for (int nd = 1; nd <= 18; ++nd) {
    SCOPED_TRACE("digits " + std::to_string(nd));
    const std::string exe = "fields" + std::to_string(nd);
    ASSERT_TRUE(cob.Compile("fields.cbl", exe, "-fbinary-size=1--8 -fsign=" + sign_mode, "(ND)",
                            "(" + std::to_string(nd) + ")"));
    std::istringstream layout(cob.Run(exe, "layout"));
    int len[kFieldCount];
    int rec_len = 0;
    for (int f = 0; f < kFieldCount; ++f) {
      ASSERT_TRUE(layout >> len[f]);
      rec_len += len[f];
    }
    const std::vector<int64_t> values = MakeValues(nd, rng);
    std::string lines;
    for (int64_t v : values) {
      char buf[32];
      snprintf(buf, sizeof(buf), "%c%0*" PRId64 "\n", v < 0 ? '-' : '+', nd, v < 0 ? -v : v);
      lines += buf;
    }
    cob.Write("values.txt", lines);
    cob.Run(exe, "encode");
    const std::string bin = cob.Read("fields.bin");
    ASSERT_EQ(bin.size(), values.size() * rec_len);

    // Our readers on COBOL's bytes.
    std::string ours;
    for (size_t r = 0; r < values.size(); ++r) {
      const uint8_t* p = reinterpret_cast<const uint8_t*>(bin.data()) + r * rec_len;
      for (int f = 0; f < kFieldCount; ++f) {
        const Field& fd = kFields[f];
        const int64_t want = fd.is_signed || values[r] >= 0 ? values[r] : -values[r];
        SCOPED_TRACE(std::string(fd.name) + " value " + std::to_string(want));
        DecimalFormat fmt;
        fmt.length = len[f];
        fmt.is_signed = fd.is_signed;
        fmt.sign_pos = fd.sign_pos;
        fmt.sign_style = style;
        int64_t got = 0;
        NumberText t;
        switch (fd.kind) {
          case kPack:
            ASSERT_TRUE(zq::codec::GetPack(p, fmt, &t));
            ASSERT_TRUE(TextToInt(t, &got)) << t.text.data();
            break;
          case kZone:
            ASSERT_TRUE(zq::codec::GetZone(p, fmt, &t, nullptr));
            ASSERT_TRUE(TextToInt(t, &got)) << t.text.data();
            break;
          case kBinary:
            got = zq::codec::GetBinary(p, len[f], fd.msb_first, fd.is_signed);
            break;
        }
        EXPECT_EQ(got, want);

        // Our writers, from the magnitude and sign.
        const uint64_t mag = want < 0 ? 0 - static_cast<uint64_t>(want) : want;
        const std::string digits = std::to_string(mag);
        uint8_t out[32] = {0};
        switch (fd.kind) {
          case kPack:
            zq::codec::PutPack(out, fmt, digits.data(), digits.size(), want < 0);
            break;
          case kZone:
            zq::codec::PutZone(out, fmt, digits.data(), digits.size(), want < 0);
            break;
          case kBinary:
            zq::codec::PutBinary(out, want, len[f], fd.msb_first);
            break;
        }
        // The writers match COBOL byte for byte, except that a positive
        // leading-separate field carries no "+" (a digit stays there).
        if (!(fd.sign_pos == zq::codec::kSignLeadingSeparate && want >= 0 && fd.kind == kZone)) {
          EXPECT_EQ(std::string(reinterpret_cast<char*>(out), len[f]),
                    std::string(reinterpret_cast<const char*>(p), len[f]));
        }
        ours.append(reinterpret_cast<char*>(out), len[f]);
        p += len[f];
      }
      p -= rec_len;
    }

    // COBOL's reading of our bytes.
    cob.Write("fields.bin", ours);
    cob.Run(exe, "decode");
    std::istringstream decoded(cob.Read("decoded.txt"));
    for (size_t r = 0; r < values.size(); ++r) {
      for (int f = 0; f < kFieldCount; ++f) {
        const int64_t want = kFields[f].is_signed || values[r] >= 0 ? values[r] : -values[r];
        std::string word;
        ASSERT_TRUE(decoded >> word);
        EXPECT_EQ(strtoll(word.c_str(), nullptr, 10), want)
            << kFields[f].name << " as read by COBOL: " << word;
      }
    }
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
    const int64_t k = static_cast<int64_t>(rng() % (1 << 24)) - (1 << 23);
    values.push_back(static_cast<double>(k) / 64.0);
  }
  std::string lines;
  for (double v : values) {
    char buf[40];
    const int64_t micro = static_cast<int64_t>(v * 1e6);
    snprintf(buf, sizeof(buf), "%c%015" PRId64 "\n", micro < 0 ? '-' : '+',
             micro < 0 ? -micro : micro);
    lines += buf;
  }
  cob.Write("values.txt", lines);
  cob.Run("floats", "encode");
  const std::string bin = cob.Read("floats.bin");
  ASSERT_EQ(bin.size(), values.size() * 12);
  std::string ours;
  for (size_t i = 0; i < values.size(); ++i) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(bin.data()) + 12 * i;
    float f;
    double d;
    zq::codec::GetRaw(p, 4, false, &f);
    zq::codec::GetRaw(p + 4, 8, false, &d);
    EXPECT_EQ(f, static_cast<float>(values[i]));
    EXPECT_EQ(d, values[i]);
    uint8_t out[12];
    const float fv = static_cast<float>(values[i]);
    zq::codec::PutRaw(out, &fv, 4, false);
    zq::codec::PutRaw(out + 4, &values[i], 8, false);
    ours.append(reinterpret_cast<char*>(out), 12);
  }
  cob.Write("floats.bin", ours);
  cob.Run("floats", "decode");
  std::istringstream decoded(cob.Read("decoded.txt"));
  for (double v : values) {
    std::string w1, w2;
    ASSERT_TRUE(decoded >> w1 >> w2);
    EXPECT_EQ(strtoll(w1.c_str(), nullptr, 10), static_cast<int64_t>(v * 1e6));
    EXPECT_EQ(strtoll(w2.c_str(), nullptr, 10), static_cast<int64_t>(v * 1e6));
  }
}

}  // namespace
