// The type catalogue: every row's defaults, read from the human-written
// table in catalogue_rows.md (not from the library's own table), the names
// and their order, assignment of a type, and the code tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "types/datatype_helpers.h"
#include "zq/datetime.h"
#include "zq/dtype.h"

namespace {

struct ExpectedRow {
  long value;
  std::string name, generic, length, precision, decimals, scale;
  std::vector<std::string> meaningful, settable;
  std::string other;
};

std::string Trim(const std::string& s) {
  size_t a = s.find_first_not_of(' ');
  size_t b = s.find_last_not_of(' ');
  return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

// A default/minimum/maximum triple in the table's notation.
std::string Triple(long def, long min, long max) {
  if (def == 0 && min == 0 && max == 0) return "-";
  auto n = [](long v) {
    return v == 2147483647L   ? std::string("2^31-1")
           : v == 2147483646L ? std::string("2^31-2")
           : v == 1073741823L ? std::string("2^30-1")
                              : std::to_string(v);
  };
  if (def == min && min == max) return n(def) + " fixed";
  return n(def) + "/" + n(min) + "/" + n(max);
}

std::vector<std::string> ParseList(const std::string& cell) {
  std::vector<std::string> out;
  if (cell == "-") return out;
  std::stringstream ss(cell);
  std::string item;
  while (std::getline(ss, item, ',')) out.push_back(Trim(item));
  return out;
}

std::vector<ExpectedRow> LoadRows() {
  std::ifstream in(ZQ_SOURCE_DIR "/tests/types/catalogue_rows.md");
  std::vector<ExpectedRow> rows;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] != '|') continue;
    std::vector<std::string> cells;
    std::stringstream ss(line.substr(1));
    std::string cell;
    while (std::getline(ss, cell, '|')) cells.push_back(Trim(cell));
    if (cells.size() < 10) continue;
    ExpectedRow r;
    r.value = std::stol(cells[0]);
    r.name = cells[1].substr(1, cells[1].size() - 2);
    r.generic = cells[2];
    r.length = cells[3];
    r.precision = cells[4];
    r.decimals = cells[5];
    r.scale = cells[6];
    r.meaningful = ParseList(cells[7]);
    r.settable = ParseList(cells[8]);
    r.other = cells[9];
    rows.push_back(r);
  }
  return rows;
}

const std::vector<ExpectedRow>& Rows() {
  static const std::vector<ExpectedRow> rows = LoadRows();
  return rows;
}

using FlagReader = bool (ZQDType::*)() const;

const std::map<std::string, std::pair<FlagReader, FlagReader>>& FlagReaders() {
#define ZQ_FLAG(name) {#name, {&ZQDType::name##_Meaningful, &ZQDType::name##_Settable}}
  static const std::map<std::string, std::pair<FlagReader, FlagReader>> m = {
      ZQ_FLAG(MSBFirst),      ZQ_FLAG(Signed),    ZQ_FLAG(VariableLength),   ZQ_FLAG(PadChar),
      ZQ_FLAG(DecimalPlaces), ZQ_FLAG(SignStyle), ZQ_FLAG(SignPos),          ZQ_FLAG(Picture),
      ZQ_FLAG(Scale),         ZQ_FLAG(Precision), ZQ_FLAG(Length),           ZQ_FLAG(Align),
      ZQ_FLAG(NegType),       ZQ_FLAG(Nulls),     ZQ_FLAG(DecimalSeparator), ZQ_FLAG(Identity),
      ZQ_FLAG(ThousandSeparator)};
#undef ZQ_FLAG
  return m;
}

bool Has(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return s;
}

std::string Pair(long a, long b) { return std::to_string(a) + "/" + std::to_string(b); }

// "<key> N" in the other-defaults text, with its optional "(mask M)", as
// "N/M"; `absent` when the key is not there.
std::string Code(const std::string& other, const std::string& key, const char* absent) {
  const size_t p = other.find(key + " ");
  if (p == std::string::npos) return absent;
  const size_t start = p + key.size() + 1;
  const std::string clause = other.substr(start, other.find(';', p) - start);
  const size_t m = clause.find("(mask ");
  return Pair(std::stol(clause), m == std::string::npos ? 0 : std::stol(clause.substr(m + 6)));
}

