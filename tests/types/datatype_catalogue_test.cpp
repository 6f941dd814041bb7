// The type catalogue against the hand-written table in catalogue_rows.md.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "types/datatype_helpers.h"
#include "zq/datetime.h"
#include "zq/dtype.h"

namespace {

// The cells of each row of catalogue_rows.md.
const std::vector<std::vector<std::string>>& Rows() {
  static std::vector<std::vector<std::string>> rows;
  if (!rows.empty()) return rows;
  std::ifstream in(ZQ_SOURCE_DIR "/tests/types/catalogue_rows.md");
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] != '|') continue;
    std::vector<std::string> cells;
    std::stringstream ss(line.substr(1));
    for (std::string cell; std::getline(ss, cell, '|');) {
      const size_t a = cell.find_first_not_of(' '), b = cell.find_last_not_of(' ');
      cells.push_back(a == std::string::npos ? "" : cell.substr(a, b - a + 1));
    }
    if (cells.size() < 10) continue;
    cells[1] = cells[1].substr(1, cells[1].size() - 2);
    rows.push_back(cells);
  }
  return rows;
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

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return s;
}

// Each row's defaults and fresh print, read back (three pairs out of step).
TEST(DatatypeCatalogue, EveryRowInstallsItsDocumentedDefaults) {
  using FlagReader = bool (ZQDType::*)() const;
#define ZQ_FLAG(name) {#name, &ZQDType::name##_Meaningful, &ZQDType::name##_Settable}
  const struct {
    std::string name;
    FlagReader meaningful, settable;
  } flags[] = {ZQ_FLAG(MSBFirst),  ZQ_FLAG(Signed),        ZQ_FLAG(VariableLength), ZQ_FLAG(PadChar),
               ZQ_FLAG(DecimalPlaces), ZQ_FLAG(SignStyle), ZQ_FLAG(SignPos),        ZQ_FLAG(Picture),
               ZQ_FLAG(Scale),     ZQ_FLAG(Precision),     ZQ_FLAG(Length),         ZQ_FLAG(Align),
               ZQ_FLAG(NegType),   ZQ_FLAG(Nulls),         ZQ_FLAG(DecimalSeparator),
               ZQ_FLAG(Identity),  ZQ_FLAG(ThousandSeparator)};
#undef ZQ_FLAG
  const long kept_out_of_step[][2] = {
      {ZQDT_BCD, 3}, {ZQDT_MAGIC_NUMBER, 6}, {ZQDT_DISPLAY_SIGN_TRAILING_SEP, 15}};
  ASSERT_EQ(Rows().size(), 73u);
  for (const auto& r : Rows()) {
    SCOPED_TRACE(r[1]);
    const long value = std::stol(r[0]);
    ZQDType d(static_cast<DATATYPE>(value));
    EXPECT_EQ(d.Type(), value);
    EXPECT_EQ(zqtest::Str(d.TypeName()), r[1]);
    EXPECT_EQ(zqtest::Str(ZQDType::TypeNameOf(d.GenericType())), r[2]);
    EXPECT_EQ(Triple(d.Length(), d.MinLength(), d.MaxLength()), r[3]);
    EXPECT_EQ(Triple(d.Precision(), d.MinPrecision(), d.MaxPrecision()), r[4]);
    EXPECT_EQ(Triple(d.DecimalPlaces(), d.MinDecimalPlaces(), d.MaxDecimalPlaces()), r[5]);
    EXPECT_EQ(Triple(d.Scale(), d.MinScale(), d.MaxScale()), r[6]);
    for (const auto& f : flags) {
      EXPECT_EQ((d.*f.meaningful)(), (", " + r[7] + ",").find(" " + f.name + ",") != std::string::npos)
          << "meaningful " << f.name;
      EXPECT_EQ((d.*f.settable)(), (", " + r[8] + ",").find(" " + f.name + ",") != std::string::npos)
          << "settable " << f.name;
    }

    const std::string& o = r[9];
    EXPECT_EQ(d.MSBFirst(), o.find("MSB first") != std::string::npos);
    EXPECT_EQ(d.Signed(), o.find("signed") != std::string::npos);
    EXPECT_EQ(d.PadChar(), o.find("pad char \"0\"") != std::string::npos ? '0' : ' ');
    EXPECT_EQ(Pair(d.SignPos(), d.SignPosMask()), Code(o, "sign pos", "4/0"));
    EXPECT_EQ(Pair(d.SignStyle(), d.SignStyleMask()), Code(o, "sign style", "0/0"));
    const bool right = o.find("align right (2), align mask 3") != std::string::npos;
    EXPECT_EQ(Pair(d.Align(), d.AlignMask()), right ? "2/3" : "1/1");
    std::string picture = "<null>";
    const size_t p = o.find("picture \"");
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
                                 d.ThousandSeparator(), d.Usage(), d.VariableLength(), d.Nulls(),
                                 d.AutoInc() || d.Currency() || d.Display() || d.RowVersion()}),
              (std::vector<long>{1, 1, '.', 0, 0, 0, 1, 0}));
    EXPECT_EQ(zqtest::Str(d.Alias()), r[1]);

    // Only the always-written clauses appear for a fresh descriptor.
    const std::string text = zqtest::PrintOf(d);
    EXPECT_EQ(text, "'" + r[1] + ";order= " + (d.MSBFirst() ? "MSB" : "LSB") +
                        ";length=" + std::to_string(d.Length()) + "'");
    ZQDType expect(d);
    for (const auto& k : kept_out_of_step) {
      if (k[0] != value) continue;
      EXPECT_NE(d.Precision(), k[1]);
      expect.Length(expect.Length());
      EXPECT_EQ(expect.Precision(), k[1]);
    }
    zqtest::ExpectSameDescriptor(zqtest::ReadBack(text), expect);
  }
}

