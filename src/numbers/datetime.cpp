// Calendar arithmetic and operators of ZQDateTime, ZQDate and ZQTime.
#include "zq/datetime.h"

#include <atomic>
#include <cmath>
#include <cstring>

#include "numbers/datemask.h"
#include "platform/clock.h"

namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int kMinYear = 1;
constexpr int kMaxYear = 25000;
constexpr int kReformYear = 1752;
constexpr int kReformDays = 11;  // 3 to 13 September 1752 never happened

const int kMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Year of the latest ZQDateTime(true); read by the two-digit year window.
std::atomic<int> g_current_year{0};

// Leap days in years 1 to y; deliberately blind to the 4000-year rule.
int64_t LeapDaysThrough(int64_t y) {
  if (y < 1701) return y / 4;
  return y / 4 - (y - 1700) / 100 + (y - 1600) / 400;
}

int64_t YearLength(int64_t y) {
  return 365 + (ZQDateTime::IsLeapYear(static_cast<int>(y)) ? 1 : 0);
}

// Wraps a 64-bit result into the 32-bit day or second field.
int32_t Wrap32(int64_t v) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v)));
}

char* CopyMask(const char* mask) {
  if (mask == nullptr || *mask == '\0') return nullptr;
  size_t n = std::strlen(mask);
  char* p = new char[n + 1];
  std::memcpy(p, mask, n + 1);
  return p;
}

int64_t FloorDiv(int64_t a, int64_t b) {
  int64_t q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
  return q;
}

// Adds seconds; whole days carry into the day number, and going below
// midnight borrows them.
void CarrySeconds(int32_t& day, int32_t& secs, int64_t delta) {
  int64_t total = int64_t{secs} + delta;
  int64_t days = FloorDiv(total, kSecondsPerDay);
  secs = static_cast<int32_t>(total - days * kSecondsPerDay);
  day = Wrap32(int64_t{day} + days);
}

}  // namespace

int64_t zq::FirstDayOfYear(int64_t year) {
  return (year - 1) * 365 + LeapDaysThrough(year - 1) + 1 -
         (year > kReformYear ? kReformDays : 0);
}

// ---- ZQDateTime: construction -----------------------------------------------

ZQDateTime::ZQDateTime(bool now) : day_(0), secs_(0), fmt_(nullptr) {
  if (!now) return;
  zq::platform::BrokenTime t;
  if (!zq::platform::LocalNow(t)) return;
  // A two-digit year count below 70 is taken as 20xx.
  int year = t.year_since_1900 + (t.year_since_1900 < 70 ? 2000 : 1900);
  day_ = Wrap32(cal_jul(t.month0 + 1, t.day, year));
  secs_ = t.hour * 3600 + t.minute * 60 + t.second;
  g_current_year.store(year, std::memory_order_relaxed);
}

ZQDateTime::ZQDateTime(long day_number, long seconds)
    : day_(static_cast<int32_t>(day_number)),
      secs_(static_cast<int32_t>(seconds)),
      fmt_(nullptr) {}

ZQDateTime::ZQDateTime(int day, int month, int year, int hour, int minute,
                       int second)
    : day_(Wrap32(cal_jul(month, day, year))),
      secs_(Wrap32(int64_t{hour} * 3600 + int64_t{minute} * 60 + second)),
      fmt_(nullptr) {}

ZQDateTime::ZQDateTime(const ZQDateTime& other)
    : day_(other.day_), secs_(other.secs_), fmt_(CopyMask(other.fmt_)) {}

ZQDateTime& ZQDateTime::operator=(const ZQDateTime& other) {
  if (this == &other) return *this;
  day_ = other.day_;
  secs_ = other.secs_;
  SetFmt(other.fmt_);
  return *this;
}

ZQDateTime::~ZQDateTime() { delete[] fmt_; }

bool ZQDateTime::OK() const {
  return day_ >= 1 && secs_ >= 0 && secs_ < kSecondsPerDay;
}

