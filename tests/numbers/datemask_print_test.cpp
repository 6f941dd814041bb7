// Printing and reading dates and times by masks with numeric tokens only;
// these do not depend on the locale's names.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
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

// The moment "yyyy-mm-dd HH:MM:SS"; a moment of only "HH:MM:SS" is on day 1,
// "#n" is midnight of day number n.
ZQDateTime At(const char* when) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  if (when[0] == '#') return ZQDateTime(std::atol(when + 1), 0L);
  if (std::sscanf(when, "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s) < 3) {
    std::sscanf(when, "%d:%d:%d", &h, &mi, &s);
    return ZQDateTime(1L, h * 3600L + mi * 60 + s);
  }
  return ZQDateTime(d, mo, y, h, mi, s);
}

TEST(DateMask, PrintAndReadByNumericMasks) {
  // 'P': `when` prints as `text`; 'R': `text` reads as `when` into a value
  // that was day 1, second 1 (a time alone leaves the date); 'B': both. A
  // null `when` is a text that is not read and leaves the value alone.
  struct Case { char dir; const char* when; const char* mask; const char* text; } cases[] = {
      {'B', "0:0:0", "HH:MM am", "00:00 am"},          {'B', "13:5:0", "HH:MM am", "01:05 pm"},
      {'B', "13:5:0", "HH:MM AM", "01:05 PM"},         {'B', "9:5:0", "HH:MM Am", "09:05 Am"},
      {'B', "12:0:0", "HH aM", "12 pM"},               {'B', "23:7:9", "H24:MM:SS", "23:07:09"},
      {'B', "11:59:59", "HH:MM:SS am", "11:59:59 am"}, {'P', "0:7:9", "H24.MM", "00.07"},
      {'R', "0:30:0", "HH:MM am", "12:30 AM"},         {'R', "12:30:0", "HH:MM am", "12:30 PM"},
      {'R', "10:0:0", "HH:MM am", "10:00am"},          {'R', nullptr, "HH:MM am", "13:00 am"},
      {'B', "12:0:0", "H24:MM:SS.TT", "12:00:00.000"}, {'R', nullptr, "H24:MM", "24:00"},
      {'R', "12:0:0", "H24:MM:SS.TT", "12:00:00.5"},   {'R', nullptr, "H24:MM", "10:60"},
      {'P', "2001-3-5", "SS.TT5|TT0|", "00.00000||"},
      {'B', "2001-3-5", "d/m/yy", " 5/ 3/01"},       {'B', "2001-3-5", "m/d/yyyy", " 3/ 5/2001"},
      {'B', "2001-3-5", "dd/mm/yyyy", "05/03/2001"}, {'B', "1999-12-25", "m-d-yyyy", "12-25-1999"},
      {'R', "2001-3-5", "mm/dd/yyyy", "3/5/2001"},     {'R', "2001-3-5", "m/d/yyyy", " 3/5/2001 "},
      {'B', "2001-3-5", "ddd/yyyy", "064/2001"},       {'B', "2000-12-31", "ddd/yyyy", "366/2000"},
      {'R', nullptr, "ddd/yyyy", "366/2001"},          {'P', "7-1-1", "yyyy yy", "0007 07"},
      {'B', "1752-9-1", "yyyy-mm-dd", "1752-09-01"},   {'B', "7-1-1", "yyyy-mm-dd", "0007-01-01"},
      // Dates after 2 September 1752 keep their Julian count and print as
      // other dates.
      {'B', "1752-12-31", "yyyy-mm-dd", "1753-01-11"}, {'P', "25000-1-1", "yyyy", "25000"},
      {'B', "25000-12-31", "yyyy-mm-dd", "25000-12-31"},
      {'R', nullptr, "yyyy-mm-dd", "25001-01-01"},
      {'B', "2001-3-5", "yyyymmdd", "20010305"},       {'R', "20001-3-5", "yyyymmdd", "200010305"},
      {'B', "2001-3-5", "yymmdd", "010305"},
      {'B', "2001-3-5 13:5:9", "yyyy-mm-dd H24:MM:SS", "2001-03-05 13:05:09"},
      {'B', "2001-3-5 13:5:0", "dd.mm.yyyy HH:MM am", "05.03.2001 01:05 pm"},
      {'B', "2001-3-5", "\\d\\m dd.mm.yyyy", "dm 05.03.2001"},
      {'P', "2001-3-5", "\\d\\m\\y \\H\\\\", "dmy H\\"}, {'P', "2001-3-5", "Q: dd!", "Q: 05!"},
      {'P', "2001-3-5", "trailing \\", "trailing "},   {'P', "2001-3-5", "", ""},
      {'R', nullptr, "mm/dd/yyyy", "02/30/2001"},      {'R', nullptr, "mm/dd/yyyy", "13/01/2001"},
      {'R', nullptr, "mm/dd/yyyy", "03-05-2001"},      {'R', nullptr, "mm/dd/yyyy", "03/05/"},
      {'R', nullptr, "mm/dd/yyyy", "03/05/2001 x"},    {'R', nullptr, "mm/dd/yyyy", ""},
      {'R', nullptr, "", "xyz"},                       {'R', nullptr, "literal", "literal"},
      // Digits that fit neither the mask nor a digit-only date form are a day
      // number from 1 to the last day of the last year.
      {'R', "#1", "mm/dd/yyyy", "1"},                  {'R', "#7300", "mm/dd/yyyy", " 7300 "},
      {'R', "#1000000", "mm/dd/yyyy", "1000000"},      {'R', nullptr, "mm/dd/yyyy", "9999999"},
      {'R', nullptr, "mm/dd/yyyy", "999999999"},       {'R', nullptr, "mm/dd/yyyy", "0"},
      {'R', nullptr, "mm/dd/yyyy", "99999999999999999999"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string("'") + c.text + "' by '" + c.mask + "'");
    EXPECT_EQ(c.dir != 'R' ? PrintAs(At(c.when), c.mask) : c.text, c.text);
    if (c.dir == 'P') continue;
    ZQDateTime t(1L, 1L), want = c.when != nullptr ? At(c.when) : t;
    EXPECT_EQ(t.Convert(c.text, c.mask), c.when != nullptr);
    EXPECT_TRUE(t == want);
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

TEST(DateMaskRead, TwoDigitYearsFollowTheWindow) {
  ZQDateTime now(true);
  int cur = ZQDateTime::CurrentYear();
  for (int yy = 0; yy < 100; ++yy) {
    char text[16];
    std::snprintf(text, sizeof text, "01/02/%02d", yy);
    ZQDate d;
    ASSERT_TRUE(d.Convert(text, "mm/dd/yy")) << text;
    EXPECT_TRUE(d.Year() % 100 == yy && d.Year() >= cur - 80 && d.Year() <= cur + 19) << text;
  }
  // A year without a mask token is the current year.
  ZQDate partial;
  ASSERT_TRUE(partial.Convert("2/3", "m/d"));
  EXPECT_EQ(partial.Year(), cur);
}

TEST(DateMaskRead, BadTextsKeepTheirDocumentedResults) {
  const char* bad[] = {"",  "   ", "not a date", "99/99/9999", "12/", "/", "\xff\xfe\xfd",
                       "1/2/3/4/5/6/7", "-5", nullptr};
  for (const char* text : bad) {
    ZQDate d(5, 3, 2001);
    ZQTime t(10, 11, 12);
    d.SetFmt("mm/dd/yyyy");
    t.SetFmt("H24:MM:SS");
    d = text;
    t = text;
    EXPECT_EQ(d.DayNumber(), 0) << text;
    EXPECT_EQ(t.Seconds(), 36672) << text;
    EXPECT_TRUE(text == nullptr || !ZQDateTime::Validate(text, "mm/dd/yyyy")) << text;
  }
  // A long run of numeric tokens against a long run of digits ends.
  ZQDateTime x;
  EXPECT_FALSE(x.Convert((std::string(401, '1') + "x").c_str(), std::string(400, 'd').c_str()));
  std::string huge(100000, '7');
  EXPECT_FALSE(ZQDateTime::Validate(huge.c_str(), "mm/dd/yyyy"));
  EXPECT_FALSE(ZQDateTime::CDate(huge.c_str(), x));
  // Random masks and texts: a failed read changes nothing, nothing crashes.
  const char alphabet[] = "dmyHMSTa24 :/-.,\\\x80\xe5\xb9\xb4 0123456789Pp";
  uint32_t seed = 7;
  auto next = [&seed](uint32_t n) { return ((seed = seed * 1103515245u + 12345u) >> 8) % n; };
  for (int i = 0; i < 3000; ++i) {
    std::string m, t;
    for (uint32_t k = next(12); k > 0; --k) m += alphabet[next(sizeof alphabet - 1)];
    for (uint32_t k = next(16); k > 0; --k) t += alphabet[next(sizeof alphabet - 1)];
    ZQDateTime r(123456L, 789L);
    ZQString printed;
    r.Print(printed, m.c_str());
    EXPECT_TRUE(r.Convert(t.c_str(), m.c_str()) || r == ZQDateTime(123456L, 789L))
        << t << " by " << m;
    if (i % 10 == 0) ZQDateTime::CDate(t.c_str(), r);
  }
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
  EXPECT_TRUE(dt == ZQDateTime(5, 3, 2001, 10, 30, 0));
  ASSERT_TRUE(dt.Convert("2001-03-06", "yyyy-mm-dd"));
  EXPECT_EQ(dt.Seconds(), 0);
}

}  // namespace
