// Names, default masks, printing and reading under the C, German and
// Japanese locales. The locale state is built once per process, so each
// locale runs in a fresh copy of this program (DateMaskLocaleChild.*) with
// LC_ALL set; date(1) under the same locale is the reference.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "numbers/datetime_oracle.h"
#include "zq/datetime.h"
#include "zq/zqstring.h"

namespace {

std::string Locale() {
  const char* l = getenv("LC_ALL");
  return l != nullptr ? l : "";
}

std::string Print(const ZQDateTime& t, const char* mask) {
  ZQString s;
  t.Print(s, mask);
  return std::string(s.c_str(), s.length());
}

// date(1) output for `when` (a date(1) -d text) in `format`, split at '|'.
std::vector<std::string> DateOutput(const std::string& when, const std::string& format) {
  std::string out, cmd = "date -d '" + when + "' '+" + format + "'";
  EXPECT_TRUE(zqtest::RunCommand(cmd, out)) << cmd;
  std::vector<std::string> parts(1);
  for (char c : out) {
    if (c == '|') parts.emplace_back();
    if (c != '|' && c != '\n') parts.back() += c;
  }
  return parts;
}

#define CHILD_ONLY() \
  if (!zqtest::InChild()) GTEST_SKIP() << "runs under DateMaskLocale.*"

TEST(DateMaskLocale, EveryLocale) {
  if (zqtest::InChild()) GTEST_SKIP();
  for (const char* locale : {"C", "de_DE.UTF-8", "de_DE", "ja_JP.UTF-8", "ja_JP.eucjp"}) {
    std::string out;
    EXPECT_TRUE(zqtest::RunChildTests("DateMaskLocaleChild.*", locale, out)) << locale << out;
    // Every child test must have run, none skipped.
    EXPECT_NE(out.find("[  PASSED  ] 4 tests"), std::string::npos) << locale << ":\n" << out;
    EXPECT_EQ(out.find("SKIPPED"), std::string::npos) << locale << ":\n" << out;
  }
}

TEST(DateMaskLocaleChild, NamesMatchDate) {
  CHILD_ONLY();
  // 4 March 2001 is a Sunday. A date after a day name is read past the name.
  for (int i = 0; i < 7; ++i) {
    std::string when = "2001-03-0" + std::to_string(4 + i);
    std::vector<std::string> want = DateOutput(when, "%A|%a|%w|%A, %d.%m.%Y|%a %d/%m/%Y");
    ASSERT_EQ(want.size(), 5u);
    ASSERT_EQ(want[2], std::to_string(i));
    EXPECT_EQ(ZQDateTime::DayName(i), want[0]) << Locale();
    EXPECT_EQ(ZQDateTime::DayAbbrName(i), want[1]) << Locale();
    EXPECT_EQ(ZQDate(4 + i, 3, 2001).DayofWeek(), i);
    ZQDate a, b;
    EXPECT_TRUE(a.Convert(want[3].c_str(), "dd.mm.yyyy") && a.Day() == 4 + i) << want[3];
    EXPECT_TRUE(b.Convert(want[4].c_str(), "dd/mm/yyyy") && b.Day() == 4 + i) << want[4];
  }
  EXPECT_STREQ(ZQDateTime::MonthName(13), "Invalid month number");
  EXPECT_STREQ(ZQDateTime::MonthName(0), "Invalid month number");
  EXPECT_STREQ(ZQDateTime::MonthAbbrName(13), "Invalid month abbreviation");
  EXPECT_STREQ(ZQDateTime::DayName(7), "Invalid day number");
  EXPECT_STREQ(ZQDateTime::DayName(-1), "Invalid day number");
  EXPECT_STREQ(ZQDateTime::DayAbbrName(7), "Invalid day abbreviation");
  EXPECT_EQ(ZQDateTime::FindMonthNumber(nullptr), 0);
  if (Locale() != "C") return;
  struct Case { const char* text; int month; } cases[] = {
      {"Ma", 0},  {"", 0},     {"jun", 6},   {"JUN", 6},   {"Sept", 9},  {"sep", 9},
      {"May", 5}, {"march", 3}, {"Decem", 12}, {"Jux", 0},  {"Septembre", 0}, {"Mayday", 0}};
  for (const Case& c : cases) EXPECT_EQ(ZQDateTime::FindMonthNumber(c.text), c.month) << c.text;
  EXPECT_EQ(ZQDate(5, "March", 2001).DayNumber(), ZQDateTime::cal_jul(3, 5, 2001));
  ZQDate d;
  EXPECT_TRUE(d.Convert("5 SEPT 2001", "d mon yyyy"));
  EXPECT_EQ(d.Month(), 9);
  EXPECT_EQ(Print(ZQDateTime(5, 3, 2001), "d-mon-yyyy"), " 5-Mar-2001");
}

TEST(DateMaskLocaleChild, DefaultMasksAndFallbacks) {
  CHILD_ONLY();
  struct Case { const char* locale; const char* date; const char* time; int order; } cases[] = {
      {"C", "mm/dd/yyyy", "H24:MM:SS", 0},
      {"de_DE.UTF-8", "dd.mm.yyyy", "H24:MM:SS", 1},
      {"de_DE", "dd.mm.yyyy", "H24:MM:SS", 1},
      // The first character after the first number separates all parts.
      {"ja_JP.UTF-8", "yyyy\xe5\xb9\xb4mm\xe5\xb9\xb4" "dd", "H24\xe6\x99\x82MM\xe6\x99\x82SS", 2},
      {"ja_JP.eucjp", "yyyy\xc7\xafmm\xc7\xaf" "dd", "H24\xbb\xfeMM\xbb\xfeSS", 2},
  };
  const Case* c = nullptr;
  for (const Case& k : cases) c = Locale() == k.locale ? &k : c;
  ASSERT_NE(c, nullptr) << Locale();
  EXPECT_STREQ(ZQDateTime::DefaultDateFormat(), c->date);
  EXPECT_STREQ(ZQDateTime::DefaultTimeFormat(), c->time);
  EXPECT_EQ(std::string(ZQDateTime::DefaultDateTimeFormat()), std::string(c->date) + " " + c->time);
  EXPECT_EQ(ZQDateTime::DefaultDateOrder(), c->order);
  // Where the locale's own short date has a four-digit year, the default
  // mask prints the same text.
  if (c->order == 1) {
    EXPECT_EQ(Print(ZQDateTime(27, 9, 1955, 12, 59, 59), nullptr),
              DateOutput("1955-09-27 12:59:59", "%x %X")[0]);
  }
  // Digit-only texts are read in the locale's order of day and month: month,
  // day and year when the month comes first, then when the day comes first.
  struct Digits { const char* text; int m_first[3], d_first[3]; } digits[] = {
      {"30501", {3, 5, 2001}, {5, 30, 2001}},       {"120501", {12, 5, 2001}, {5, 12, 2001}},
      {"311201", {12, 31, 2001}, {12, 31, 2001}},   {"3052001", {3, 5, 2001}, {5, 30, 2001}},
      {"12252001", {12, 25, 2001}, {12, 25, 2001}}, {"25122001", {12, 25, 2001}, {12, 25, 2001}},
  };
  for (const Digits& t : digits) {
    const int* w = c->order == 1 ? t.d_first : t.m_first;
    ZQDate d;
    d.SetFmt("mm/dd/yyyy");
    d = t.text;
    EXPECT_EQ(d.DayNumber(), ZQDateTime::cal_jul(w[0], w[1], w[2])) << t.text << " in " << Locale();
  }
  // Without a mask of its own a date also accepts the candidate forms, a time
  // the fixed time forms; a text that is neither clears the date but leaves
  // the time.
  ZQDate d;
  d = "1987/11/23";
  EXPECT_EQ(d.DayNumber(), ZQDateTime::cal_jul(11, 23, 1987));
  d = "not a date";
  EXPECT_EQ(d.DayNumber(), 0);
  ZQTime t(7L);
  t = "01:05 pm";
  EXPECT_EQ(t.Seconds(), 13 * 3600 + 5 * 60);
  t = "not a time";
  EXPECT_EQ(t.Seconds(), 13 * 3600 + 5 * 60);
}

TEST(DateMaskLocaleChild, PrintingMatchesDate) {
  CHILD_ONLY();
  // A mask, date(1)'s format for it, and whether the text holds the whole date.
  struct Pair { const char* mask; const char* format; bool reads; };
  std::vector<Pair> pairs = {
      {"month", "%B", false},              {"mon", "%b", false},
      {"dd month yyyy", "%d %B %Y", true}, {"d-mon-yyyy", "%e-%b-%Y", true},
      {"m/d/yy", "%_m/%e/%y", false},      {"yyyy-mm-dd", "%Y-%m-%d", true},
      {"ddd", "%j", false},                {"H24:MM:SS", "%H:%M:%S", false},
      {"HH.MM", "%I.%M", false},           {"mon month", "%b %B", false},
  };
  if (Locale() == "C") pairs.push_back({"HH:MM AM", "%I:%M %p", false});
  // One moment in each month, whose names are looked up too; none at
  // midnight, which "HH" prints as 00.
  const char* const moments[] = {
      "1753-01-01 01:02:03", "1800-02-28 12:00:00", "2001-03-05 23:05:09", "2002-04-30 04:00:00",
      "1999-05-17 06:00:00", "2010-06-01 18:45:00", "1969-07-20 20:17:40", "2020-08-31 12:59:59",
      "1955-09-27 12:59:59", "2005-10-10 10:10:10", "2011-11-11 11:11:11", "9999-12-31 10:00:00"};
  std::string formats;
  for (const Pair& p : pairs) formats += std::string(p.format) + "|";
  for (const char* when : moments) {
    std::vector<std::string> want = DateOutput(when, formats);
    ASSERT_EQ(want.size(), pairs.size() + 1) << when;
    int y, mo, d, h, mi, s;
    ASSERT_EQ(std::sscanf(when, "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s), 6);
    ZQDateTime t(d, mo, y, h, mi, s);
    for (size_t i = 0; i < pairs.size(); ++i) {
      SCOPED_TRACE(std::string(when) + " by " + pairs[i].mask + " in " + Locale());
      EXPECT_EQ(Print(t, pairs[i].mask), want[i]);
      ZQDate back;
      EXPECT_TRUE(!pairs[i].reads || (back.Convert(want[i].c_str(), pairs[i].mask) &&
                                      back.DayNumber() == t.DayNumber()));
    }
    EXPECT_STREQ(ZQDateTime::MonthName(mo), want[0].c_str());
    EXPECT_STREQ(ZQDateTime::MonthAbbrName(mo), want[1].c_str());
    EXPECT_EQ(ZQDateTime::FindMonthNumber(want[0].c_str()), mo) << want[0];
  }
}

TEST(DateMaskLocaleChild, PrintThenReadEveryCandidateMask) {
  CHILD_ONLY();
  std::vector<std::string> dates = {
      ZQDateTime::DefaultDateFormat(),
      "m/d/yyyy", "m/d/yy", "m-d-yyyy", "m-d-yy", "m.d.yyyy", "m.d.yy",
      "d/m/yyyy", "d/m/yy", "d-m-yyyy", "d-m-yy", "d.m.yyyy", "d.m.yy",
      "d-mon-yyyy", "d-mon-yy", "d-month-yyyy", "d-month-yy", "mon d, yyyy",
      "month d, yyyy", "yy-m-d", "yy/m/d", "yyyy-m-d", "yyyy/m/d",
      "m/d", "m-d", "m.d", "d-mon", "d-month"};
  std::vector<std::string> times = {ZQDateTime::DefaultTimeFormat(), "HH:MM:SS am", "HH:MM am",
                                    "H24:MM:SS", "H24:MM", ""};
  ZQDateTime now(true);
  int current = ZQDateTime::CurrentYear();
  // Days above 12 and years above 31 keep the text unambiguous whichever
  // candidate reads it first.
  const int moments[][6] = {{27, 9, 1955, 12, 59, 59}, {23, 11, 1987, 0, 0, 0},
                            {19, 1, 2038, 23, 5, 9},   {31, 12, 2041, 13, 14, 15},
                            {29, 2, 1996, 11, 0, 1}};
  for (const std::string& date : dates) {
    for (const std::string& time : times) {
      std::string mask = time.empty() ? date : date + " " + time;
      bool has_year = mask.find('y') != std::string::npos;
      bool has_seconds = mask.find("SS") != std::string::npos;
      bool has_time = mask.find("MM") != std::string::npos;
      for (const auto& m : moments) {
        // 29 February has no place in a year-less mask unless this year leaps.
        if (!has_year && m[1] == 2 && m[0] == 29) continue;
        std::string text = Print(ZQDateTime(m[0], m[1], m[2], m[3], m[4], m[5]), mask.c_str());
        SCOPED_TRACE(text + " printed by " + mask + " in " + Locale());
        ZQDateTime want(m[0], m[1], has_year ? m[2] : current, has_time ? m[3] : 0,
                        has_time ? m[4] : 0, has_seconds ? m[5] : 0);
        ZQDateTime direct, guessed, wide;
        EXPECT_TRUE(direct.Convert(text.c_str(), mask.c_str()));
        EXPECT_TRUE(direct == want);
        ASSERT_TRUE(ZQDateTime::CDate(text.c_str(), guessed));
        EXPECT_TRUE(guessed == want);
        if (Locale() != "C") continue;
        std::basic_string<unsigned short> wide_text(text.begin(), text.end());
        ASSERT_TRUE(ZQDateTime::CDate(wide_text.c_str(), wide));
        EXPECT_TRUE(wide == want);
      }
    }
  }
  ZQDateTime untouched(5L, 6L);
  EXPECT_FALSE(ZQDateTime::CDate("no date here", untouched));
  EXPECT_TRUE(untouched == ZQDateTime(5L, 6L));
}

}  // namespace
