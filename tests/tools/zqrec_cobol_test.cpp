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
// program's edited) form: the limits, zeros, small and random values.
std::string MakeValues(int rows) {
  std::mt19937_64 rng(20261122);
  const int64_t p15 = 999999999999999LL, z10 = 9999999999LL, c11 = 99999999999LL;
  const int64_t hi[7] = {p15, 99999, z10, 99999, c11, 9999, 999999999};
  const int64_t lo[7] = {-p15, 0, -z10, -99999, -c11, -9999, -999999999};
  const int scales[7] = {2, 0, 3, 0, 2, 0, 0};
  std::string out;
  for (int i = 0; i < rows; ++i) {
    for (int k = 0; k < 7; ++k) {
      int64_t v = i == 0 ? hi[k] : i == 1 ? lo[k] : i == 2 ? 0 : i == 3 ? (k == 1 ? 1 : -1)
                  : std::uniform_int_distribution<int64_t>(lo[k], hi[k])(rng);
      out += (k ? "," : "") + Scaled(v, scales[k]);
    }
    out += "\n";
  }
  return out;
}

// Compares two texts line by line, ignoring carriage returns at the ends of
// the lines of `got`, and reports the first difference only.
void ExpectSameLines(const std::string& got, const std::string& want) {
  std::istringstream g(got), w(want);
  std::string a, b;
  for (int line = 1;; ++line) {
    const bool more_g = static_cast<bool>(std::getline(g, a));
    const bool more_w = static_cast<bool>(std::getline(w, b));
    if (!a.empty() && a.back() == '\r') a.pop_back();
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
  }
  // Runs the COBOL program: "write" values to records or "read" them back.
  void Cobol(const char* mode, const std::string& in, const std::string& out) {
    Result r =
        Shell(Quote(dir_ / "fields") + " " + mode + " " + Quote(in) + " " + Quote(out), dir_);
    ASSERT_EQ(r.code, 0) << r.err;
  }
  TempDir dir_;
  const std::string layout_ = kCobolDir + "/fields.layout";
};

TEST_F(ZqrecCobol, AgreesWithCobolBothWays) {
  const std::string values = MakeValues(300);
  WriteFile(dir_ / "values.txt", values);
  WriteFile(dir_ / "values.csv", "pack,upack,zone,zsep,comp,comp5,bin4\n" + values);
  Cobol("write", dir_ / "values.txt", dir_ / "cobol.dat");
  ASSERT_EQ(ReadFile(dir_ / "cobol.dat").size(), 300u * 41);
  // What COBOL wrote decodes to its values and verifies.
  ExpectSameLines(Ok({"decode", layout_, dir_ / "cobol.dat", "-q"}, dir_),
                  "pack,upack,zone,zsep,comp,comp5,bin4\n" + values);
  Ok({"verify", layout_, dir_ / "cobol.dat", "-q"}, dir_);
  // What zqrec encodes is COBOL's bytes, and COBOL reads the values back.
  Ok({"encode", layout_, dir_ / "values.csv", "-o", dir_ / "zqrec.dat", "-q"}, dir_);
  EXPECT_TRUE(ReadFile(dir_ / "zqrec.dat") == ReadFile(dir_ / "cobol.dat"))
      << "zqrec's records differ from COBOL's";
  Cobol("read", dir_ / "zqrec.dat", dir_ / "back.txt");
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