TEST(DatatypeCatalogue, EveryRowInstallsItsDocumentedDefaults) {
  std::map<std::string, long> value_of;
  for (const ExpectedRow& r : Rows()) value_of[r.name] = r.value;
  for (const ExpectedRow& r : Rows()) {
    SCOPED_TRACE(r.name);
    ZQDType d(static_cast<DATATYPE>(r.value));
    EXPECT_EQ(d.Type(), r.value);
    EXPECT_EQ(zqtest::Str(d.TypeName()), r.name);
    ASSERT_EQ(value_of.count(r.generic), 1u) << r.generic;
    EXPECT_EQ(d.GenericType(), value_of[r.generic]);

    EXPECT_EQ(Triple(d.Length(), d.MinLength(), d.MaxLength()), r.length);
    EXPECT_EQ(Triple(d.Precision(), d.MinPrecision(), d.MaxPrecision()), r.precision);
    EXPECT_EQ(Triple(d.DecimalPlaces(), d.MinDecimalPlaces(), d.MaxDecimalPlaces()), r.decimals);
    EXPECT_EQ(Triple(d.Scale(), d.MinScale(), d.MaxScale()), r.scale);

    for (const auto& [name, readers] : FlagReaders()) {
      EXPECT_EQ((d.*readers.first)(), Has(r.meaningful, name)) << "meaningful " << name;
      EXPECT_EQ((d.*readers.second)(), Has(r.settable, name)) << "settable " << name;
    }

    const std::string& o = r.other;
    EXPECT_EQ(d.MSBFirst(), o.find("MSB first") != std::string::npos);
    EXPECT_EQ(d.Signed(), o.find("signed") != std::string::npos);
    EXPECT_FALSE(d.VariableLength());
    EXPECT_TRUE(d.Nulls());
    EXPECT_EQ(d.PadChar(), o.find("pad char \"0\"") != std::string::npos ? '0' : ' ');

    EXPECT_EQ(Pair(d.SignPos(), d.SignPosMask()), Code(o, "sign pos", "4/0"));
    EXPECT_EQ(Pair(d.SignStyle(), d.SignStyleMask()), Code(o, "sign style", "0/0"));
    const bool right = o.find("align right (2), align mask 3") != std::string::npos;
    EXPECT_EQ(Pair(d.Align(), d.AlignMask()), right ? "2/3" : "1/1");

    std::string picture = "<null>";
    size_t p = o.find("picture \"");
    if (p != std::string::npos) {
      picture = o.substr(p + 9, o.find('"', p + 9) - p - 9);
    } else if (o.find("default date-time mask") != std::string::npos) {
      picture = ZQDateTime::DefaultDateTimeFormat();
    } else if (o.find("default date mask") != std::string::npos) {
      picture = ZQDateTime::DefaultDateFormat();
    } else if (o.find("default time mask") != std::string::npos) {
      picture = ZQDateTime::DefaultTimeFormat();
    }
    EXPECT_EQ(zqtest::Str(d.Picture()), picture);

    // The reset values no row changes.
    EXPECT_EQ((std::vector<long>{d.NegType(), d.NegTypeMask(), d.DecimalSeparator(),
                                 d.ThousandSeparator(), d.Usage()}),
              (std::vector<long>{1, 1, '.', 0, 0}));
    EXPECT_FALSE(d.AutoInc() || d.Currency() || d.Display() || d.RowVersion());
    EXPECT_EQ(zqtest::Str(d.Alias()), r.name);
  }
}

TEST(DatatypeCatalogue, FreshDescriptorPrintsAndReadsBackEqual) {
  for (const ExpectedRow& r : Rows()) {
    SCOPED_TRACE(r.name);
    ZQDType d(static_cast<DATATYPE>(r.value));
    std::string text = zqtest::PrintOf(d);
    // Only the always-written clauses appear for a fresh descriptor.
    char expected[128];
    std::snprintf(expected, sizeof expected, "'%s;order= %s;length=%ld'", r.name.c_str(),
                  d.MSBFirst() ? "MSB" : "LSB", d.Length());
    EXPECT_EQ(text, expected);
    ZQDType back = zqtest::ReadBack(text);
    // Reading applies ";length=" through the coupling setter. Three catalogue
    // pairs are not in step with their own coupling, so those descriptors
    // come back with the precision their default length implies.
    const long kept_out_of_step[][2] = {{ZQDT_BCD, 3}, {ZQDT_MAGIC_NUMBER, 6},
                                        {ZQDT_DISPLAY_SIGN_TRAILING_SEP, 15}};
    ZQDType expect(d);
    for (const auto& k : kept_out_of_step) {
      if (k[0] != r.value) continue;
      EXPECT_NE(d.Precision(), k[1]);
      expect.Length(expect.Length());
      EXPECT_EQ(expect.Precision(), k[1]);
    }
    zqtest::ExpectSameDescriptor(back, expect);
  }
}

