// Calendar dates and times of day, and their printing and reading by masks.
//
// A date is a day number counted from 1 January of year 1 (years 1 to 25000,
// with the British change of calendar in September 1752 built in); a time is
// a count of seconds since midnight. ZQDateTime holds both, ZQDate uses the
// day number only and ZQTime the seconds only.
//
// Masks are short texts in which letter groups stand for parts of a date or
// time: "ddd" (day of year), "dd", "d", "mm", "month", "mon", "m", "yyyy",
// "yy", "HH" (12-hour clock), "H24", "MM", "SS", "TT" with an optional digit
// (fraction of a second) and "am" in any letter case. A backslash copies the
// next character literally; any other character is copied as it is.
#ifndef ZQ_DATETIME_H
#define ZQ_DATETIME_H

#include <cstdint>

#include "zq/export.h"

class ZQString;

class ZQ_EXPORT ZQDateTime {
 public:
  // With `now` false, no date and midnight; with true, the local time of the
  // system clock, whose year also becomes the process-wide current year.
  explicit ZQDateTime(bool now = false);
  // From a day number and seconds since midnight.
  ZQDateTime(long day_number, long seconds);
  // From day, month, year, hour, minute and second (in this order).
  ZQDateTime(int day, int month, int year, int hour = 0, int minute = 0,
             int second = 0);
  ZQDateTime(const ZQDateTime& other);
  ZQDateTime& operator=(const ZQDateTime& other);
  virtual ~ZQDateTime();

  // True when the object holds a valid date and time of day.
  virtual bool OK() const;
  // The object's own mask, or the default mask of its kind when it has none.
  virtual const char* GetFmt() const;
  // Stores `mask` as the object's own mask; null or empty removes it.
  void SetFmt(const char* mask);

  // Day number of a date (month, day, year in this order); -1 when invalid.
  static long cal_jul(int month, int day, int year);
  // Splits a day number into month, day and year (in this order); a day
  // number below 1 gives all three 0.
  static void jul_cal(long day_number, int& month, int& day, int& year);
  // True when `year` has a 29 February.
  static bool IsLeapYear(int year);
  // Number of days in a month of a year (September 1752 counted as 30).
  static int DaysInMonth(int month, int year);
  // The year recorded by the latest ZQDateTime(true); 0 before the first.
  static int CurrentYear();

  // Raw parts.
  long DayNumber() const { return day_; }
  long Seconds() const { return secs_; }
  void SetDayNumber(long day_number);
  void SetSeconds(long seconds);

  int Year() const;
  int Month() const;
  int Day() const;
  int Hour() const;
  int Minute() const;
  int Second() const;
  // 0 (Sunday) to 6 (Saturday).
  int DayofWeek() const;

  // Day number plus the fraction of the day.
  operator double() const;
  ZQDateTime& operator=(double value);

  bool operator==(const ZQDateTime& other) const;
  bool operator!=(const ZQDateTime& other) const { return !(*this == other); }
  bool operator<(const ZQDateTime& other) const;
  bool operator<=(const ZQDateTime& other) const;
  bool operator>(const ZQDateTime& other) const;
  bool operator>=(const ZQDateTime& other) const;

  void AddYears(int years);
  void AddMonths(int months);
  void AddDays(long days);
  void AddHours(int hours);
  void AddMinutes(int minutes);
  void AddSeconds(long seconds);

  // Names from the locale; texts "Invalid ..." for arguments out of range.
  static const char* DayName(int day);          // 0 (Sunday) to 6
  static const char* DayAbbrName(int day);      // 0 (Sunday) to 6
  static const char* MonthName(int month);      // 1 to 12
  static const char* MonthAbbrName(int month);  // 1 to 12
  // Month number 1 to 12 of a (possibly shortened) month name; 0 if none.
  static int FindMonthNumber(const char* name);

  // Masks derived from the locale.
  static const char* DefaultDateFormat();
  static const char* DefaultTimeFormat();
  static const char* DefaultDateTimeFormat();
  // 0 month-day-year, 1 day-month-year, 2 year-month-day, 3 year-day-month.
  static int DefaultDateOrder();

  // Sets `out` to the date and time printed by `mask` (GetFmt() when null);
  // empty when there is no date.
  void Print(ZQString& out, const char* mask = nullptr) const;

  // Reads `text` by `mask` (GetFmt() when null) into this object; false,
  // and no change, when the text does not fit the mask. Two-digit years
  // fall from 80 years before to 19 years after the current year; a text of
  // digits only that misfits the mask is read as m-dd-yy, m-dd-yyyy,
  // d-mm-yy or d-mm-yyyy (day first where the locale puts it first), and
  // failing that as a day number.
  bool Convert(const char* text, const char* mask = nullptr);
  // True when `text` can be read by `mask`.
  static bool Validate(const char* text, const char* mask);
  // Reads a date (and optional time) of unknown form; false when no
  // candidate mask fits, leaving `out` unchanged.
  static bool CDate(const char* text, ZQDateTime& out);
  static bool CDate(const unsigned short* text, ZQDateTime& out);

