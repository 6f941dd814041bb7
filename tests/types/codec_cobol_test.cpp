// Codecs, and descriptors with two implied decimals, against GnuCOBOL fields.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cinttypes>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "types/codec_binary.h"
#include "types/codec_decimal.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

using namespace zq::codec;  // NOLINT: the codecs are the subject here

enum Kind { kPack, kZone, kBinary, kFloat };

// The fields of one record of fields.cbl, in order, with the engine's type.
const struct Field {
  const char* name;
  Kind kind;
  bool is_signed;
  long sign_pos;   // packed and zoned
  bool msb_first;  // binary
  DATATYPE type;
} kFields[] = {
    {"COMP-3 signed", kPack, true, kSignTrailingSeparate, false, ZQDT_COMP3},
    {"COMP-3 unsigned", kPack, false, kSignTrailingSeparate, false, ZQDT_COMP3},
    {"DISPLAY trailing", kZone, true, kSignTrailing, false, ZQDT_ZONED},
    {"DISPLAY leading", kZone, true, kSignLeading, false, ZQDT_DISPLAY_SIGN_LEADING},
    {"DISPLAY trailing separate", kZone, true, kSignTrailingSeparate, false, ZQDT_ZONED},
    {"DISPLAY leading separate", kZone, true, kSignLeadingSeparate, false,
     ZQDT_DISPLAY_SIGN_LEADING_SEP},
    {"DISPLAY unsigned", kZone, false, kSignTrailing, false, ZQDT_ZONED},
    {"BINARY signed", kBinary, true, 0, true, ZQDT_COMP},
    {"BINARY unsigned", kBinary, false, 0, true, ZQDT_COMP},
    {"COMP-5 signed", kBinary, true, 0, false, ZQDT_COMP5},
    {"COMP-5 unsigned", kBinary, false, 0, false, ZQDT_COMP5},
    {"COMP-1", kFloat, true, 0, false, ZQDT_COMP1}, {"COMP-2", kFloat, true, 0, false, ZQDT_COMP2},
};
constexpr size_t kFieldCount = sizeof(kFields) / sizeof(kFields[0]);
constexpr int64_t kUnchecked = INT64_MIN;

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteFile(const std::string& path, const std::string& data) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << data;
}

// The output of shell command `cmd`.
std::string Shell(const std::string& cmd) {
  std::string out;
  if (FILE* f = popen(cmd.c_str(), "r")) {
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof(buf), f)) > 0;) out.append(buf, n);
    pclose(f);
  }
  return out;
}

// The engine reads COBOL's `field` as `want` hundredths and writes `ours`.
void CheckEngine(const Field& fd, long style, int nd, const std::string& field, int64_t want,
                 const std::string& ours) {
  // Unsigned Comp fields other than 3 bytes read as signed (deliberate).
  const size_t len = field.size();
  if (fd.kind == kBinary && len != 3 && len < 8 && want >> (8 * len - 1) != 0) return;
  ZQDType t(fd.type);
  if (fd.kind != kBinary) t.SignPos(fd.sign_pos);
  t.MaxLength(32);
  t.Length(static_cast<long>(len));
  t.MinScale(-18);
  t.MaxScale(18);
  t.Scale(2);
  t.Signed(fd.is_signed);
  t.SignStyle(style);
  const ZQString rec(field.data(), static_cast<int>(len));
  char text[40];
  snprintf(text, sizeof(text), "%s%" PRId64 ".%02" PRId64, want < 0 ? "-" : "",
           std::abs(want) / 100, std::abs(want) % 100);
  ZQDecimal x;
  ASSERT_EQ(t.Input(rec, 0, x), rec.length());
  EXPECT_EQ(static_cast<double>(x - ZQDecimal(text)), 0.0) << static_cast<double>(x);
  ZQString fromx, fromd;
  t.Output(fromx, ZQDecimal(text));
  EXPECT_EQ(std::string(fromx.c_str(), fromx.length()), ours);
  if (nd > 12) return;  // beyond the digits a double holds in hundredths
  double d = 0;
  ASSERT_EQ(t.Input(rec, 0, d), rec.length());
  EXPECT_NEAR(d, want / 100.0, 1e-9 * std::fabs(want / 100.0));
  if (fd.kind == kBinary) return;  // binary storage truncates a scaled double
  t.Output(fromd, want / 100.0);
  EXPECT_EQ(std::string(fromd.c_str(), fromd.length()), ours);
}

class CobolFields : public ::testing::TestWithParam<const char*> {};