const char* ZQDateTime::GetFmt() const {
  return fmt_ != nullptr ? fmt_ : DefaultDateTimeFormat();
}

void ZQDateTime::SetFmt(const char* mask) {
  if (mask == fmt_) return;
  char* copy = CopyMask(mask);
  delete[] fmt_;
  fmt_ = copy;
}

void ZQDateTime::SetDayNumber(long day_number) {
  day_ = static_cast<int32_t>(day_number);
}

void ZQDateTime::SetSeconds(long seconds) {
  secs_ = static_cast<int32_t>(seconds);
}

int ZQDateTime::CurrentYear() {
  return g_current_year.load(std::memory_order_relaxed);
}

// ---- calendar ----------------------------------------------------------------

bool ZQDateTime::IsLeapYear(int y) {
  if (y % 4 != 0 || y % 4000 == 0) return false;
  if (y % 100 != 0) return true;
  return y % 400 == 0 || y <= 1700;
}

int ZQDateTime::DaysInMonth(int month, int year) {
  if (month < 1 || month > 12) return 0;
  if (month == 2 && IsLeapYear(year)) return 29;
  return kMonthDays[month - 1];
}

long ZQDateTime::cal_jul(int month, int day, int year) {
  if (year < kMinYear || year > kMaxYear || month < 1 || month > 12 ||
      day < 1 || day > DaysInMonth(month, year)) {
    return -1;
  }
  int64_t n = int64_t{year - 1} * 365 + LeapDaysThrough(year - 1) + day;
  for (int m = 1; m < month; ++m) n += DaysInMonth(m, year);
  // Dates of 1752 keep their Julian count, even after 2 September.
  if (year > kReformYear) n -= kReformDays;
  return static_cast<long>(n);
}

void ZQDateTime::jul_cal(long day_number, int& month, int& day, int& year) {
  int64_t n = static_cast<int32_t>(day_number);
  if (n < 1) {
    month = day = year = 0;
    return;
  }
  int64_t m = n - 1;
  int64_t y0 = m / 366;
  int64_t y = y0 + 1;
  int64_t base = y0 * 365 + LeapDaysThrough(y0);
  bool reformed = false;
  if (y > kReformYear || (y == kReformYear && base > 246)) {
    reformed = true;
    base -= kReformDays;
  }
  // The first guess lags the true year by about one year in 170, so this
  // walk is short even for the largest day numbers.
  for (;;) {
    int64_t next = base + YearLength(y);
    if (next > m && (y != kReformYear || reformed || base + 355 > m)) break;
    base = next;
    if (y == kReformYear && !reformed) {
      reformed = true;
      base -= kReformDays;
    }
    ++y;
  }
  int64_t r = n - 1 - base;
  int mon = 1;
  for (; mon < 12; ++mon) {
    int len = (y == kReformYear && mon == 9)
                  ? 19
                  : DaysInMonth(mon, static_cast<int>(y));
    if (len > r) break;
    r -= len;
  }
  int64_t d = r + 1;
  if (y == kReformYear && mon == 9 && d > 2) d += kReformDays;
  month = mon;
  day = static_cast<int>(d);
  year = static_cast<int>(y);
}

int ZQDateTime::Year() const {
  int m, d, y;
  jul_cal(day_, m, d, y);
  return y;
}

int ZQDateTime::Month() const {
  int m, d, y;
  jul_cal(day_, m, d, y);
  return m;
}

int ZQDateTime::Day() const {
  int m, d, y;
  jul_cal(day_, m, d, y);
  return d;
}

int ZQDateTime::Hour() const { return secs_ / 3600; }
int ZQDateTime::Minute() const { return (secs_ / 60) % 60; }
int ZQDateTime::Second() const { return secs_ % 60; }

int ZQDateTime::DayofWeek() const {
  int64_t w = (int64_t{day_} + 5) % 7;
  return static_cast<int>(w < 0 ? w + 7 : w);
}

// ---- conversions and comparisons ----------------------------------------------

