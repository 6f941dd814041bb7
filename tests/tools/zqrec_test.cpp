// End-to-end tests of zqrec: round trips over the shipped examples, record
// framing, every error path with its message and exit code, CSV quoting,
// and the help texts with the manual page made from them.
#include <gtest/gtest.h>

#include <regex>
#include <utility>

#include "tools/zqrec_helpers.h"

namespace zqrec_test {
namespace {

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
  // The expected CSVs and the bytes they stand for were made by Python's
  // struct and codecs (EBCDIC cp037, Shift_JIS), not by the library.
  const std::pair<const char*, const char*> samples[] = {
      {"payroll", nullptr}, {"mixed", "mixed.expected.csv"}, {"text", "text.expected.csv"}};
  for (const auto& [name, expected] : samples) {
    SCOPED_TRACE(name);
    TempDir dir;
    const std::string layout = Example(std::string(name) + ".layout");
    const std::string data_path = Example(std::string(name) + ".dat");
    const std::string data = ReadFile(data_path);
    Result dec = Zqrec({"decode", layout, data_path, "-q"}, dir);
    ASSERT_EQ(dec.code, 0) << dec.err;
    EXPECT_EQ(dec.err, "");
    if (expected != nullptr) {
      EXPECT_EQ(dec.out, ReadFile(Example(expected)));
      Result enc = Zqrec({"encode", layout, Example(expected), "-o", dir / "x.dat"}, dir);
      EXPECT_EQ(ReadFile(dir / "x.dat"), data);
      EXPECT_NE(enc.err.find("zqrec: encoded"), std::string::npos) << "no summary: " << enc.err;
    }
    const std::string json = Ok({"decode", layout, data_path, "--format=jsonl", "-q"}, dir);
    EXPECT_EQ(json.compare(0, 2, "{\""), 0) << json;
    const size_t records = CountLines(json);  // one line per record
    ASSERT_GT(records, 0u);
    ASSERT_EQ(data.size() % records, 0u);
    const size_t reclen = data.size() / records;

    WriteFile(dir / "in.csv", dec.out);
    Ok({"encode", layout, dir / "in.csv", "-o", dir / "out.dat", "-q"}, dir);
    EXPECT_EQ(ReadFile(dir / "out.dat"), data) << "encode(decode(x)) differs from x";
    Result ver = Zqrec({"verify", layout, data_path}, dir);
    EXPECT_EQ(ver.code, 0) << ver.err;
    EXPECT_NE(ver.err.find("verified " + std::to_string(records) + " records"), std::string::npos)
        << ver.err;

    // Variable-length records: a file framed here decodes to the same rows,
    // and zqrec's own framing matches it byte for byte.
    WriteFile(dir / "rdw.dat", WithRdw(data, reclen));
    EXPECT_EQ(Ok({"decode", layout, dir / "rdw.dat", "--rdw", "-q"}, dir), dec.out);
    Ok({"encode", "--rdw", layout, dir / "in.csv", "-o", dir / "rdw2.dat", "-q"}, dir);
    EXPECT_EQ(ReadFile(dir / "rdw2.dat"), WithRdw(data, reclen));

    // Blocked: two records a block at most.
    Ok({"encode", layout, dir / "in.csv", "--bdw", "--block-size",
        std::to_string(2 * (reclen + 4) + 4), "-o", dir / "bdw.dat", "-q"}, dir);
    const std::string bdw = ReadFile(dir / "bdw.dat");
    EXPECT_EQ(bdw.substr(0, 4),
              Be16(records > 1 ? 2 * (reclen + 4) + 4 : reclen + 8) + std::string(2, '\0'));
    EXPECT_EQ(bdw.size(), records * (reclen + 4) + 4 * ((records + 1) / 2));
    EXPECT_EQ(Ok({"decode", layout, dir / "bdw.dat", "--bdw", "-q"}, dir), dec.out);
  }
}

// Encodes `csv` with `layout`, decodes it again, expects the same text and
// gives the encoded bytes.
std::string ExpectCsvRoundTrip(const TempDir& dir, const std::string& layout,
                               const std::string& csv) {
  WriteFile(dir / "l.layout", layout);
  WriteFile(dir / "in.csv", csv);
  Ok({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "r.dat", "-q"}, dir);
  EXPECT_EQ(Ok({"decode", dir / "l.layout", dir / "r.dat", "-q"}, dir), csv);
  Ok({"verify", dir / "l.layout", dir / "r.dat", "-q"}, dir);
  return ReadFile(dir / "r.dat");
}

TEST(ZqrecRoundTrip, DecodeOfEncodeGivesEveryValueBack) {
  // Extreme and empty values of further types: decode(encode(x)) == x.
  TempDir dir;
  ExpectCsvRoundTrip(
      dir,
      "cstr 'Null-terminated C string;length=8'\npas1 'Pascal string (1 byte);length=8'\n"
      "c3 'Comp-3;length=4;scale=1'\nubcd 'BCD;length=4;signed=False'\n"
      "dtsep 'Display sign trailing separate;length=6;scale=2'\nsad 'Sales Ally date'\n"
      "tmin 'Time (minutes past midnight)'\nt80 '80-bit Intel floating-point'\n"
      "msd 'Microsoft BASIC double'\nu64 '64-bit binary;order=MSB;signed=False'\n"
      "s64 '64-bit binary'\ntec '32-bit TEC binary'\nacc 'AccPac 41-bit binary'\n"
      "bin 'Binary;length=4'\ndt 'Date;picture=\\'dd.mm.yyyy\\''\ntm 'Time'\n"
      "cx3 'Comp-X;length=3;signed=False'\nneg 'Comp;length=2;scale=-2'\n"
      "b8 '8-bit binary;signed=False'\n",
      "cstr,pas1,c3,ubcd,dtsep,sad,tmin,t80,msd,u64,s64,tec,acc,bin,dt,tm,cx3,neg,b8\r\n"
      "abc,xyz,-123.4,1234,-12.34,2020-02-29,13:45:00,3.25,1.5,18446744073709551615,"
      "-9223372036854775808,-2147483647,-300,DEADBEEF,29.02.2000,23:59:59,16777215,-3276800,255\r\n"
      "a b c,,0.0,0,0.00,,,0,-2.5,0,9223372036854775807,0,0,00000000,,,0,0,0\r\n");
}

TEST(ZqrecRoundTrip, TextMatchesIconv) {
  if (!HaveProgram("iconv")) GTEST_SKIP() << "iconv is not installed";
  TempDir dir;
  const std::string text = "Grüße, «Zürich» ½ £5";
  WriteFile(dir / "l.layout", "t 'Text;length=30' encoding=cp037\n");
  WriteFile(dir / "in.csv", "t\r\n\"" + text + "\"\r\n");
  Ok({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "out.dat", "-q"}, dir);
  WriteFile(dir / "plain.txt", text);
  Result ic = Shell("iconv -f UTF-8 -t IBM037 " + Quote(dir / "plain.txt"), dir);
  ASSERT_EQ(ic.code, 0) << ic.err;
  EXPECT_EQ(ReadFile(dir / "out.dat"), ic.out + std::string(30 - ic.out.size(), '\x40'));
}

TEST(ZqrecCsv, QuotesCommasQuotesAndLineBreaksAndReadsThemBack) {
  TempDir dir;
  const std::string layout = "id 'Short'\nnote 'Text;length=24'\n";
  EXPECT_EQ(ExpectCsvRoundTrip(dir, layout,
                               "id,note\r\n1,plain\r\n2,\"a, b\"\r\n3,\"say \"\"x\"\"\"\r\n"
                               "4,\"two\nlines\"\r\n5,\"cr\r\nlf\"\r\n6,\r\n").size(),
            6u * 26);
  const std::string json =
      Ok({"decode", dir / "l.layout", dir / "r.dat", "-f", "jsonl", "-q"}, dir);
  for (const char* want : {"{\"id\":3,\"note\":\"say \\\"x\\\"\"}\n", "\"two\\nlines\"",
                           "\"cr\\r\\nlf\""}) {
    EXPECT_NE(json.find(want), std::string::npos) << want << " in " << json;
  }
  // A line feed alone also ends a row, and a byte order mark is skipped.
  for (const char* in : {"id,note\n7,\"x,y\"\n", "\xEF\xBB\xBFid,note\r\n7,\"x,y\"\r\n"}) {
    WriteFile(dir / "in.csv", in);
    Ok({"encode", dir / "l.layout", dir / "in.csv", "-o", dir / "r.dat", "-q"}, dir);
    EXPECT_EQ(Ok({"decode", dir / "l.layout", dir / "r.dat", "-q"}, dir),
              "id,note\r\n7,\"x,y\"\r\n");
  }
}

// One failing run: files written to the scratch folder first, then zqrec
// with `args`, where a leading "@/" names a file in that folder.
using Files = std::vector<std::pair<std::string, std::string>>;
struct ErrorCase {
  const char* name;
  Files files;
  std::vector<std::string> args;
  int code;
  std::vector<std::string> messages;  // substrings of standard error
  int stdout_lines;                   // -1: not checked
};

const std::string kLayout = Example("payroll.layout");
const std::string kData = Example("payroll.dat");
const char kHeader[] = "emp-id,name,salary,bonus,adjust,dept,balance,units";

// The payroll sample with `bytes` written over it at `at`, as "p.dat".
Files Patched(size_t at, const std::string& bytes) {
  std::string data = ReadFile(kData);
  data.replace(at, bytes.size(), bytes);
  return {{"p.dat", data}};
}

ErrorCase BadLayout(const char* name, const char* layout, const char* message) {
  return {name, {{"bad.layout", layout}}, {"decode", "@/bad.layout", kData}, 3, {message}, 0};
}

ErrorCase BadCsv(const char* name, const std::string& header, const std::string& row, int code,
                 const char* message) {
  return {name, {{"in.csv", header + "\r\n" + row + "\r\n"}},
          {"encode", kLayout, "@/in.csv", "-o", "@/o.dat"}, code, {message}, 0};
}

ErrorCase BadUse(const char* name, std::vector<std::string> args, int code,
                 std::vector<std::string> messages) {
  return {name, {}, std::move(args), code, std::move(messages), 0};
}

TEST(ZqrecErrors, EachErrorPathGivesItsMessageAndExitCode) {
  const std::string payroll = ReadFile(kData);
  std::string crlf, ascii = ReadFile(Example("text.dat"));
  for (size_t i = 0; i < payroll.size(); i += 64) crlf += payroll.substr(i, 64) + "\r\n";
  for (char& c : ascii) c = c == '\x40' ? ' ' : c;
  const std::vector<std::string> decode_p = {"decode", kLayout, "@/p.dat"};
  const std::vector<ErrorCase> cases = {
      {"short last record", {{"p.dat", payroll + std::string(10, '0')}}, decode_p, 2,
       {"is 266 bytes long, which is not a multiple of the record length 64: 4 whole records "
        "and 10 bytes left over",
        "record 5 at byte offset 256 is short: 10 bytes"}, 5},
      {"bad packed nibble stops at the first error", Patched(64 + 24, "\x1A"), decode_p, 2,
       {"record 2, byte offset 88: field \"salary\" (Packed decimal, record bytes 24-28): "
        "invalid digit nibble in packed decimal; bytes 1A 00 00 00 1D",
        "stopped after 1 bad records"}, 2},
      {"max-errors lets the run go on", Patched(64 + 24, "\x1A"),
       {"decode", kLayout, "@/p.dat", "--max-errors=3"}, 2,
       {"record 2, byte offset 88", "decoded 3 records (24 fields), 1 bad records"}, 4},
      {"bad packed sign nibble", Patched(28, "\x52"), decode_p, 2,
       {"record 1, byte offset 24: field \"salary\"", "invalid sign nibble", "bytes 00 05 25 07 52"},
       1},
      {"non-digit zoned byte", Patched(30, "x"), decode_p, 2,
       {"record 1, byte offset 29: field \"bonus\" (Zoned decimal, record bytes 29-35): non-digit "
        "byte in zoned decimal; bytes 30 78 33 30 30 35 30"}, 1},
      {"bad overpunch", Patched(35, "!"), decode_p, 2,
       {"field \"bonus\"", "invalid sign overpunch on the last digit", "bytes 30 30 33 30 30 35 21"},
       1},
      {"missing separate sign", Patched(43, "4"), decode_p, 2,
       {"field \"adjust\"", "missing trailing sign", "bytes 30 30 30 31 32 33 34 34"}, 1},
      {"text-mode transfer inserted CR/LF", {{"p.dat", crlf}},
       {"decode", kLayout, "@/p.dat", "-m", "9"}, 2,
       {"not a multiple of the record length 64", "without its 4 CR/LF pairs the file would hold "
        "exactly 4 records", "text-mode transfer"}, -1},
      {"EBCDIC translated to ASCII", {{"t.dat", ascii}},
       {"decode", Example("text.layout"), "@/t.dat"}, 0,
       {"text fields declared in EBCDIC hold", "translated from EBCDIC to ASCII"}, 6},
      {"invalid record descriptor word", {}, {"decode", kLayout, kData, "--rdw"}, 2,
       {"byte offset 0: invalid record descriptor word 00 00 03 E9"}, 1},
      {"short variable-length record",
       {{"p.dat", Be16(14) + std::string(2, '\0') + payroll.substr(0, 10)}},
       {"decode", kLayout, "@/p.dat", "--rdw"}, 2,
       {"record 1 at byte offset 4 is short: 10 bytes, but the layout's fields take 64"}, 1},
      {"verify: a valid field that does not come back identical",
       Patched(28, "\x5F"),  // F sign nibble: positive, written back as C
       {"verify", kLayout, "@/p.dat", "--max-errors=5"}, 2,
       {"record 1, byte offset 24: field \"salary\" (Packed decimal, record bytes 24-28) does not "
        "come back identical: stored 00 05 25 07 5F, decoded as \"5250.75\", encoded again as 00 "
        "05 25 07 5C",
        "verified 3 records (24 fields), 1 records that differ or fail"}, 0},
      BadLayout("unknown type name", "# x\nsalary   'Pakced decimal;length=5'\n",
                "bad.layout:2:11: expected a type name (see \"zqrec types\"), found \"Pakced "
                "decimal\""),
      BadLayout("unknown property", "a 'Packed decimal;lenght=5'\n",
                "bad.layout:1:19: unknown property \"lenght\""),
      BadLayout("bad property value", "a 'Zoned decimal;signstyle=ebm'\n",
                "bad.layout:1:28: unknown sign style \"ebm\""),
      BadLayout("unclosed property string", "a 'Text;length=3\n",
                "bad.layout:1:17: expected a closing single quote"),
      BadLayout("missing property string", "a\n",
                "bad.layout:1:2: expected a property string in single quotes"),
      BadLayout("record length shorter than the fields", "record-length 3\na 'Integer'\n",
                "bad.layout:1:1: the record length 3 is shorter than the fields, which take 4 "
                "bytes"),
      BadLayout("unknown encoding in the layout", "a 'Text;length=3' encoding=klingon\n",
                "bad.layout:1:28: unknown encoding \"klingon\""),
      BadLayout("unsupported type", "a 'Structure'\n",
                "the type \"Structure\" is not supported by zqrec"),
      BadUse("unknown option", {"decode", "--bogus", "a", "b"}, 3,
             {"zqrec decode: unknown option --bogus", "zqrec decode --help"}),
      BadUse("ambiguous option", {"encode", "--b", "a", "b"}, 3, {"ambiguous option --b"}),
      BadUse("missing option argument", {"decode", "a", "b", "-o"}, 3,
             {"option -o needs an argument FILE"}),
      BadUse("bad format", {"decode", "a", "b", "-fxml"}, 3, {"unknown format \"xml\""}),
      BadUse("missing operand", {"decode", kLayout}, 3,
             {"expected a layout file and an input file"}),
      BadUse("unknown command", {"decrypt"}, 3, {"unknown command \"decrypt\""}),
      BadUse("describe: bad property string", {"describe", "'Packed decimal;scale=two'"}, 3,
             {"column 23: expected a number for \"scale\", found \"two\""}),
      BadUse("missing input", {"decode", kLayout, "@/none"}, 4,
             {"none: cannot open: No such file or directory"}),
      BadUse("missing layout", {"verify", "@/none.layout", "@/x"}, 4,
             {"none.layout: cannot open the layout"}),
      BadUse("unwritable output", {"decode", kLayout, kData, "-o", "@/no/such/dir/out.csv"}, 4,
             {"out.csv: cannot create"}),
      BadUse("full output device", {"decode", kLayout, kData, "-o", "/dev/full"}, 4,
             {"/dev/full: write error: No space left on device"}),
      BadCsv("encode: unclosed quote", kHeader, "8,\"open", 2,
             "line 2: a quoted field is never closed"),
      BadCsv("encode: too many digits", kHeader, "1,x,12345678.00,0,0,0,0,0", 2,
             "line 2: field \"salary\" (Packed decimal): \"12345678.00\" does not fit in the field"),
      BadCsv("encode: too many decimal places", kHeader, "1,x,1.005,0,0,0,0,0", 2,
             "\"1.005\" has more decimal places than the field's 2"),
      BadCsv("encode: binary out of range", kHeader, "1,x,0,0,0,32768,0,0", 2,
             "field \"dept\" (Comp-5): \"32768\" does not fit in the field"),
      BadCsv("encode: not a number", kHeader, "1,x,0,1e3,0,0,0,0", 2,
             "field \"bonus\" (Zoned decimal): \"1e3\" is not a decimal number"),
      BadCsv("encode: text too long", kHeader, "1,abcdefghijklmnopqrstu,0,0,0,0,0,0", 2,
             "the text takes 21 bytes in ISO-8859-1, more than the field's 20"),
      BadCsv("encode: character outside the code page", kHeader, "1,\xe2\x82\xac,0,0,0,0,0,0", 2,
             "the character U+20AC has no form in ISO-8859-1"),
      BadCsv("encode: wrong field count", kHeader, "1,x,0", 2,
             "line 2 has 3 fields, the header has 8"),
      BadCsv("encode: unknown column", std::string(kHeader) + ",extra", "1,x,0,0,0,0,0,0,0", 3,
             "line 1: the column \"extra\" is not a field of"),
      BadCsv("encode: missing column", "emp-id,name", "1,x", 3,
             "line 1: no column for the field \"salary\""),
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    for (const auto& [name, data] : c.files) WriteFile(dir / name, data);
    std::vector<std::string> args = c.args;
    for (std::string& a : args) {
      if (a.compare(0, 2, "@/") == 0) a = dir / a.substr(2);
    }
    Result r = Zqrec(args, dir);
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
    const std::string help = Ok({cmd, "--help"}, dir);
    EXPECT_EQ(help.rfind(std::string("Usage: zqrec ") + cmd, 0), 0u) << help;
    EXPECT_NE(man.find(std::string(".SS \"zqrec ") + cmd), std::string::npos);
    for (std::sregex_iterator it(help.begin(), help.end(), long_option), end; it != end; ++it) {
      std::string roff = "\\-\\-";
      for (char ch : (*it)[1].str()) roff += ch == '-' ? std::string("\\-") : std::string(1, ch);
      EXPECT_NE(man.find(roff), std::string::npos) << (*it)[0] << " is not in the manual page";
    }
  }
  EXPECT_NE(Ok({"--help"}, dir).find("record-length N"), std::string::npos);
  EXPECT_NE(man.find("record\\-length N"), std::string::npos);
}

TEST(ZqrecCommands, TypesAndDescribe) {
  TempDir dir;
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
}  // namespace zqrec_test