// Every usage of 1 to 18 digits both ways; floats while exact (7 and 15 digits).
TEST_P(CobolFields, EveryUsageEveryLengthBothWays) {
  if (system("command -v cobc >/dev/null 2>&1") != 0) GTEST_SKIP() << "cobc not installed";
  const std::string sign_mode = GetParam();
  const long style = sign_mode == "EBCDIC" ? kStyleIbm : kStyleMfCobol;
  std::mt19937_64 rng(20261122 + sign_mode.size());
  char tmpl[] = "/tmp/zq_cobol_XXXXXX";
  ASSERT_NE(mkdtemp(tmpl), nullptr);
  const std::string dir = tmpl, run = "cd " + dir + " && ./fields ";
  struct Cleanup {
    std::string dir;
    ~Cleanup() { Shell("rm -rf " + dir); }
  } cleanup{dir};
  for (int nd = 1; nd <= 18; ++nd) {
    SCOPED_TRACE("digits " + std::to_string(nd));
    std::istringstream layout(Shell("cd " + dir + " && sed 's/(ND)/(" + std::to_string(nd) +
                                    ")/g' " ZQ_COBOL_DIR "/fields.cbl >fields.cbl && cobc -x -free " +
                                    "-fbinary-size=1--8 -fsign=" + sign_mode + " fields.cbl && " +
                                    "./fields layout"));
    std::vector<int> len;
    int rec_len = 0;
    for (int n; layout >> n; rec_len += n) len.push_back(n);
    ASSERT_EQ(len.size(), kFieldCount);
    // The extremes, then random magnitudes, signs and lengths.
    int64_t max = 1;
    for (int i = 0; i < nd; ++i) max *= 10;
    std::vector<int64_t> values = {0, max - 1, -(max - 1), 1, -1};
    std::string lines;
    for (int i = 0; i < 100; ++i) {
      int64_t lim = 1;
      for (int j = 1 + static_cast<int>(rng() % nd); j > 0; --j) lim *= 10;
      const int64_t x = static_cast<int64_t>(rng() % static_cast<uint64_t>(lim));
      values.push_back((rng() & 1) ? -x : x);
    }
    for (int64_t v : values) {
      char buf[40];
      snprintf(buf, sizeof(buf), "%c%0*" PRId64 "\n", v < 0 ? '-' : '+', nd, v < 0 ? -v : v);
      lines += buf;
    }
    WriteFile(dir + "/values.txt", lines);
    Shell(run + "encode");
    const std::string bin = ReadFile(dir + "/fields.bin");
    ASSERT_EQ(bin.size(), values.size() * rec_len);

    std::string ours;
    std::vector<int64_t> wants;
    const uint8_t* p = reinterpret_cast<const uint8_t*>(bin.data());
    for (int64_t value : values) {
      for (size_t f = 0; f < kFieldCount; p += len[f], ++f) {
        const Field& fd = kFields[f];
        const int64_t want = fd.is_signed || value >= 0 ? value : -value;
        const std::string cobol(reinterpret_cast<const char*>(p), len[f]);
        SCOPED_TRACE(std::string(fd.name) + " value " + std::to_string(want));
        uint8_t out[32] = {0};
        int64_t got = 0;
        if (fd.kind == kFloat) {
          if (nd > (len[f] == 4 ? 7 : 15)) {
            ours += cobol;
            wants.push_back(kUnchecked);
            continue;
          }
          float fv;
          double dv;
          GetRaw(p, len[f], false, len[f] == 4 ? static_cast<void*>(&fv) : &dv);
          got = len[f] == 4 ? static_cast<int64_t>(fv) : static_cast<int64_t>(dv);
          fv = static_cast<float>(want);
          dv = static_cast<double>(want);
          PutRaw(out, len[f] == 4 ? static_cast<const void*>(&fv) : &dv, len[f], false);
        } else if (fd.kind == kBinary) {
          got = GetBinary(p, len[f], fd.msb_first, fd.is_signed);
          PutBinary(out, want, len[f], fd.msb_first);
        } else {
          DecimalFormat fmt;
          fmt.length = len[f];
          fmt.is_signed = fd.is_signed;
          fmt.sign_pos = fd.sign_pos;
          fmt.sign_style = style;
          // The digits up to the first non-digit, as atof reads them (an
          // unsigned packed field ends in its 0xF nibble).
          NumberText t;
          ASSERT_TRUE(fd.kind == kPack ? GetPack(p, fmt, &t) : GetZone(p, fmt, &t, nullptr));
          ASSERT_TRUE(isdigit(static_cast<unsigned char>(t.text.data()[0]))) << t.text.data();
          got = strtoll(t.text.data(), nullptr, 10) * (t.neg ? -1 : 1);
          const std::string digits = std::to_string(std::abs(want));
          using PutText = void (*)(uint8_t*, const DecimalFormat&, const char*, size_t, bool);
          (fd.kind == kPack ? PutText(PutPack) : PutText(PutZone))(out, fmt, digits.data(),
                                                                   digits.size(), want < 0);
        }
        EXPECT_EQ(got, want);
        // The writers match COBOL byte for byte, except that a positive
        // leading-separate field carries no "+" (a digit stays there).
        const std::string mine(reinterpret_cast<char*>(out), len[f]);
        if (!(fd.sign_pos == kSignLeadingSeparate && want >= 0 && fd.kind == kZone)) {
          EXPECT_EQ(mine, cobol);
        }
        if (fd.kind != kFloat) CheckEngine(fd, style, nd, cobol, want, mine);
        ours += mine;
        wants.push_back(want);
      }
    }
    // COBOL's reading of our bytes.
    WriteFile(dir + "/fields.bin", ours);
    Shell(run + "decode");
    std::istringstream decoded(ReadFile(dir + "/decoded.txt"));
    for (size_t i = 0; i < wants.size(); ++i) {
      std::string w;
      ASSERT_TRUE(decoded >> w);
      if (wants[i] != kUnchecked) {
        EXPECT_EQ(strtoll(w.c_str(), nullptr, 10), wants[i]) << kFields[i % kFieldCount].name;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(SignModes, CobolFields, ::testing::Values("ASCII", "EBCDIC"));

}  // namespace