TEST(DatatypeCatalogue, NamesInCatalogueOrder) {
  const char* const* names = ZQDType::GetAllTypedefs();
  ASSERT_NE(names, nullptr);
  size_t i = 0;
  for (; names[i] != nullptr && i < Rows().size(); ++i) EXPECT_EQ(names[i], Rows()[i][1]);
  EXPECT_EQ(i, Rows().size());
  EXPECT_EQ(names[i], nullptr);
  EXPECT_EQ(ZQDType::GetAllTypedefs(), names);
  // Names are found ignoring case; values that are not types read as Text.
  for (const auto& r : Rows()) {
    DATATYPE t;
    ASSERT_TRUE(ZQDType::TypeByName(Upper(r[1]).c_str(), t)) << r[1];
    EXPECT_EQ(t, std::stol(r[0]));
  }
  for (long gap : {13L, 50L, 97L, 99L, 103L, 107L, 111L, 113L, 114L, 118L, 120L, 129L, 134L, 135L,
                   153L, 161L, 162L, 164L, 166L, 172L, 177L, 200L}) {
    EXPECT_STREQ(ZQDType(static_cast<DATATYPE>(gap)).TypeName(), "Text") << gap;
    EXPECT_EQ(ZQDType::TypeNameOf(gap), nullptr) << gap;
  }
}

TEST(DatatypeCatalogue, AssignmentAliasesAndComparison) {
  ZQDType d(ZQDT_PACKED);
  d.Usage(3);
  d.AutoInc(true);
  d.Alias("cust-amount");
  d.Picture("#,##0.00");
  d = static_cast<DATATYPE>(200);
  EXPECT_EQ((std::vector<long>{d.Type(), d.GenericType(), static_cast<long>(d.SettableFlags()),
                               static_cast<long>(d.MeaningfulFlags()), d.Signed(), d.MSBFirst(),
                               d.VariableLength(), d.AutoInc(), d.Usage(), d.Length(),
                               d.MaxPrecision(), d.SignPos()}),
            (std::vector<long>{200, ZQDT_TEXT, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4}));
  EXPECT_STREQ(d.Alias(), "Text");
  // A user's picture survives a change of type unless the row brings one.
  EXPECT_STREQ(d.Picture(), "#,##0.00");
  d = ZQDT_INTEGER;
  const std::string kept = d.Picture();
  d = ZQDT_NAME;
  EXPECT_EQ(kept + "," + d.Picture(), "#,##0.00,h f mi l t");
  EXPECT_EQ(ZQDType().Picture(), nullptr);

  // One registry entry per alias text; an empty or null alias is the name.
  ZQDType c(ZQDT_COMP3), e(ZQDT_TEXT);
  c.Alias("balance");
  e.Alias("balance");
  EXPECT_STREQ(c.Alias(), "balance");
  EXPECT_EQ(c.Alias(), e.Alias());
  c.Alias("");
  e.Alias(nullptr);
  EXPECT_EQ(std::string(c.Alias()) + "," + e.Alias(), "Comp-3,Text");

  // Comparison looks at the type only.
  ZQDType a(ZQDT_TEXT), b(ZQDT_TEXT);
  b.Length(99);
  EXPECT_TRUE(a == b && a == ZQDT_TEXT && a != ZQDType(ZQDT_MEMO));
}

// Threads racing to add the same texts end up with one entry per text.
TEST(DatatypeCatalogue, RegistriesAreSharedAcrossThreads) {
  constexpr int kThreads = 6, kTexts = 300;
  std::vector<std::vector<const char*>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &seen] {
      ZQDType d(ZQDT_DATE);
      for (int i = 0; i < kTexts; ++i) {
        const std::string text = "race-" + std::to_string((i * 7 + t) % kTexts);
        d.Picture(text.c_str());
        d.Alias(text.c_str());
        EXPECT_EQ(text + text, std::string(d.Picture()) + d.Alias());
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

// One documented row of each code table, both ways.
TEST(DatatypeCatalogue, CodeTables) {
  const struct {
    long value;
    const char* key;
    const char* text;
    long (*to_value)(const char*);
    const char* (*to_text)(long, bool);
  } tables[] = {
      {16, "rmcobol", "Ryand McFarland", &ZQDType::CharToNegstyle, &ZQDType::NegstyleToChar},
      {2, "mlast", "Trailing sign [123-/123]", &ZQDType::CharToNegtype, &ZQDType::NegtypeToChar},
      {4, "first", "Leading Separate", &ZQDType::CharToNegpos, &ZQDType::NegposToChar},
      {8, "decimal", "Decimal", &ZQDType::CharToAlign, &ZQDType::AlignToChar},
  };
  for (const auto& t : tables) {
    EXPECT_EQ((std::vector<long>{t.to_value(t.key), t.to_value(t.text), t.to_value(Upper(t.key).c_str()),
                                 t.to_value("no such word"), t.to_value(nullptr)}),
              (std::vector<long>{t.value, t.value, t.value, 0, 0}))
        << t.key;
    EXPECT_STREQ(t.to_text(t.value, false), t.key);
    EXPECT_STREQ(t.to_text(t.value, true), t.text);
    EXPECT_EQ(t.to_text(3, false), nullptr);
    EXPECT_EQ(t.to_text(0, true), nullptr);
  }
}

}  // namespace