TEST(DatatypeCatalogue, NamesInCatalogueOrder) {
  ASSERT_EQ(Rows().size(), 73u);
  std::map<long, int> seen;
  for (const ExpectedRow& r : Rows()) EXPECT_EQ(seen[r.value]++, 0) << r.value;
  const char* const* names = ZQDType::GetAllTypedefs();
  ASSERT_NE(names, nullptr);
  size_t i = 0;
  for (; names[i] != nullptr && i < Rows().size(); ++i) EXPECT_EQ(names[i], Rows()[i].name);
  EXPECT_EQ(i, Rows().size());
  EXPECT_EQ(names[i], nullptr);
  EXPECT_EQ(ZQDType::GetAllTypedefs(), names);

  // Names are found ignoring case; values that are not types read as Text.
  for (const ExpectedRow& r : Rows()) {
    const std::string upper = Upper(r.name);
    DATATYPE t;
    ASSERT_TRUE(ZQDType::TypeByName(upper.c_str(), t)) << upper;
    EXPECT_EQ(t, r.value);
  }
  for (long gap : {13L, 50L, 97L, 99L, 103L, 107L, 111L, 113L, 114L, 118L, 120L, 129L, 134L, 135L,
                   153L, 161L, 162L, 164L, 166L, 172L, 177L, 200L}) {
    ZQDType d(static_cast<DATATYPE>(gap));
    EXPECT_STREQ(d.TypeName(), "Text") << gap;
    EXPECT_EQ(ZQDType::TypeNameOf(gap), nullptr) << gap;
  }
}

TEST(DatatypeCatalogue, AssignmentResetsAndKeepsThePicture) {
  ZQDType d(ZQDT_PACKED);
  d.Usage(3);
  d.AutoInc(true);
  d.Alias("cust-amount");
  d.Picture("#,##0.00");
  d = static_cast<DATATYPE>(200);
  EXPECT_EQ(d.Type(), 200);
  EXPECT_EQ(d.GenericType(), ZQDT_TEXT);
  EXPECT_EQ(d.SettableFlags(), 0u);
  EXPECT_EQ(d.MeaningfulFlags(), 0u);
  EXPECT_FALSE(d.Signed() || d.MSBFirst() || d.VariableLength() || d.AutoInc());
  EXPECT_EQ(d.Usage(), 0);
  EXPECT_EQ(d.Length(), 0);
  EXPECT_EQ(d.MaxPrecision(), 0);
  EXPECT_EQ(d.SignPos(), 4);
  EXPECT_STREQ(d.Alias(), "Text");
  // A user's picture survives a change of type unless the row brings one.
  EXPECT_STREQ(d.Picture(), "#,##0.00");
  d = ZQDT_INTEGER;
  EXPECT_STREQ(d.Picture(), "#,##0.00");
  d = ZQDT_NAME;
  EXPECT_STREQ(d.Picture(), "h f mi l t");

  ZQDType u(ZQDT_UNION);
  EXPECT_EQ(u.GenericType(), ZQDT_STRUCTURE);
  EXPECT_EQ(u.MeaningfulFlags(), 0u);
  EXPECT_EQ(u.SettableFlags(), 0u);
  EXPECT_EQ(ZQDType().Picture(), nullptr);
  EXPECT_EQ(ZQDType().Type(), ZQDT_TEXT);

  // Comparison looks at the type only.
  ZQDType a(ZQDT_TEXT), b(ZQDT_TEXT);
  b.Length(99);
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(a == ZQDT_TEXT);
  EXPECT_TRUE(a != ZQDType(ZQDT_MEMO));
}

TEST(DatatypeCatalogue, AliasRegistry) {
  ZQDType d(ZQDT_COMP3);
  d.Alias("balance");
  EXPECT_STREQ(d.Alias(), "balance");
  ZQDType e(ZQDT_TEXT);
  e.Alias("balance");
  EXPECT_EQ(d.Alias(), e.Alias());  // one registry entry, one text
  d.Alias("");
  EXPECT_STREQ(d.Alias(), "Comp-3");
  e.Alias(nullptr);
  EXPECT_STREQ(e.Alias(), "Text");
}