ZQDateTime::operator double() const {
  double v = day_ < 0 ? 0.0 : static_cast<double>(day_);
  if (secs_ >= 1) v += static_cast<double>(secs_) / kSecondsPerDay;
  return v;
}

ZQDateTime& ZQDateTime::operator=(double value) {
  // Values that do not fit the 32-bit day number mean no date.
  if (!std::isfinite(value) || value >= 2147483648.0 || value <= -2147483649.0) {
    day_ = 0;
    secs_ = 0;
    return *this;
  }
  day_ = static_cast<int32_t>(value);
  int64_t s = static_cast<int64_t>((value - day_) * kSecondsPerDay + 0.49999);
  // A fraction within half a second of the next day rounds up into it.
  if (s >= kSecondsPerDay) {
    s -= kSecondsPerDay;
    day_ = Wrap32(int64_t{day_} + 1);
  }
  secs_ = static_cast<int32_t>(s);
  return *this;
}

bool ZQDateTime::operator==(const ZQDateTime& o) const {
  return day_ == o.day_ && secs_ == o.secs_;
}

bool ZQDateTime::operator<(const ZQDateTime& o) const {
  return day_ != o.day_ ? day_ < o.day_ : secs_ < o.secs_;
}

bool ZQDateTime::operator<=(const ZQDateTime& o) const { return !(o < *this); }
bool ZQDateTime::operator>(const ZQDateTime& o) const { return o < *this; }
bool ZQDateTime::operator>=(const ZQDateTime& o) const { return !(*this < o); }

// ---- arithmetic -----------------------------------------------------------------

void ZQDateTime::AddYears(int years) {
  if (day_ < 1) return;
  int m, d, y;
  jul_cal(day_, m, d, y);
  int64_t ny = int64_t{y} + years;
  if (ny < kMinYear || ny > kMaxYear) {
    day_ = -1;
    return;
  }
  long n = cal_jul(m, d, static_cast<int>(ny));
  if (n == -1 && m == 2 && d == 29) n = cal_jul(2, 28, static_cast<int>(ny));
  day_ = static_cast<int32_t>(n);
}

// Moving by months keeps the day of the month; a day that the target month
// lacks becomes its last day (31 January plus one month is 28 or 29
// February). A year outside 1 to 25000 gives -1, no date.
void ZQDateTime::AddMonths(int months) {
  if (day_ < 1) return;
  int m, d, y;
  jul_cal(day_, m, d, y);
  int64_t total = int64_t{y} * 12 + (m - 1) + months;
  int64_t ny = FloorDiv(total, 12);
  int nm = static_cast<int>(total - ny * 12) + 1;
  if (ny < kMinYear || ny > kMaxYear) {
    day_ = -1;
    return;
  }
  int last = DaysInMonth(nm, static_cast<int>(ny));
  day_ = static_cast<int32_t>(cal_jul(nm, d < last ? d : last, static_cast<int>(ny)));
}

void ZQDateTime::AddDays(long days) {
  day_ = Wrap32(int64_t{day_} + static_cast<int32_t>(days));
}

// Hours and minutes carry into the day number as seconds do.
void ZQDateTime::AddHours(int hours) {
  CarrySeconds(day_, secs_, int64_t{hours} * 3600);
}

void ZQDateTime::AddMinutes(int minutes) {
  CarrySeconds(day_, secs_, int64_t{minutes} * 60);
}

void ZQDateTime::AddSeconds(long seconds) {
  CarrySeconds(day_, secs_, static_cast<int32_t>(seconds));
}

// ---- ZQDate -------------------------------------------------------------------

ZQDate::ZQDate() : ZQDateTime(false) {}
ZQDate::ZQDate(const ZQDate& other) : ZQDateTime(other) {}
ZQDate::ZQDate(long day_number) : ZQDateTime(day_number, 0L) {}
ZQDate::ZQDate(int day, int month, int year) : ZQDateTime(day, month, year) {}

ZQDate::ZQDate(int day, const char* month_name, int year) : ZQDateTime(false) {
  day_ = static_cast<int32_t>(cal_jul(FindMonthNumber(month_name), day, year));
}

