// End-to-end tests of zqrec: round trips, record framing, CSV quoting, GnuCOBOL
// and iconv as oracles, every error path family and the help texts.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "services/test_util.h"

namespace {

using zqtest::ReadFile;
using zqtest::TempDir;

struct Result {
  int code = -1;
  std::string out, err;
};

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string Example(const std::string& name) {
  return std::string(ZQ_SOURCE_DIR) + "/examples/records/" + name;
}

// Runs a shell command line with standard output and error captured.
Result Shell(const std::string& cmd, const TempDir& dir) {
  const std::string out = dir.File(".stdout"), err = dir.File(".stderr");
  const int status = std::system((cmd + " >" + Quote(out) + " 2>" + Quote(err)).c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

Result Zqrec(const std::vector<std::string>& args, const TempDir& dir) {
  std::string cmd = Quote(ZQREC_BIN);
  for (const std::string& a : args) cmd += " " + Quote(a);
  return Shell(cmd + " </dev/null", dir);
}

// Runs zqrec, expects success and gives its standard output.
std::string Ok(const std::vector<std::string>& args, const TempDir& dir) {
  Result r = Zqrec(args, dir);
  EXPECT_EQ(r.code, 0) << r.err;
  return r.out;
}

size_t CountLines(const std::string& s) { return std::count(s.begin(), s.end(), '\n'); }

std::string Be16(size_t v) {
  return std::string{static_cast<char>(v >> 8), static_cast<char>(v & 0xFF)};
}

// Frames fixed records with record descriptor words.
std::string WithRdw(const std::string& data, size_t reclen) {
  std::string out;
  for (size_t off = 0; off < data.size(); off += reclen) {
    out += Be16(reclen + 4) + std::string(2, '\0') + data.substr(off, reclen);
  }
  return out;
}

TEST(ZqrecRoundTrip, EveryExampleDecodesEncodesAndVerifies) {
  // The expected CSVs were made by Python's struct and codecs, not by the library.
  for (const std::string name : {"payroll", "mixed", "text"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    const std::string layout = Example(name + ".layout"), data_path = Example(name + ".dat");
    const std::string data = ReadFile(data_path);
    Result dec = Zqrec({"decode", layout, data_path, "-q"}, dir);
    ASSERT_EQ(dec.code, 0) << dec.err;
    EXPECT_EQ(dec.err, "");
    if (name != "payroll") {
      EXPECT_EQ(dec.out, ReadFile(Example(name + ".expected.csv")));
    }
    const std::string json = Ok({"decode", layout, data_path, "--format=jsonl", "-q"}, dir);
    EXPECT_EQ(json.compare(0, 2, "{\""), 0) << json;
    const size_t records = CountLines(json);  // one line per record
    ASSERT_GT(records, 0u);
    ASSERT_EQ(data.size() % records, 0u);
    const size_t reclen = data.size() / records;

    const std::string csv = dir.Write("in.csv", dec.out);
    Result enc = Zqrec({"encode", layout, csv, "-o", dir.File("out.dat")}, dir);
    EXPECT_EQ(ReadFile(dir.File("out.dat")), data) << "encode(decode(x)) differs from x";
    EXPECT_NE(enc.err.find("zqrec: encoded"), std::string::npos) << "no summary: " << enc.err;
    Result ver = Zqrec({"verify", layout, data_path}, dir);
    EXPECT_EQ(ver.code, 0) << ver.err;
    EXPECT_NE(ver.err.find("verified " + std::to_string(records) + " records"), std::string::npos)
        << ver.err;

    // Variable-length records framed here decode to the same rows, and
    // zqrec's own framing matches them byte for byte.
    EXPECT_EQ(Ok({"decode", layout, dir.Write("v.dat", WithRdw(data, reclen)), "--rdw", "-q"}, dir),
              dec.out);
    Ok({"encode", "--rdw", layout, csv, "-o", dir.File("rdw.dat"), "-q"}, dir);
    EXPECT_EQ(ReadFile(dir.File("rdw.dat")), WithRdw(data, reclen));

    // Blocked: two records a block at most.
    Ok({"encode", layout, csv, "--bdw", "--block-size", std::to_string(2 * (reclen + 4) + 4), "-o",
        dir.File("bdw.dat"), "-q"}, dir);
    const std::string bdw = ReadFile(dir.File("bdw.dat"));
    EXPECT_EQ(bdw.substr(0, 4),
              Be16(records > 1 ? 2 * (reclen + 4) + 4 : reclen + 8) + std::string(2, '\0'));
    EXPECT_EQ(bdw.size(), records * (reclen + 4) + 4 * ((records + 1) / 2));
    EXPECT_EQ(Ok({"decode", layout, dir.File("bdw.dat"), "--bdw", "-q"}, dir), dec.out);
  }
}

TEST(ZqrecRoundTrip, CsvValuesAndQuotingComeBack) {
  // Extreme and empty values of further types, and CSV quoting of commas,
  // quotes and line breaks: decode(encode(x)) == x.
  const std::pair<const char*, const char*> cases[] = {
      {"cstr 'Null-terminated C string;length=8'\nc3 'Comp-3;length=4;scale=1'\n"
       "u64 '64-bit binary;order=MSB;signed=False'\ns64 '64-bit binary'\nbin 'Binary;length=4'\n"
       "dt 'Date;picture=\\'dd.mm.yyyy\\''\ntm 'Time'\nneg 'Comp;length=2;scale=-2'\n",
       "cstr,c3,u64,s64,bin,dt,tm,neg\r\nabc,-123.4,18446744073709551615,-9223372036854775808,"
       "DEADBEEF,29.02.2000,23:59:59,-3276800\r\na b c,0.0,0,9223372036854775807,00000000,,,0\r\n"},
      {"id 'Short'\nnote 'Text;length=24'\n",
       "id,note\r\n1,plain\r\n2,\"a, b\"\r\n3,\"say \"\"x\"\"\"\r\n4,\"two\nlines\"\r\n"
       "5,\"cr\r\nlf\"\r\n6,\r\n"},
  };
  TempDir dir;
  const std::string l = dir.File("l.layout"), in = dir.File("in.csv"), r = dir.File("r.dat");
  for (const auto& [layout, csv] : cases) {
    dir.Write("l.layout", layout);
    dir.Write("in.csv", csv);
    Ok({"encode", l, in, "-o", r, "-q"}, dir);
    EXPECT_EQ(Ok({"decode", l, r, "-q"}, dir), csv);
    Ok({"verify", l, r, "-q"}, dir);
  }
  EXPECT_EQ(ReadFile(r).size(), 6u * 26);
  const std::string json = Ok({"decode", l, r, "-f", "jsonl", "-q"}, dir);
  for (const char* want :
       {"{\"id\":3,\"note\":\"say \\\"x\\\"\"}\n", "\"two\\nlines\"", "\"cr\\r\\nlf\""}) {
    EXPECT_NE(json.find(want), std::string::npos) << want << " in " << json;
  }
  // A line feed alone also ends a row, and a byte order mark is skipped.
  for (const char* csv : {"id,note\n7,\"x,y\"\n", "\xEF\xBB\xBFid,note\r\n7,\"x,y\"\r\n"}) {
    dir.Write("in.csv", csv);
    Ok({"encode", l, in, "-o", r, "-q"}, dir);
    EXPECT_EQ(Ok({"decode", l, r, "-q"}, dir), "id,note\r\n7,\"x,y\"\r\n");
  }
}

TEST(ZqrecOracles, TextMatchesIconv) {
  TempDir dir;
  const std::string text = "Grüße, «Zürich» ½ £5";
  Ok({"encode", dir.Write("l.layout", "t 'Text;length=30' encoding=cp037\n"),
      dir.Write("in.csv", "t\r\n\"" + text + "\"\r\n"), "-o", dir.File("out.dat"), "-q"}, dir);
  Result ic = Shell("iconv -f UTF-8 -t IBM037 " + Quote(dir.Write("plain.txt", text)), dir);
  ASSERT_EQ(ic.code, 0) << ic.err;
  EXPECT_EQ(ReadFile(dir.File("out.dat")), ic.out + std::string(30 - ic.out.size(), '\x40'));
}

TEST(ZqrecOracles, AgreesWithCobolBothWays) {
  if (std::system("command -v cobc >/dev/null") != 0) GTEST_SKIP() << "GnuCOBOL is not installed";
  TempDir dir;
  const std::string cobol = std::string(ZQ_SOURCE_DIR) + "/tests/tools/cobol/fields";
  Result cc = Shell("cd " + Quote(dir.path) + " && cobc -x -o fields " + Quote(cobol + ".cbl"),
                    dir);
  ASSERT_EQ(cc.code, 0) << cc.err;
  // fields.cbl's seven fields: the limits, zeros, plus and minus one, then random values.
  const int64_t hi[7] = {999999999999999, 99999, 9999999999, 99999, 99999999999, 9999, 999999999};
  const int scales[7] = {2, 0, 3, 0, 2, 0, 0};
  const int kRows = 100;
  std::mt19937_64 rng(20261122);
  std::string values;
  for (int i = 0; i < kRows; ++i) {
    for (int k = 0; k < 7; ++k) {
      const int64_t lo = k == 1 ? 0 : -hi[k];
      const int64_t v = i == 0 ? hi[k] : i == 1 ? lo : i == 2 ? 0 : i == 3 ? (k == 1 ? 1 : -1)
                        : std::uniform_int_distribution<int64_t>(lo, hi[k])(rng);
      std::string digits = std::to_string(v < 0 ? -v : v);
      digits.insert(0, std::max(0, scales[k] + 1 - static_cast<int>(digits.size())), '0');
      if (scales[k] > 0) digits.insert(digits.size() - scales[k], ".");
      values += (k ? "," : "") + std::string(v < 0 ? "-" : "") + digits;
    }
    values += "\n";
  }
  Result c = Shell(Quote(dir.File("fields")) + " " + std::to_string(kRows) + " " +
                   Quote(dir.File("cobol.dat")) + " <" + Quote(dir.Write("in.txt", values)), dir);
  ASSERT_EQ(c.code, 0) << c.err;
  // What COBOL wrote decodes to its values and verifies; zqrec encodes them to COBOL's bytes.
  const std::string csv = "pack,upack,zone,zsep,comp,comp5,bin4\n" + values;
  std::string decoded = Ok({"decode", cobol + ".layout", dir.File("cobol.dat"), "-q"}, dir);
  decoded.erase(std::remove(decoded.begin(), decoded.end(), '\r'), decoded.end());
  EXPECT_EQ(decoded, csv);
  Ok({"verify", cobol + ".layout", dir.File("cobol.dat"), "-q"}, dir);
  Ok({"encode", cobol + ".layout", dir.Write("values.csv", csv), "-o", dir.File("z.dat"), "-q"},
     dir);
  EXPECT_TRUE(ReadFile(dir.File("z.dat")) == ReadFile(dir.File("cobol.dat")))
      << "zqrec's records differ from COBOL's";
}

// One failing run: files written to the scratch folder first, then zqrec
// with `args`, where a leading "@/" names a file in that folder.
using Files = std::vector<std::pair<std::string, std::string>>;
struct ErrorCase {
  Files files;
  std::vector<std::string> args;
  int code;
  std::vector<std::string> messages;  // substrings of standard error
  int stdout_lines = 0;               // -1: not checked
};

const std::string kLayout = Example("payroll.layout");
const std::string kData = Example("payroll.dat");

// The payroll sample with `bytes` written over it at `at`, as "p.dat".
Files Patched(size_t at, const std::string& bytes) {
  std::string data = ReadFile(kData);
  data.replace(at, bytes.size(), bytes);
  return {{"p.dat", data}};
}

ErrorCase BadLayout(const char* layout, const char* message) {
  return {{{"bad.layout", layout}}, {"decode", "@/bad.layout", kData}, 3, {message}};
}

// `row` after the payroll header plus `extra` columns, which zqrec refuses with 3.
ErrorCase BadCsv(const std::string& row, const char* message, const char* extra = "") {
  const std::string csv = "emp-id,name,salary,bonus,adjust,dept,balance,units" + std::string(extra);
  return {{{"in.csv", csv + "\r\n" + row + "\r\n"}},
          {"encode", kLayout, "@/in.csv", "-o", "@/o.dat"}, *extra ? 3 : 2, {message}};
}

TEST(ZqrecErrors, EachErrorPathGivesItsMessageAndExitCode) {
  const std::string payroll = ReadFile(kData);
  std::string crlf, ascii = ReadFile(Example("text.dat"));
  for (size_t i = 0; i < payroll.size(); i += 64) crlf += payroll.substr(i, 64) + "\r\n";
  std::replace(ascii.begin(), ascii.end(), '\x40', ' ');
  const std::vector<std::string> decode_p = {"decode", kLayout, "@/p.dat"};
  const std::vector<ErrorCase> cases = {
      // Record data: framing, bad field bytes, likely causes, verify.
      {{{"p.dat", payroll + std::string(10, '0')}}, decode_p, 2, {"is 266 bytes long, which is not "
       "a multiple of the record length 64: 4 whole records and 10 bytes left over"}, 5},
      {Patched(64 + 24, "\x1A"), decode_p, 2,
       {"record 2, byte offset 88: field \"salary\" (Packed decimal, record bytes 24-28): invalid "
        "digit nibble in packed decimal; bytes 1A 00 00 00 1D", "stopped after 1 bad records"}, 2},
      {Patched(64 + 24, "\x1A"), {"decode", kLayout, "@/p.dat", "--max-errors=3"}, 2,
       {"record 2, byte offset 88", "decoded 3 records (24 fields), 1 bad records"}, 4},
      {{{"p.dat", crlf}}, {"decode", kLayout, "@/p.dat", "-m", "9"}, 2,
       {"without its 4 CR/LF pairs the file would hold exactly 4 records: it looks as if it went "
        "through a text-mode transfer"}, -1},
      {{{"t.dat", ascii}}, {"decode", Example("text.layout"), "@/t.dat"}, 0,
       {"text fields declared in EBCDIC hold", "translated from EBCDIC to ASCII"}, 6},
      {{}, {"decode", kLayout, kData, "--rdw"}, 2,
       {"byte offset 0: invalid record descriptor word 00 00 03 E9"}, 1},
      {{{"p.dat", Be16(14) + std::string(2, '\0') + payroll.substr(0, 10)}},
       {"decode", kLayout, "@/p.dat", "--rdw"}, 2,
       {"record 1 at byte offset 4 is short: 10 bytes, but the layout's fields take 64"}, 1},
      {Patched(28, "\x5F"),  // F sign nibble: positive, written back as C
       {"verify", kLayout, "@/p.dat", "--max-errors=5"}, 2,
       {"record 1, byte offset 24: field \"salary\" (Packed decimal, record bytes 24-28) does not "
        "come back identical: stored 00 05 25 07 5F, decoded as \"5250.75\", encoded again as 00 "
        "05 25 07 5C"}},
      // Layouts.
      BadLayout("# x\nsalary   'Pakced decimal;length=5'\n",
                "bad.layout:2:11: expected a type name (see \"zqrec types\"), found \"Pakced"),
      BadLayout("a 'Packed decimal;lenght=5'\n", "bad.layout:1:19: unknown property \"lenght\""),
      BadLayout("a 'Text;length=3\n", "bad.layout:1:17: expected a closing single quote"),
      BadLayout("record-length 3\na 'Integer'\n",
                "bad.layout:1:1: the record length 3 is shorter than the fields, which take 4"),
      BadLayout("a 'Text;length=3' encoding=klingon\n", "1:28: unknown encoding \"klingon\""),
      BadLayout("a 'Structure'\n", "the type \"Structure\" is not supported by zqrec"),
      // Command lines and files.
      {{}, {"decode", "--bogus", "a", "b"}, 3, {"decode: unknown option --bogus", "decode --help"}},
      {{}, {"decode", "a", "b", "-o"}, 3, {"option -o needs an argument FILE"}},
      {{}, {"decrypt"}, 3, {"unknown command \"decrypt\""}},
      {{}, {"describe", "'Packed decimal;scale=two'"}, 3, {"column 23: expected a number for"}},
      {{}, {"decode", kLayout, "@/none"}, 4, {"none: cannot open: No such file or directory"}},
      {{}, {"decode", kLayout, kData, "-o", "@/no/dir/out.csv"}, 4, {"out.csv: cannot create"}},
      {{}, {"decode", kLayout, kData, "-o", "/dev/full"}, 4, {"/dev/full: write error: No space"}},
      // CSV input to encode.
      BadCsv("8,\"open", "line 2: a quoted field is never closed"),
      BadCsv("1,x,12345678.00,0,0,0,0,0",
             "2: field \"salary\" (Packed decimal): \"12345678.00\" does not fit in the field"),
      BadCsv("1,x,0,1e3,0,0,0,0", "field \"bonus\" (Zoned decimal): \"1e3\" is not a decimal"),
      BadCsv("1,abcdefghijklmnopqrstu,0,0,0,0,0,0", "takes 21 bytes in ISO-8859-1, more than"),
      BadCsv("1,\xe2\x82\xac,0,0,0,0,0,0", "the character U+20AC has no form in ISO-8859-1"),
      BadCsv("1,x,0", "line 2 has 3 fields, the header has 8"),
      BadCsv("1,x,0,0,0,0,0,0,0", "line 1: the column \"extra\" is not a field of", ",extra"),
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.messages[0]);
    TempDir dir;
    for (const auto& [name, data] : c.files) dir.Write(name, data);
    std::vector<std::string> args = c.args;
    for (std::string& a : args) {
      if (a.compare(0, 2, "@/") == 0) a = dir.File(a.substr(2));
    }
    Result r = Zqrec(args, dir);
    EXPECT_EQ(r.code, c.code) << r.err;
    for (const std::string& m : c.messages) {
      EXPECT_NE(r.err.find(m), std::string::npos) << "missing \"" << m << "\" in:\n" << r.err;
    }
    EXPECT_TRUE(c.stdout_lines < 0 || CountLines(r.out) == size_t(c.stdout_lines)) << r.out;
  }
}

TEST(ZqrecCommands, HelpMatchesTheManualPageAndDescribeNormalises) {
  TempDir dir;
  const std::string man = ReadFile(ZQREC_MAN);
  ASSERT_FALSE(man.empty()) << "the manual page was not generated";
  const std::regex long_option("--[a-z][a-z-]+");
  for (const char* cmd : {"decode", "encode", "verify", "describe", "types"}) {
    SCOPED_TRACE(cmd);
    const std::string help = Ok({cmd, "--help"}, dir);
    EXPECT_EQ(help.rfind(std::string("Usage: zqrec ") + cmd, 0), 0u) << help;
    EXPECT_NE(man.find(std::string(".SS \"zqrec ") + cmd), std::string::npos);
    for (std::sregex_iterator it(help.begin(), help.end(), long_option), end; it != end; ++it) {
      const std::string roff = std::regex_replace(it->str(), std::regex("-"), "\\-");
      EXPECT_NE(man.find(roff), std::string::npos) << it->str() << " is not in the manual page";
    }
  }
  EXPECT_NE(Ok({"--help"}, dir).find("record-length N"), std::string::npos);
  EXPECT_NE(man.find("record\\-length N"), std::string::npos);
  const std::string types = Ok({"types"}, dir);
  EXPECT_EQ(CountLines(types), 74u);  // a heading and 73 types
  EXPECT_NE(types.find("Packed decimal"), std::string::npos);
  // The normalised string describes the same field: it normalises to itself.
  const std::string d1 = Ok({"describe", "'Packed decimal;length=6;scale=2;signstyle=ibm'"}, dir);
  const size_t b = d1.find('\''), e = d1.find('\n');
  ASSERT_NE(b, std::string::npos);
  const std::string norm = d1.substr(b, e - b);
  EXPECT_NE(norm.find("length=6"), std::string::npos) << norm;
  EXPECT_EQ(Ok({"describe", norm}, dir), d1);
  EXPECT_NE(d1.find("display length:"), std::string::npos);
}

}  // namespace