 protected:
  // Sets `out` to the parts asked for, printed by `mask` (GetFmt() when
  // null); empty when the date is asked for and there is none.
  void PrinttoZQString(ZQString& out, bool date, bool time,
                       const char* mask) const;
  // Reads the parts asked for; false, and no change, when the text misfits.
  bool ConvertParts(const char* text, const char* mask, bool date, bool time);

  int32_t day_;   // day number; 0 or -1 means no date
  int32_t secs_;  // seconds since midnight
  char* fmt_;     // own mask, null when none
};

class ZQ_EXPORT ZQDate : public ZQDateTime {
 public:
  ZQDate();
  ZQDate(const ZQDate& other);
  ZQDate(long day_number);
  // From day, month and year (in this order).
  ZQDate(int day, int month, int year);
  // From a day, a month name and a year.
  ZQDate(int day, const char* month_name, int year);

  bool OK() const override;
  const char* GetFmt() const override;

  // Reads by the object's mask; a text that is not a date gives day number 0.
  ZQDate& operator=(const char* text);
  ZQDate& operator=(long day_number);
  ZQDate& operator=(int day_number) { return *this = static_cast<long>(day_number); }
  ZQDate& operator=(double value);
  ZQDate& operator=(const ZQDate& other);
  ZQDate& operator=(const ZQDateTime& other);

  ZQDate operator+(long days) const;
  ZQDate operator-(long days) const;
  ZQDate operator+(int days) const { return *this + static_cast<long>(days); }
  ZQDate operator-(int days) const { return *this - static_cast<long>(days); }
  ZQDate& operator+=(long days);
  ZQDate& operator-=(long days);
  // Difference of the day numbers.
  long operator-(const ZQDate& other) const;

  bool operator==(const ZQDate& other) const { return day_ == other.day_; }
  bool operator!=(const ZQDate& other) const { return day_ != other.day_; }
  bool operator<(const ZQDate& other) const { return day_ < other.day_; }
  bool operator<=(const ZQDate& other) const { return day_ <= other.day_; }
  bool operator>(const ZQDate& other) const { return day_ > other.day_; }
  bool operator>=(const ZQDate& other) const { return day_ >= other.day_; }

  // Sets `out` to the date printed by `mask` (GetFmt() when null).
  void Print(ZQString& out, const char* mask = nullptr) const;
  // Reads the date part of `text` by `mask` (GetFmt() when null).
  bool Convert(const char* text, const char* mask = nullptr);
};

class ZQ_EXPORT ZQTime : public ZQDateTime {
 public:
  ZQTime();
  ZQTime(const ZQTime& other);
  ZQTime(long seconds);
  // From hour, minute and second (in this order).
  ZQTime(int hour, int minute, int second);

  bool OK() const override;
  const char* GetFmt() const override;

  // Reads by the object's mask; a text that is not a time keeps the seconds.
  ZQTime& operator=(const char* text);
  ZQTime& operator=(long seconds);
  ZQTime& operator=(int seconds) { return *this = static_cast<long>(seconds); }
  // Only the fraction of the day is used.
  ZQTime& operator=(double value);
  ZQTime& operator=(const ZQTime& other);
  ZQTime& operator=(const ZQDateTime& other);

  // Seconds added or subtracted modulo one day.
  ZQTime& operator+=(long seconds);
  ZQTime& operator-=(long seconds);
  ZQTime operator+(long seconds) const;
  ZQTime operator-(long seconds) const;
  ZQTime operator+(int seconds) const { return *this + static_cast<long>(seconds); }
  ZQTime operator-(int seconds) const { return *this - static_cast<long>(seconds); }
  // Difference in seconds.
  long operator-(const ZQTime& other) const;

  bool operator==(const ZQTime& other) const { return secs_ == other.secs_; }
  bool operator!=(const ZQTime& other) const { return secs_ != other.secs_; }
  bool operator<(const ZQTime& other) const { return secs_ < other.secs_; }
  bool operator<=(const ZQTime& other) const { return secs_ <= other.secs_; }
  bool operator>(const ZQTime& other) const { return secs_ > other.secs_; }
  bool operator>=(const ZQTime& other) const { return secs_ >= other.secs_; }

  // Sets `out` to the time printed by `mask` (GetFmt() when null).
  void Print(ZQString& out, const char* mask = nullptr) const;
  // Reads the time part of `text` by `mask` (GetFmt() when null).
  bool Convert(const char* text, const char* mask = nullptr);
};

#endif  // ZQ_DATETIME_H
