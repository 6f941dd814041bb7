// Printing and reading dates and times by masks with numeric tokens only;
// these do not depend on the locale's names.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "zq/datetime.h"
#include "zq/zqstring.h"

namespace {

// Prints through the Print of the object's own class.
template <class T>
std::string PrintAs(const T& t, const char* mask) {
  ZQString s;
  t.Print(s, mask);
  return std::string(s.c_str(), s.length());
}

TEST(DateMaskPrint, Tokens) {
  struct Case {
    int d, m, y, hh, mi, ss;
    const char* mask;
    const char* want;
  } cases[] = {
      {5, 3, 2001, 0, 0, 0, "HH:MM am", "00:00 am"},
      {5, 3, 2001, 13, 5, 0, "HH:MM am", "01:05 pm"},
      {5, 3, 2001, 13, 5, 0, "HH:MM AM", "01:05 PM"},
      {5, 3, 2001, 9, 5, 0, "HH:MM Am", "09:05 Am"},
      {5, 3, 2001, 12, 0, 0, "HH aM", "12 pM"},
      {5, 3, 2001, 11, 59, 59, "HH:MM:SS am", "11:59:59 am"},
      {5, 3, 2001, 23, 7, 9, "H24:MM:SS", "23:07:09"},
      {5, 3, 2001, 0, 7, 9, "H24.MM", "00.07"},
      {5, 3, 2001, 0, 0, 0, "d/m/yy", " 5/ 3/01"},
      {5, 3, 2001, 0, 0, 0, "dd/mm/yyyy", "05/03/2001"},
      {25, 12, 1999, 0, 0, 0, "m-d-yyyy", "12-25-1999"},
      {5, 3, 2001, 0, 0, 0, "ddd", "064"},
      {31, 12, 2000, 0, 0, 0, "ddd", "366"},
      {1, 9, 1752, 0, 0, 0, "yyyy-mm-dd", "1752-09-01"},
      // Dates after 2 September 1752 keep their Julian count and print as
      // other dates.
      {31, 12, 1752, 0, 0, 0, "yyyy-mm-dd", "1753-01-11"},
      {1, 1, 7, 0, 0, 0, "yyyy yy", "0007 07"},
      {1, 1, 25000, 0, 0, 0, "yyyy", "25000"},
      {5, 3, 2001, 10, 0, 0, "SS.TT", "00.000"},
      {5, 3, 2001, 10, 0, 0, "SS.TT5|TT0|", "00.00000||"},
      {5, 3, 2001, 10, 0, 0, "\\d\\m\\y \\H\\\\", "dmy H\\"},
      {5, 3, 2001, 10, 0, 0, "Q: dd!", "Q: 05!"},
      {5, 3, 2001, 10, 0, 0, "trailing \\", "trailing "},
      {5, 3, 2001, 10, 0, 0, "", ""},
  };
  for (const Case& c : cases) {
    ZQDateTime t(c.d, c.m, c.y, c.hh, c.mi, c.ss);
    EXPECT_EQ(PrintAs(t, c.mask), c.want) << c.mask;
  }
}

TEST(DateMaskPrint, PartsOfDatesAndTimes) {
  ZQDate d(5, 3, 2001);
  ZQTime t(13, 5, 9);
  // A date prints no time tokens, a time no date tokens.
  EXPECT_EQ(PrintAs(d, "dd.mm.yyyy H24:MM"), "05.03.2001 H24:MM");
  EXPECT_EQ(PrintAs(t, "dd.mm.yyyy H24:MM"), "dd.mm.yyyy 13:05");
  // No date: nothing at all when the date part is printed.
  EXPECT_EQ(PrintAs(ZQDate(), "dd.mm.yyyy"), "");
  EXPECT_EQ(PrintAs(ZQDateTime(-1L, 5L), "H24:MM"), "");
  EXPECT_EQ(PrintAs(ZQTime(0L), "H24:MM"), "00:00");
  // Printing replaces what the string held.
  ZQString s("old");
  d.Print(s, "yyyy");
  EXPECT_STREQ(s.c_str(), "2001");
  // Day numbers far beyond the last year still print.
  EXPECT_FALSE(PrintAs(ZQDateTime(2147483647L, 0L), "dd/mm/yyyy ddd").empty());
}

struct ReadCase {
  const char* text;
  const char* mask;
  bool ok;
  int d, m, y, hh, mi, ss;
};

void ExpectRead(const ReadCase& c) {
  ZQDateTime t(1L, 1L);
  bool ok = t.Convert(c.text, c.mask);
  EXPECT_EQ(ok, c.ok) << "'" << c.text << "' by '" << c.mask << "'";
  if (!c.ok) {
    EXPECT_EQ(t.DayNumber(), 1) << c.text;
    EXPECT_EQ(t.Seconds(), 1) << c.text;
    return;
  }
  if (c.y != 0) {
    EXPECT_EQ(t.DayNumber(), ZQDateTime::cal_jul(c.m, c.d, c.y))
        << "'" << c.text << "' by '" << c.mask << "'";
  }
  EXPECT_EQ(t.Seconds(), c.hh * 3600 + c.mi * 60 + c.ss)
      << "'" << c.text << "' by '" << c.mask << "'";
}

TEST(DateMaskRead, NumericMasks) {
  const ReadCase cases[] = {
      {"03/05/2001", "mm/dd/yyyy", true, 5, 3, 2001, 0, 0, 0},
      {" 3/ 5/2001", "m/d/yyyy", true, 5, 3, 2001, 0, 0, 0},
      {"3/5/2001", "mm/dd/yyyy", true, 5, 3, 2001, 0, 0, 0},
      {"  3/5/2001  ", "m/d/yyyy", true, 5, 3, 2001, 0, 0, 0},
      {"2001-03-05 13:05:09", "yyyy-mm-dd H24:MM:SS", true, 5, 3, 2001, 13, 5, 9},
      {"05.03.2001 01:05 pm", "dd.mm.yyyy HH:MM am", true, 5, 3, 2001, 13, 5, 0},
      {"05.03.2001 12:30 AM", "dd.mm.yyyy HH:MM am", true, 5, 3, 2001, 0, 30, 0},
      {"05.03.2001 12:30 PM", "dd.mm.yyyy HH:MM am", true, 5, 3, 2001, 12, 30, 0},
      {"05.03.2001 00:00 am", "dd.mm.yyyy HH:MM am", true, 5, 3, 2001, 0, 0, 0},
      {"05.03.2001 10:00am", "dd.mm.yyyy HH:MM am", true, 5, 3, 2001, 10, 0, 0},
      {"05.03.2001 13:00 am", "dd.mm.yyyy HH:MM am", false, 0, 0, 0, 0, 0, 0},
      {"064/2001", "ddd/yyyy", true, 5, 3, 2001, 0, 0, 0},
      {"366/2001", "ddd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"366/2000", "ddd/yyyy", true, 31, 12, 2000, 0, 0, 0},
      {"20010305", "yyyymmdd", true, 5, 3, 2001, 0, 0, 0},
      {"200010305", "yyyymmdd", true, 5, 3, 20001, 0, 0, 0},
      {"010305", "yymmdd", true, 5, 3, 2001, 0, 0, 0},
      {"25000-12-31", "yyyy-mm-dd", true, 31, 12, 25000, 0, 0, 0},
      {"25001-01-01", "yyyy-mm-dd", false, 0, 0, 0, 0, 0, 0},
      {"0007-01-01", "yyyy-mm-dd", true, 1, 1, 7, 0, 0, 0},
      {"12:00:00.000", "H24:MM:SS.TT", true, 0, 0, 0, 12, 0, 0},
      {"12:00:00.5", "H24:MM:SS.TT", true, 0, 0, 0, 12, 0, 0},
      {"dm 05", "\\d\\m dd", true, 0, 0, 0, 0, 0, 0},
      {"02/30/2001", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"13/01/2001", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"03-05-2001", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"03/05/2001 trailing", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"03/05/", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"", "mm/dd/yyyy", false, 0, 0, 0, 0, 0, 0},
      {"24:00", "H24:MM", false, 0, 0, 0, 0, 0, 0},
      {"10:60", "H24:MM", false, 0, 0, 0, 0, 0, 0},
      {"xyz", "", false, 0, 0, 0, 0, 0, 0},
      {"literal", "literal", false, 0, 0, 0, 0, 0, 0},
  };
  for (const ReadCase& c : cases) ExpectRead(c);
}

TEST(DateMaskRead, DayNumbersFromDigits) {
  // Digits that fit neither the mask nor a digit-only date form are a day
  // number from 1 to the last day of the last year.
  struct Case {
    const char* text;
    long day;  // 0: not readable
  } cases[] = {{"1", 1},           {" 7300 ", 7300},   {"1000000", 1000000},
               {"9999999", 0},     {"999999999", 0},   {"0", 0},
               {"99999999999999999999", 0}};
  for (const Case& c : cases) {
    ZQDateTime t(5L, 6L);
    EXPECT_EQ(t.Convert(c.text, "mm/dd/yyyy"), c.day != 0) << c.text;
    EXPECT_EQ(t.DayNumber(), c.day != 0 ? c.day : 5) << c.text;
  }
}

TEST(DateMaskRead, TwoDigitYearsFollowTheWindow) {
  ZQDateTime now(true);
  int cur = ZQDateTime::CurrentYear();
  for (int yy = 0; yy < 100; ++yy) {
    char text[16];
    std::snprintf(text, sizeof text, "01/02/%02d", yy);
    ZQDate d;
    ASSERT_TRUE(d.Convert(text, "mm/dd/yy")) << text;
    int y = d.Year();
    EXPECT_EQ(y % 100, yy) << text;
    EXPECT_GE(y, cur - 80) << text;
    EXPECT_LE(y, cur + 19) << text;
  }
  // A year without a mask token is the current year.
  ZQDate partial;
  ASSERT_TRUE(partial.Convert("2/3", "m/d"));
  EXPECT_EQ(partial.Year(), cur);
}

TEST(DateMaskRead, BadTextsKeepTheirDocumentedResults) {
  const char* bad[] = {"", "   ", "not a date", "99/99/9999", "12/", "/",
                       "\xff\xfe\xfd", "1/2/3/4/5/6/7", "-5"};
  for (const char* text : bad) {
    ZQDate d(5, 3, 2001);
    d.SetFmt("mm/dd/yyyy");
    d = text;
    EXPECT_EQ(d.DayNumber(), 0) << text;
    ZQTime t(10, 11, 12);
    t.SetFmt("H24:MM:SS");
    t = text;
    EXPECT_EQ(t.Seconds(), 36672) << text;
    EXPECT_FALSE(ZQDateTime::Validate(text, "mm/dd/yyyy")) << text;
  }
  ZQDate d(5, 3, 2001);
  d = static_cast<const char*>(nullptr);
  EXPECT_EQ(d.DayNumber(), 0);
  ZQTime t(1L);
  t = static_cast<const char*>(nullptr);
  EXPECT_EQ(t.Seconds(), 1);
  // A long run of numeric tokens against a long run of digits ends.
  std::string mask(400, 'd');
  std::string text = std::string(401, '1') + "x";
  ZQDateTime x;
  EXPECT_FALSE(x.Convert(text.c_str(), mask.c_str()));
  // Random masks and texts: a failed read changes nothing, nothing crashes.
  const char alphabet[] = "dmyHMSTa24 :/-.,\\\x80\xe5\xb9\xb4 0123456789Pp";
  uint32_t seed = 7;
  auto next = [&seed](uint32_t n) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 8) % n;
  };
  for (int i = 0; i < 3000; ++i) {
    std::string m, t;
    for (uint32_t k = next(12); k > 0; --k) m += alphabet[next(sizeof alphabet - 1)];
    for (uint32_t k = next(16); k > 0; --k) t += alphabet[next(sizeof alphabet - 1)];
    ZQDateTime r(123456L, 789L);
    ZQString printed;
    r.Print(printed, m.c_str());
    if (!r.Convert(t.c_str(), m.c_str())) {
      EXPECT_TRUE(r == ZQDateTime(123456L, 789L)) << t << " by " << m;
    }
    if (i % 10 == 0) ZQDateTime::CDate(t.c_str(), r);
  }
  std::string huge(100000, '7');
  EXPECT_FALSE(ZQDateTime::Validate(huge.c_str(), "mm/dd/yyyy"));
  EXPECT_FALSE(ZQDateTime::CDate(huge.c_str(), x));
}

