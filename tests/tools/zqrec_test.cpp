// End-to-end tests of zqrec: round trips over the shipped examples, record
// framing, every error path with its message and exit code, CSV quoting,
// and the help texts with the manual page made from them.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <regex>

#include "tools/zqrec_helpers.h"

namespace zqrec_test {
namespace {

struct Sample {
  const char* name;
  const char* expected;  // CSV written independently of zqrec, or null
};

const Sample kSamples[] = {
    {"payroll", nullptr}, {"mixed", "mixed.expected.csv"}, {"text", "text.expected.csv"}};

size_t CountLines(const std::string& s) {
  size_t n = 0;
  for (char c : s) n += c == '\n';
  return n;
}

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
  for (const Sample& s : kSamples) {
    SCOPED_TRACE(s.name);
    TempDir dir;
    const std::string layout = Example(std::string(s.name) + ".layout");
    const std::string data_path = Example(std::string(s.name) + ".dat");
    const std::string data = ReadFile(data_path);
    Result dec = Zqrec({"decode", layout, data_path, "-q"}, dir);
    ASSERT_EQ(dec.code, 0) << dec.err;
    EXPECT_EQ(dec.err, "");
    if (s.expected != nullptr) {
      EXPECT_EQ(dec.out, ReadFile(Example(s.expected)));
    }
    Result json = Zqrec({"decode", layout, data_path, "--format=jsonl", "-q"}, dir);
    EXPECT_EQ(json.code, 0) << json.err;
    EXPECT_EQ(json.out.compare(0, 2, "{\""), 0) << json.out;
    const size_t records = CountLines(json.out);  // one line per record
    ASSERT_GT(records, 0u);
    ASSERT_EQ(data.size() % records, 0u);
    const size_t reclen = data.size() / records;

    WriteFile(dir / "in.csv", dec.out);
    Result enc = Zqrec({"encode", layout, dir / "in.csv", "-o", dir / "out.dat", "-q"}, dir);
    ASSERT_EQ(enc.code, 0) << enc.err;
    EXPECT_EQ(ReadFile(dir / "out.dat"), data) << "encode(decode(x)) differs from x";

    Result ver = Zqrec({"verify", layout, data_path}, dir);
    EXPECT_EQ(ver.code, 0) << ver.err;
    EXPECT_NE(ver.err.find("verified " + std::to_string(records) + " records"), std::string::npos)
        << ver.err;

    // Variable-length records: a file framed here decodes to the same rows,
    // and zqrec's own framing matches it byte for byte.
    WriteFile(dir / "rdw.dat", WithRdw(data, reclen));
    Result rdw = Zqrec({"decode", layout, dir / "rdw.dat", "--rdw", "-q"}, dir);
    EXPECT_EQ(rdw.code, 0) << rdw.err;
    EXPECT_EQ(rdw.out, dec.out);
    Result rdw_enc = Zqrec({"encode", "--rdw", layout, dir / "in.csv", "-o", dir / "rdw2.dat", "-q"}, dir);
    EXPECT_EQ(rdw_enc.code, 0) << rdw_enc.err;
    EXPECT_EQ(ReadFile(dir / "rdw2.dat"), WithRdw(data, reclen));

    // Blocked: two records a block at most.
    const std::string block_size = std::to_string(2 * (reclen + 4) + 4);
    Result bdw_enc = Zqrec({"encode", layout, dir / "in.csv", "--bdw", "--block-size", block_size,
                            "-o", dir / "bdw.dat", "-q"}, dir);
    ASSERT_EQ(bdw_enc.code, 0) << bdw_enc.err;
    const std::string bdw = ReadFile(dir / "bdw.dat");
    ASSERT_GE(bdw.size(), 8u);
    EXPECT_EQ(bdw.substr(0, 4), Be16(records > 1 ? 2 * (reclen + 4) + 4 : reclen + 8) + std::string(2, '\0'));
    EXPECT_EQ(bdw.size(), records * (reclen + 4) + 4 * ((records + 1) / 2));
    Result bdw_dec = Zqrec({"decode", layout, dir / "bdw.dat", "--bdw", "-q"}, dir);
    EXPECT_EQ(bdw_dec.code, 0) << bdw_dec.err;
    EXPECT_EQ(bdw_dec.out, dec.out);
  }
}

TEST(ZqrecRoundTrip, ExamplesEncodeToTheIndependentlyWrittenBytes) {
  // The samples were built from the formats' layouts by Python's struct and
  // codecs (EBCDIC cp037, Shift_JIS), not by the library.
  for (const char* name : {"mixed", "text"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    Result enc = Zqrec({"encode", Example(std::string(name) + ".layout"),
                        Example(std::string(name) + ".expected.csv"), "-o", dir / "out.dat"}, dir);
    ASSERT_EQ(enc.code, 0) << enc.err;
    EXPECT_EQ(ReadFile(dir / "out.dat"), ReadFile(Example(std::string(name) + ".dat")));
    EXPECT_NE(enc.err.find("zqrec: encoded"), std::string::npos) << "no summary line: " << enc.err;
  }
}

TEST(ZqrecRoundTrip, DecodeOfEncodeGivesEveryValueBack) {
  // Extreme and empty values of further types: decode(encode(x)) == x.
  TempDir dir;
  WriteFile(dir / "l.layout",
            "cstr  'Null-terminated C string;length=8'\n"
            "pas1  'Pascal string (1 byte);length=8'\n"
            "c3    'Comp-3;length=4;scale=1'\n"
            "ubcd  'BCD;length=4;signed=False'\n"
            "dtsep 'Display sign trailing separate;length=6;scale=2'\n"
            "sad   'Sales Ally date'\n"
            "tmin  'Time (minutes past midnight)'\n"
            "t80   '80-bit Intel floating-point'\n"
            "msd   'Microsoft BASIC double'\n"
            "u64   '64-bit binary;order=MSB;signed=False'\n"
            "s64   '64-bit binary'\n"
            "tec   '32-bit TEC binary'\n"
            "acc   'AccPac 41-bit binary'\n"
            "bin   'Binary;length=4'\n"
            "dt    'Date;picture=\\'dd.mm.yyyy\\''\n"
            "tm    'Time'\n"
            "cx3   'Comp-X;length=3;signed=False'\n"
            "neg   'Comp;length=2;scale=-2'\n"
            "b8    '8-bit binary;signed=False'\n");
  const std::string csv =
      "cstr,pas1,c3,ubcd,dtsep,sad,tmin,t80,msd,u64,s64,tec,acc,bin,dt,tm,cx3,neg,b8\r\n"
      "abc,xyz,-123.4,1234,-12.34,2020-02-29,13:45:00,3.25,1.5,18446744073709551615,"
      "-9223372036854775808,-2147483647,-300,DEADBEEF,29.02.2000,23:59:59,16777215,-3276800,255\r\n"
      "a b c,,0.0,0,0.00,,,0,-2.5,0,9223372036854775807,0,0,00000000,,,0,0,0\r\n";
  WriteFile(dir / "in.csv", csv);
  Result enc = Zqrec({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "r.dat", "-q"}, dir);
  ASSERT_EQ(enc.code, 0) << enc.err;
  Result dec = Zqrec({"decode", dir / "l.layout", dir / "r.dat", "-q"}, dir);
  ASSERT_EQ(dec.code, 0) << dec.err;
  EXPECT_EQ(dec.out, csv);
  EXPECT_EQ(Zqrec({"verify", dir / "l.layout", dir / "r.dat", "-q"}, dir).code, 0);
}

TEST(ZqrecRoundTrip, TextMatchesIconv) {
  if (!HaveProgram("iconv")) GTEST_SKIP() << "iconv is not installed";
  TempDir dir;
  const std::string text = "Grüße, «Zürich» ½ £5";
  WriteFile(dir / "l.layout", "t 'Text;length=30' encoding=cp037\n");
  WriteFile(dir / "in.csv", "t\r\n\"" + text + "\"\r\n");
  Result enc = Zqrec({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "out.dat", "-q"}, dir);
  ASSERT_EQ(enc.code, 0) << enc.err;
  WriteFile(dir / "plain.txt", text);
  Result ic = Shell("iconv -f UTF-8 -t IBM037 " + Quote(dir / "plain.txt"), dir);
  ASSERT_EQ(ic.code, 0) << ic.err;
  std::string expected = ic.out;
  expected.append(30 - expected.size(), '\x40');
  EXPECT_EQ(ReadFile(dir / "out.dat"), expected);
}

TEST(ZqrecCsv, QuotesCommasQuotesAndLineBreaksAndReadsThemBack) {
  TempDir dir;
  WriteFile(dir / "l.layout", "id 'Short'\nnote 'Text;length=24'\n");
  const std::string csv =
      "id,note\r\n"
      "1,plain\r\n"
      "2,\"a, b\"\r\n"
      "3,\"say \"\"x\"\"\"\r\n"
      "4,\"two\nlines\"\r\n"
      "5,\"cr\r\nlf\"\r\n"
      "6,\r\n";
  WriteFile(dir / "in.csv", csv);
  Result enc = Zqrec({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "r.dat", "-q"}, dir);
  ASSERT_EQ(enc.code, 0) << enc.err;
  EXPECT_EQ(ReadFile(dir / "r.dat").size(), 6u * 26);
  Result dec = Zqrec({"decode", dir / "l.layout", dir / "r.dat", "-q"}, dir);
  ASSERT_EQ(dec.code, 0) << dec.err;
  EXPECT_EQ(dec.out, csv);
  Result json = Zqrec({"decode", dir / "l.layout", dir / "r.dat", "-f", "jsonl", "-q"}, dir);
  ASSERT_EQ(json.code, 0) << json.err;
  EXPECT_NE(json.out.find("{\"id\":3,\"note\":\"say \\\"x\\\"\"}\n"), std::string::npos) << json.out;
  EXPECT_NE(json.out.find("\"two\\nlines\""), std::string::npos) << json.out;
  EXPECT_NE(json.out.find("\"cr\\r\\nlf\""), std::string::npos) << json.out;
  // A line feed alone also ends a row; an unclosed quote is a data error.
  WriteFile(dir / "lf.csv", "id,note\n7,\"x,y\"\n");
  EXPECT_EQ(Zqrec({"encode", dir / "l.layout", dir / "lf.csv", "-o", dir / "lf.dat", "-q"}, dir).code, 0);
  EXPECT_EQ(Zqrec({"decode", dir / "l.layout", dir / "lf.dat", "-q"}, dir).out, "id,note\r\n7,\"x,y\"\r\n");
  WriteFile(dir / "bom.csv", "\xEF\xBB\xBFid,note\r\n9,z\r\n");
  EXPECT_EQ(Zqrec({"encode", dir / "l.layout", dir / "bom.csv", "-o", dir / "bom.dat", "-q"}, dir).code, 0);
  EXPECT_EQ(Zqrec({"decode", dir / "l.layout", dir / "bom.dat", "-q"}, dir).out, "id,note\r\n9,z\r\n");
  WriteFile(dir / "bad.csv", "id,note\n8,\"open\n");
  Result bad = Zqrec({"encode", dir / "l.layout", dir / "bad.csv", "-o", dir / "b.dat"}, dir);
  EXPECT_EQ(bad.code, 2);
  EXPECT_NE(bad.err.find("line 2: a quoted field is never closed"), std::string::npos) << bad.err;
}

struct ErrorCase {
  const char* name;
  std::function<std::vector<std::string>(const TempDir&)> setup;  // returns the arguments
  int code;
  std::vector<std::string> messages;  // substrings of standard error
  int stdout_lines;                   // -1: not checked
};

std::string Payroll() { return ReadFile(Example("payroll.dat")); }
const std::string kPayrollLayout = Example("payroll.layout");

std::vector<std::string> Modified(const TempDir& d, size_t at, const std::string& bytes) {
  std::string data = Payroll();
  data.replace(at, bytes.size(), bytes);
  WriteFile(d / "p.dat", data);
  return {"decode", kPayrollLayout, d / "p.dat"};
}

std::vector<std::string> WithLayout(const TempDir& d, const std::string& layout) {
  WriteFile(d / "bad.layout", layout);
  return {"decode", d / "bad.layout", Example("payroll.dat")};
}

std::vector<std::string> EncodeCsv(const TempDir& d, const std::string& header,
                                   const std::string& row) {
  WriteFile(d / "in.csv", header + "\r\n" + row + "\r\n");
  return {"encode", kPayrollLayout, d / "in.csv", "-o", d / "o.dat"};
}

const char kHeader[] = "emp-id,name,salary,bonus,adjust,dept,balance,units";

TEST(ZqrecErrors, EachErrorPathGivesItsMessageAndExitCode) {
  const std::vector<ErrorCase> cases = {
      {"short last record",
       [](const TempDir& d) {
         WriteFile(d / "p.dat", Payroll() + std::string(10, '0'));
         return std::vector<std::string>{"decode", kPayrollLayout, d / "p.dat"};
       },
       2,
       {"is 266 bytes long, which is not a multiple of the record length 64: 4 whole records "
        "and 10 bytes left over",
        "record 5 at byte offset 256 is short: 10 bytes"},
       5},
      {"bad packed nibble stops at the first error",
       [](const TempDir& d) { return Modified(d, 64 + 24, "\x1A"); },
       2,
       {"record 2, byte offset 88: field \"salary\" (Packed decimal, record bytes 24-28): "
        "invalid digit nibble in packed decimal; bytes 1A 00 00 00 1D",
        "stopped after 1 bad records"},
       2},
      {"max-errors lets the run go on",
       [](const TempDir& d) {
         auto a = Modified(d, 64 + 24, "\x1A");
         a.push_back("--max-errors=3");
         return a;
       },
       2,
       {"record 2, byte offset 88", "decoded 3 records (24 fields), 1 bad records"},
       4},
      {"bad packed sign nibble",
       [](const TempDir& d) { return Modified(d, 28, "\x52"); },
       2,
       {"record 1, byte offset 24: field \"salary\"", "invalid sign nibble", "bytes 00 05 25 07 52"},
       1},
      {"non-digit zoned byte",
       [](const TempDir& d) { return Modified(d, 30, "x"); },
       2,
       {"record 1, byte offset 29: field \"bonus\" (Zoned decimal, record bytes 29-35): non-digit "
        "byte in zoned decimal; bytes 30 78 33 30 30 35 30"},
       1},
      {"bad overpunch",
       [](const TempDir& d) { return Modified(d, 35, "!"); },
       2,
       {"field \"bonus\"", "invalid sign overpunch on the last digit", "bytes 30 30 33 30 30 35 21"},
       1},
      {"missing separate sign",
       [](const TempDir& d) { return Modified(d, 43, "4"); },
       2,
       {"field \"adjust\"", "missing trailing sign", "bytes 30 30 30 31 32 33 34 34"},
       1},
      {"text-mode transfer inserted CR/LF",
       [](const TempDir& d) {
         const std::string p = Payroll();
         std::string t;
         for (size_t i = 0; i < p.size(); i += 64) t += p.substr(i, 64) + "\r\n";
         WriteFile(d / "t.dat", t);
         return std::vector<std::string>{"decode", kPayrollLayout, d / "t.dat", "-m", "9"};
       },
       2,
       {"not a multiple of the record length 64", "without its 4 CR/LF pairs the file would hold "
        "exactly 4 records", "text-mode transfer"},
       -1},
      {"EBCDIC translated to ASCII",
       [](const TempDir& d) {
         std::string t = ReadFile(Example("text.dat"));
         for (char& c : t) {
           if (c == '\x40') c = ' ';
         }
         WriteFile(d / "t.dat", t);
         return std::vector<std::string>{"decode", Example("text.layout"), d / "t.dat"};
       },
       0,
       {"text fields declared in EBCDIC hold", "translated from EBCDIC to ASCII"},
       6},
      {"invalid record descriptor word",
       [](const TempDir&) {
         return std::vector<std::string>{"decode", kPayrollLayout, Example("payroll.dat"), "--rdw"};
       },
       2,
       {"byte offset 0: invalid record descriptor word 00 00 03 E9"},
       1},
      {"short variable-length record",
       [](const TempDir& d) {
         WriteFile(d / "v.dat", Be16(14) + std::string(2, '\0') + Payroll().substr(0, 10));
         return std::vector<std::string>{"decode", kPayrollLayout, d / "v.dat", "--rdw"};
       },
       2,
       {"record 1 at byte offset 4 is short: 10 bytes, but the layout's fields take 64"},
       1},
      {"unknown type name",
       [](const TempDir& d) { return WithLayout(d, "# x\nsalary   'Pakced decimal;length=5'\n"); },
       3,
       {"bad.layout:2:11: expected a type name (see \"zqrec types\"), found \"Pakced decimal\""},
       0},
      {"unknown property",
       [](const TempDir& d) { return WithLayout(d, "a 'Packed decimal;lenght=5'\n"); },
       3,
       {"bad.layout:1:19: unknown property \"lenght\""},
       0},
      {"bad property value",
       [](const TempDir& d) { return WithLayout(d, "a 'Zoned decimal;signstyle=ebm'\n"); },
       3,
       {"bad.layout:1:28: unknown sign style \"ebm\""},
       0},
      {"unclosed property string",
       [](const TempDir& d) { return WithLayout(d, "a 'Text;length=3\n"); },
       3,
       {"bad.layout:1:17: expected a closing single quote"},
       0},
      {"missing property string",
       [](const TempDir& d) { return WithLayout(d, "a\n"); },
       3,
       {"bad.layout:1:2: expected a property string in single quotes"},
       0},
      {"record length shorter than the fields",
       [](const TempDir& d) { return WithLayout(d, "record-length 3\na 'Integer'\n"); },
       3,
       {"bad.layout:1:1: the record length 3 is shorter than the fields, which take 4 bytes"},
       0},
      {"unknown encoding in the layout",
       [](const TempDir& d) { return WithLayout(d, "a 'Text;length=3' encoding=klingon\n"); },
       3,
       {"bad.layout:1:28: unknown encoding \"klingon\""},
       0},
      {"unsupported type",
       [](const TempDir& d) { return WithLayout(d, "a 'Structure'\n"); },
       3,
       {"the type \"Structure\" is not supported by zqrec"},
       0},
      {"unknown option",
       [](const TempDir&) { return std::vector<std::string>{"decode", "--bogus", "a", "b"}; },
       3,
       {"zqrec decode: unknown option --bogus", "zqrec decode --help"},
       0},
      {"ambiguous option",
       [](const TempDir&) { return std::vector<std::string>{"encode", "--b", "a", "b"}; },
       3,
       {"ambiguous option --b"},
       0},
      {"missing option argument",
       [](const TempDir&) { return std::vector<std::string>{"decode", "a", "b", "-o"}; },
       3,
       {"option -o needs an argument FILE"},
       0},
      {"bad format",
       [](const TempDir&) { return std::vector<std::string>{"decode", "a", "b", "-fxml"}; },
       3,
       {"unknown format \"xml\""},
       0},
      {"missing operand",
       [](const TempDir&) { return std::vector<std::string>{"decode", kPayrollLayout}; },
       3,
       {"expected a layout file and an input file"},
       0},
      {"unknown command",
       [](const TempDir&) { return std::vector<std::string>{"decrypt"}; },
       3,
       {"unknown command \"decrypt\""},
       0},
      {"missing input",
       [](const TempDir& d) { return std::vector<std::string>{"decode", kPayrollLayout, d / "none"}; },
       4,
       {"none: cannot open: No such file or directory"},
       0},
      {"missing layout",
       [](const TempDir& d) { return std::vector<std::string>{"verify", d / "none.layout", d / "x"}; },
       4,
       {"none.layout: cannot open the layout"},
       0},
      {"unwritable output",
       [](const TempDir& d) {
         return std::vector<std::string>{"decode", kPayrollLayout, Example("payroll.dat"), "-o",
                                         d / "no/such/dir/out.csv"};
       },
       4,
       {"out.csv: cannot create"},
       0},
      {"full output device",
       [](const TempDir&) {
         return std::vector<std::string>{"decode", kPayrollLayout, Example("payroll.dat"), "-o",
                                         "/dev/full"};
       },
       4,
       {"/dev/full: write error: No space left on device"},
       0},
      {"encode: too many digits",
       [](const TempDir& d) {
         return EncodeCsv(d, kHeader, "1,x,12345678.00,0,0,0,0,0");
       },
       2,
       {"line 2: field \"salary\" (Packed decimal): \"12345678.00\" does not fit in the field"},
       0},
      {"encode: too many decimal places",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,x,1.005,0,0,0,0,0"); },
       2,
       {"\"1.005\" has more decimal places than the field's 2"},
       0},
      {"encode: binary out of range",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,x,0,0,0,32768,0,0"); },
       2,
       {"field \"dept\" (Comp-5): \"32768\" does not fit in the field"},
       0},
      {"encode: not a number",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,x,0,1e3,0,0,0,0"); },
       2,
       {"field \"bonus\" (Zoned decimal): \"1e3\" is not a decimal number"},
       0},
      {"encode: text too long",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,abcdefghijklmnopqrstu,0,0,0,0,0,0"); },
       2,
       {"the text takes 21 bytes in ISO-8859-1, more than the field's 20"},
       0},
      {"encode: character outside the code page",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,\xe2\x82\xac,0,0,0,0,0,0"); },
       2,
       {"the character U+20AC has no form in ISO-8859-1"},
       0},
      {"encode: wrong field count",
       [](const TempDir& d) { return EncodeCsv(d, kHeader, "1,x,0"); },
       2,
       {"line 2 has 3 fields, the header has 8"},
       0},
      {"encode: unknown column",
       [](const TempDir& d) { return EncodeCsv(d, std::string(kHeader) + ",extra", "1,x,0,0,0,0,0,0,0"); },
       3,
       {"line 1: the column \"extra\" is not a field of"},
       0},
      {"encode: missing column",
       [](const TempDir& d) { return EncodeCsv(d, "emp-id,name", "1,x"); },
       3,
       {"line 1: no column for the field \"salary\""},
       0},
      {"verify: a valid field that does not come back identical",
       [](const TempDir& d) {
         auto a = Modified(d, 28, "\x5F");  // F sign nibble: positive, written back as C
         a[0] = "verify";
         a.push_back("--max-errors=5");
         return a;
       },
       2,
       {"record 1, byte offset 24: field \"salary\" (Packed decimal, record bytes 24-28) does not "
        "come back identical: stored 00 05 25 07 5F, decoded as \"5250.75\", encoded again as 00 05 "
        "25 07 5C",
        "verified 3 records (24 fields), 1 records that differ or fail"},
       0},
      {"describe: bad property string",
       [](const TempDir&) {
         return std::vector<std::string>{"describe", "'Packed decimal;scale=two'"};
       },
       3,
       {"column 23: expected a number for \"scale\", found \"two\""},
       0},
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    Result r = Zqrec(c.setup(dir), dir);
    EXPECT_EQ(r.code, c.code) << r.err;
    for (const std::string& m : c.messages) {
      EXPECT_NE(r.err.find(m), std::string::npos) << "missing \"" << m << "\" in:\n" << r.err;
    }
    if (c.stdout_lines >= 0) {
      EXPECT_EQ(static_cast<int>(CountLines(r.out)), c.stdout_lines) << r.out;
    }
  }
}

TEST(ZqrecCommands, HelpForEveryCommandMatchesTheManualPage) {
  TempDir dir;
  const std::string man = ReadFile(ZQREC_MAN);
  ASSERT_FALSE(man.empty()) << "the manual page was not generated";
  const std::regex long_option("--([a-z][a-z-]+)");
  for (const char* cmd : {"decode", "encode", "verify", "describe", "types"}) {
    SCOPED_TRACE(cmd);
    Result r = Zqrec({cmd, "--help"}, dir);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out.compare(0, 13 + std::strlen(cmd), std::string("Usage: zqrec ") + cmd), 0) << r.out;
    EXPECT_NE(man.find(std::string(".SS \"zqrec ") + cmd), std::string::npos);
    for (std::sregex_iterator it(r.out.begin(), r.out.end(), long_option), end; it != end; ++it) {
      const std::string name = (*it)[1];
      std::string roff = "\\-\\-";
      for (char ch : name) roff += ch == '-' ? std::string("\\-") : std::string(1, ch);
      EXPECT_NE(man.find(roff), std::string::npos) << "--" << name << " is not in the manual page";
    }
  }
  Result overview = Zqrec({"--help"}, dir);
  EXPECT_EQ(overview.code, 0);
  EXPECT_NE(overview.out.find("record-length N"), std::string::npos);
  EXPECT_NE(man.find("record\\-length N"), std::string::npos);
}

TEST(ZqrecCommands, TypesAndDescribe) {
  TempDir dir;
  Result types = Zqrec({"types"}, dir);
  ASSERT_EQ(types.code, 0);
  EXPECT_EQ(CountLines(types.out), 74u);  // a heading and 73 types
  EXPECT_NE(types.out.find("Packed decimal"), std::string::npos);
  // The normalised string describes the same field: it normalises to itself.
  Result d1 = Zqrec({"describe", "'Packed decimal;length=6;scale=2;signstyle=ibm'"}, dir);
  ASSERT_EQ(d1.code, 0) << d1.err;
  const size_t b = d1.out.find('\''), e = d1.out.find('\n');
  ASSERT_NE(b, std::string::npos);
  const std::string norm = d1.out.substr(b, e - b);
  EXPECT_NE(norm.find("length=6"), std::string::npos) << norm;
  Result d2 = Zqrec({"describe", norm}, dir);
  ASSERT_EQ(d2.code, 0) << d2.err;
  EXPECT_EQ(d2.out, d1.out);
  EXPECT_NE(d1.out.find("display length:"), std::string::npos);
}

}  // namespace
}  // namespace zqrec_test