TEST(DatatypeCatalogue, RegistriesAreSharedAcrossThreads) {
  // Threads racing to add the same texts end up with one entry per text.
  constexpr int kThreads = 6;
  constexpr int kTexts = 300;
  std::vector<std::vector<const char*>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &seen] {
      ZQDType d(ZQDT_DATE);
      for (int i = 0; i < kTexts; ++i) {
        std::string text = "race-" + std::to_string((i * 7 + t) % kTexts);
        d.Picture(text.c_str());
        d.Alias(text.c_str());
        EXPECT_EQ(text, d.Picture());
        EXPECT_EQ(text, d.Alias());
        EXPECT_NE(ZQDType::GetAllTypedefs()[72], nullptr);
      }
      for (int i = 0; i < kTexts; ++i) {
        d.Picture(("race-" + std::to_string(i)).c_str());
        seen[t].push_back(d.Picture());
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 1; t < kThreads; ++t) EXPECT_EQ(seen[t], seen[0]);
}

struct CodeRow {
  long value;
  const char* key;
  const char* text;
};

TEST(DatatypeCatalogue, CodeTables) {
  const CodeRow styles[] = {
      {1, "ibm", "IBM"}, {2, "mfcobol", "Micro Focus"}, {4, "wang", "Wang"},
      {8, "unisys", "UniSys"}, {16, "rmcobol", "Ryand McFarland"},
      {32, "cr", "Credit/Debit [123CR/123DB]"}, {64, "db", "Credit/Debit [123DB/123CR]"},
      {128, "parens", "Negative values in parens [(123)/123]"},
      {256, "angle", "Negative values in angle brackets [<123>/123]"},
      {512, "separate", "Sign separate [-123/123]"}, {1024, "acucobol", "Acucobol-85"}};
  const CodeRow types[] = {
      {1, "normal", "Leading sign [-123/123]"}, {2, "mlast", "Trailing sign [123-/123]"},
      {4, "cr", "Credit/Debit [123CR/123DB]"}, {8, "db", "Credit/Debit [123DB/123CR]"},
      {16, "parens", "Negative values in parens [(123)/123]"},
      {32, "angle", "Negative values in angle brackets [<123>/123]"}};
  const CodeRow positions[] = {{1, "osfirst", "Leading"}, {2, "oslast", "Trailing"},
                               {4, "first", "Leading Separate"}, {8, "last", "Trailing Separate"},
                               {16, "none", "None"}};
  const CodeRow aligns[] = {{1, "left", "Left"}, {2, "right", "Right"}, {4, "center", "Center"},
                            {8, "decimal", "Decimal"}, {16, "general", "General"}};
  struct Table {
    const CodeRow* rows;
    size_t n;
    long (*to_value)(const char*);
    const char* (*to_text)(long, bool);
  };
  const Table tables[] = {
      {styles, 11, &ZQDType::CharToNegstyle, &ZQDType::NegstyleToChar},
      {types, 6, &ZQDType::CharToNegtype, &ZQDType::NegtypeToChar},
      {positions, 5, &ZQDType::CharToNegpos, &ZQDType::NegposToChar},
      {aligns, 5, &ZQDType::CharToAlign, &ZQDType::AlignToChar},
  };
  for (const Table& t : tables) {
    for (size_t i = 0; i < t.n; ++i) {
      const CodeRow& r = t.rows[i];
      SCOPED_TRACE(r.key);
      EXPECT_EQ(t.to_value(r.key), r.value);
      EXPECT_EQ(t.to_value(r.text), r.value);
      EXPECT_EQ(t.to_value(Upper(r.key).c_str()), r.value);
      EXPECT_STREQ(t.to_text(r.value, false), r.key);
      EXPECT_STREQ(t.to_text(r.value, true), r.text);
    }
    EXPECT_EQ(t.to_value("no such word"), 0);
    EXPECT_EQ(t.to_value(nullptr), 0);
    EXPECT_EQ(t.to_text(3, false), nullptr);
    EXPECT_EQ(t.to_text(0, true), nullptr);
  }
}

}  // namespace