TEST(DateMaskRead, OwnMasksAndParts) {
  ZQDate d;
  d.SetFmt("dd.mm.yyyy");
  d = "05.03.2001";
  EXPECT_EQ(d.DayNumber(), ZQDateTime::cal_jul(3, 5, 2001));
  EXPECT_STREQ(ZQDate(d).GetFmt(), "dd.mm.yyyy");
  d.SetFmt(nullptr);
  EXPECT_STREQ(d.GetFmt(), ZQDateTime::DefaultDateFormat());
  ZQTime t;
  t.SetFmt("HH.MM am");
  t = "01.05 pm";
  EXPECT_EQ(t.Seconds(), 13 * 3600 + 5 * 60);
  // Reading a time leaves the date alone, and a date read alone is midnight.
  ZQDateTime dt(5, 3, 2001, 8, 0, 0);
  ASSERT_TRUE(dt.Convert("10:30", "H24:MM"));
  EXPECT_EQ(dt.DayNumber(), ZQDateTime::cal_jul(3, 5, 2001));
  EXPECT_EQ(dt.Seconds(), 37800);
  ASSERT_TRUE(dt.Convert("2001-03-06", "yyyy-mm-dd"));
  EXPECT_EQ(dt.Seconds(), 0);
}

}  // namespace