bool ZQDate::OK() const { return day_ >= 1; }

const char* ZQDate::GetFmt() const {
  return fmt_ != nullptr ? fmt_ : DefaultDateFormat();
}

ZQDate& ZQDate::operator=(long day_number) {
  day_ = static_cast<int32_t>(day_number);
  secs_ = 0;
  return *this;
}

ZQDate& ZQDate::operator=(double value) {
  ZQDateTime::operator=(value);
  secs_ = 0;
  return *this;
}

ZQDate& ZQDate::operator=(const ZQDate& other) {
  ZQDateTime::operator=(other);
  return *this;
}

ZQDate& ZQDate::operator=(const ZQDateTime& other) {
  day_ = static_cast<int32_t>(other.DayNumber());
  secs_ = 0;
  return *this;
}

ZQDate ZQDate::operator+(long days) const {
  ZQDate r(*this);
  r += days;
  return r;
}

ZQDate ZQDate::operator-(long days) const {
  ZQDate r(*this);
  r -= days;
  return r;
}

ZQDate& ZQDate::operator+=(long days) {
  AddDays(days);
  return *this;
}

ZQDate& ZQDate::operator-=(long days) {
  day_ = Wrap32(int64_t{day_} - static_cast<int32_t>(days));
  return *this;
}

long ZQDate::operator-(const ZQDate& other) const {
  return Wrap32(int64_t{day_} - other.day_);
}

// ---- ZQTime -------------------------------------------------------------------

namespace {

int32_t NormalizeSeconds(int64_t s) {
  s %= kSecondsPerDay;
  if (s < 0) s += kSecondsPerDay;
  return static_cast<int32_t>(s);
}

}  // namespace

ZQTime::ZQTime() : ZQDateTime(false) {}
ZQTime::ZQTime(const ZQTime& other) : ZQDateTime(other) {}
ZQTime::ZQTime(long seconds) : ZQDateTime(0L, seconds) {}

ZQTime::ZQTime(int hour, int minute, int second) : ZQDateTime(false) {
  secs_ = Wrap32(int64_t{hour} * 3600 + int64_t{minute} * 60 + second);
}

bool ZQTime::OK() const { return secs_ >= 0 && secs_ < kSecondsPerDay; }

const char* ZQTime::GetFmt() const {
  return fmt_ != nullptr ? fmt_ : DefaultTimeFormat();
}

ZQTime& ZQTime::operator=(long seconds) {
  secs_ = static_cast<int32_t>(seconds);
  day_ = 0;
  return *this;
}

ZQTime& ZQTime::operator=(double value) {
  day_ = 0;
  if (!std::isfinite(value)) {
    secs_ = 0;
    return *this;
  }
  double fraction = value - std::floor(value);
  secs_ = NormalizeSeconds(
      static_cast<int64_t>(fraction * kSecondsPerDay + 0.49999));
  return *this;
}

ZQTime& ZQTime::operator=(const ZQTime& other) {
  ZQDateTime::operator=(other);
  return *this;
}

ZQTime& ZQTime::operator=(const ZQDateTime& other) {
  secs_ = static_cast<int32_t>(other.Seconds());
  day_ = 0;
  return *this;
}

ZQTime& ZQTime::operator+=(long seconds) {
  secs_ = NormalizeSeconds(int64_t{secs_} + static_cast<int32_t>(seconds));
  return *this;
}

ZQTime& ZQTime::operator-=(long seconds) {
  secs_ = NormalizeSeconds(int64_t{secs_} - static_cast<int32_t>(seconds));
  return *this;
}

ZQTime ZQTime::operator+(long seconds) const {
  ZQTime r(*this);
  r += seconds;
  return r;
}

ZQTime ZQTime::operator-(long seconds) const {
  ZQTime r(*this);
  r -= seconds;
  return r;
}

long ZQTime::operator-(const ZQTime& other) const {
  return Wrap32(int64_t{secs_} - other.secs_);
}
