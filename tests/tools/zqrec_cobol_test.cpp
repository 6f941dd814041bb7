// zqrec against GnuCOBOL: records written by a COBOL program decode to the
// values it was given, records zqrec encodes are byte for byte what COBOL
// writes and read back in COBOL as the same values.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "tools/zqrec_helpers.h"

namespace zqrec_test {
namespace {

const std::string kCobolDir = std::string(ZQ_SOURCE_DIR) + "/tests/tools/cobol";

// "-123.45" for the integer -12345 with two implied decimal places.
std::string Scaled(int64_t v, int scale) {
  std::string digits = std::to_string(v < 0 ? -v : v);
  if (scale > 0) {
    if (static_cast<int>(digits.size()) <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
    digits.insert(digits.size() - scale, ".");
  }
  return (v < 0 ? "-" : "") + digits;
}

// Rows of values for fields.cbl's record, in zqrec's (and the COBOL
// program's edited) form: limits, zeros, small and random values.
std::string MakeValues(int rows) {
  std::mt19937_64 rng(20261122);
  auto pick = [&](int64_t lo, int64_t hi) {
    return std::uniform_int_distribution<int64_t>(lo, hi)(rng);
  };
  const int64_t p15 = 999999999999999LL, z10 = 9999999999LL, c11 = 99999999999LL;
  std::string out;
  for (int i = 0; i < rows; ++i) {
    int64_t v[7];
    if (i == 0) {
      const int64_t hi[7] = {p15, 99999, z10, 99999, c11, 9999, 999999999};
      std::copy(hi, hi + 7, v);
    } else if (i == 1) {
      const int64_t lo[7] = {-p15, 0, -z10, -99999, -c11, -9999, -999999999};
      std::copy(lo, lo + 7, v);
    } else if (i == 2) {
      for (int64_t& x : v) x = 0;
    } else if (i == 3) {
      const int64_t small[7] = {-1, 1, -1, -1, -1, -1, -1};
      std::copy(small, small + 7, v);
    } else {
      v[0] = pick(-p15, p15);
      v[1] = pick(0, 99999);
      v[2] = pick(-z10, z10);
      v[3] = pick(-99999, 99999);
      v[4] = pick(-c11, c11);
      v[5] = pick(-9999, 9999);
      v[6] = pick(-999999999, 999999999);
    }
    const int scales[7] = {2, 0, 3, 0, 2, 0, 0};
    for (int k = 0; k < 7; ++k) out += (k ? "," : "") + Scaled(v[k], scales[k]);
    out += "\n";
  }
  return out;
}

std::string WithoutCr(std::string s) {
  std::string t;
  for (char c : s) {
    if (c != '\r') t += c;
  }
  return t;
}

// Compares two texts line by line and reports the first difference only.
void ExpectSameLines(const std::string& got, const std::string& want) {
  std::istringstream g(got), w(want);
  std::string a, b;
  for (int line = 1;; ++line) {
    const bool more_g = static_cast<bool>(std::getline(g, a));
    const bool more_w = static_cast<bool>(std::getline(w, b));
    if (!more_g && !more_w) return;
    if (more_g != more_w || a != b) {
      ADD_FAILURE() << "line " << line << ": got \"" << (more_g ? a : "<end>") << "\", want \""
                    << (more_w ? b : "<end>") << "\"";
      return;
    }
  }
}

class ZqrecCobol : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!HaveProgram("cobc")) GTEST_SKIP() << "GnuCOBOL (cobc) is not installed";
    Result r = Shell("cd " + Quote(dir_.path()) + " && cobc -x -o fields " +
                         Quote(kCobolDir + "/fields.cbl"), dir_);
    ASSERT_EQ(r.code, 0) << r.err;
    layout_ = kCobolDir + "/fields.layout";
  }
  TempDir dir_;
  std::string layout_;
};

TEST_F(ZqrecCobol, DecodesWhatCobolWrote) {
  const std::string values = MakeValues(300);
  WriteFile(dir_ / "values.txt", values);
  Result w = Shell(Quote(dir_ / "fields") + " write " + Quote(dir_ / "values.txt") + " " +
                       Quote(dir_ / "cobol.dat"), dir_);
  ASSERT_EQ(w.code, 0) << w.err;
  ASSERT_EQ(ReadFile(dir_ / "cobol.dat").size(), 300u * 41);
  Result dec = Zqrec({"decode", layout_, dir_ / "cobol.dat", "-q"}, dir_);
  ASSERT_EQ(dec.code, 0) << dec.err;
  ExpectSameLines(WithoutCr(dec.out), "pack,upack,zone,zsep,comp,comp5,bin4\n" + values);
  Result ver = Zqrec({"verify", layout_, dir_ / "cobol.dat", "-q"}, dir_);
  EXPECT_EQ(ver.code, 0) << ver.err;
}

TEST_F(ZqrecCobol, EncodesWhatCobolWritesAndReads) {
  const std::string values = MakeValues(300);
  WriteFile(dir_ / "values.txt", values);
  WriteFile(dir_ / "values.csv", "pack,upack,zone,zsep,comp,comp5,bin4\n" + values);
  Result enc = Zqrec({"encode", layout_, dir_ / "values.csv", "-o", dir_ / "zqrec.dat", "-q"}, dir_);
  ASSERT_EQ(enc.code, 0) << enc.err;
  Result w = Shell(Quote(dir_ / "fields") + " write " + Quote(dir_ / "values.txt") + " " +
                       Quote(dir_ / "cobol.dat"), dir_);
  ASSERT_EQ(w.code, 0) << w.err;
  EXPECT_TRUE(ReadFile(dir_ / "zqrec.dat") == ReadFile(dir_ / "cobol.dat"))
      << "zqrec's records differ from COBOL's";
  Result r = Shell(Quote(dir_ / "fields") + " read " + Quote(dir_ / "zqrec.dat") + " " +
                       Quote(dir_ / "back.txt"), dir_);
  ASSERT_EQ(r.code, 0) << r.err;
  ExpectSameLines(ReadFile(dir_ / "back.txt"), values);
}

TEST_F(ZqrecCobol, PayrollSampleIsWhatItsProgramWrites) {
  Result c = Shell("cd " + Quote(dir_.path()) + " && cobc -x -o payroll " +
                       Quote(Example("payroll.cbl")) + " && ./payroll " + Quote(dir_ / "p.dat"), dir_);
  ASSERT_EQ(c.code, 0) << c.err;
  EXPECT_EQ(ReadFile(dir_ / "p.dat"), ReadFile(Example("payroll.dat")));
}

}  // namespace
}  // namespace zqrec_test
