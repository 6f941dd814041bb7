// Date and time masks: the locale state, names, printing and reading.
#include "numbers/datemask.h"

#include <ace/Guard_T.h>
#include <ace/Thread_Mutex.h>
#include <strings.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "zq/datetime.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"

namespace zq {
namespace {

DateLocale g_locale;
std::atomic<bool> g_locale_built{false};

ACE_Thread_Mutex& LocaleMutex() {
  static ACE_Thread_Mutex mutex;
  return mutex;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

int CharLen(const char* p) {
  return platform::CharLength(p, strnlen(p, 16));
}

void CopyText(char* dst, size_t cap, const char* src) {
  std::snprintf(dst, cap, "%s", src);
}

// Characters that would read as (the start of) a mask token.
bool NeedsEscape(char c) {
  return std::strchr("dmyHMSTaA\\", c) != nullptr;
}

// The first character that is not a digit and follows a digit, escaped when
// it would otherwise read as a mask token; empty when there is none.
void FindSeparator(const char* s, char* sep, size_t cap) {
  sep[0] = '\0';
  for (const char* p = s; *p != '\0'; ++p) {
    if (!IsDigit(p[0]) || p[1] == '\0' || IsDigit(p[1])) continue;
    int len = CharLen(p + 1);
    std::string out;
    if (len == 1 && NeedsEscape(p[1])) out += '\\';
    out.append(p + 1, len);
    CopyText(sep, cap, out.c_str());
    return;
  }
}

// The first three runs of digits of `s` (0 for runs that are missing).
void ReadThreeNumbers(const char* s, int nums[3]) {
  int k = 0;
  nums[0] = nums[1] = nums[2] = 0;
  for (const char* p = s; *p != '\0' && k < 3;) {
    if (!IsDigit(*p)) {
      ++p;
      continue;
    }
    int v = 0;
    for (; IsDigit(*p); ++p) {
      if (v < 100000000) v = v * 10 + (*p - '0');
    }
    nums[k++] = v;
  }
}

void BuildLocale(DateLocale& loc) {
  ZQGlob::SetLocale();
  // 31 October 1999 15:03:01, a Sunday.
  platform::BrokenTime sample = {99, 9, 31, 15, 3, 1, 0};
  char buf[256];
  char sep[16];

  platform::FormatTime(buf, sizeof buf, "%x", sample);
  FindSeparator(buf, sep, sizeof sep);
  int n[3];
  ReadThreeNumbers(buf, n);
  // October prints as 10, never 9, so order 3 is never chosen here.
  if (n[2] == 31) {
    loc.order = 2;
    std::snprintf(loc.date_mask, sizeof loc.date_mask, "yyyy%smm%sdd", sep, sep);
  } else if (n[2] == 9) {
    loc.order = 3;
    std::snprintf(loc.date_mask, sizeof loc.date_mask, "yyyy%sdd%smm", sep, sep);
  } else if (n[0] == 31) {
    loc.order = 1;
    std::snprintf(loc.date_mask, sizeof loc.date_mask, "dd%smm%syyyy", sep, sep);
  } else {
    loc.order = 0;
    std::snprintf(loc.date_mask, sizeof loc.date_mask, "mm%sdd%syyyy", sep, sep);
  }

  platform::FormatTime(buf, sizeof buf, "%X", sample);
  FindSeparator(buf, sep, sizeof sep);
  std::snprintf(loc.time_mask, sizeof loc.time_mask, "H24%sMM%sSS", sep, sep);
  std::snprintf(loc.datetime_mask, sizeof loc.datetime_mask, "%s %s",
                loc.date_mask, loc.time_mask);

  for (int i = 0; i < 7; ++i) {
    platform::BrokenTime t = {99, 9, 31 + i, 12, 0, 0, i};
    platform::FormatTime(loc.day_full[i], sizeof loc.day_full[i], "%A", t);
    platform::FormatTime(loc.day_abbr[i], sizeof loc.day_abbr[i], "%a", t);
  }
  for (int i = 0; i < 12; ++i) {
    platform::BrokenTime t = {99, i, 1, 12, 0, 0, 0};
    platform::FormatTime(loc.month_full[i], sizeof loc.month_full[i], "%B", t);
    platform::FormatTime(loc.month_abbr[i], sizeof loc.month_abbr[i], "%b", t);
  }
}

}  // namespace

const DateLocale& GetDateLocale() {
  if (!g_locale_built.load(std::memory_order_acquire)) {
    ACE_Guard<ACE_Thread_Mutex> guard(LocaleMutex());
    if (!g_locale_built.load(std::memory_order_relaxed)) {
      BuildLocale(g_locale);
      g_locale_built.store(true, std::memory_order_release);
    }
  }
  return g_locale;
}

namespace {

// ---- mask tokens ---------------------------------------------------------------

enum Kind {
  kLiteral,
  kDayOfYear,
  kDay2,
  kDay,
  kMonth2,
  kMonthName,
  kMonthAbbr,
  kMonth,
  kYear4,
  kYear2,
  kHour12,
  kHour24,
  kMinute,
  kSecond,
  kFraction,
  kAmPm
};

struct Token {
  Kind kind;
  const char* lit;  // literal text (kLiteral)
  int lit_len;
  int arg;          // digits of kFraction; letter cases of kAmPm
  int mask_len;     // mask characters consumed
};

struct TokenText {
  const char* text;
  Kind kind;
};

// Tried in this order; the first match at a position wins.
const TokenText kDateTokens[] = {
    {"ddd", kDayOfYear}, {"dd", kDay2},        {"d", kDay},
    {"mm", kMonth2},     {"month", kMonthName}, {"mon", kMonthAbbr},
    {"m", kMonth},       {"yyyy", kYear4},     {"yy", kYear2}};
const TokenText kTimeTokens[] = {
    {"HH", kHour12}, {"H24", kHour24}, {"MM", kMinute}, {"SS", kSecond}};

constexpr int kAmUpper = 1;   // the mask's "a" is upper case
constexpr int kMUpper = 2;    // the mask's "m" is upper case

Token NextToken(const char* p, bool date, bool time) {
  if (date) {
    for (const TokenText& t : kDateTokens) {
      size_t n = std::strlen(t.text);
      if (std::strncmp(p, t.text, n) == 0) {
        return {t.kind, nullptr, 0, 0, static_cast<int>(n)};
      }
    }
  }
  if (time) {
    for (const TokenText& t : kTimeTokens) {
      size_t n = std::strlen(t.text);
      if (std::strncmp(p, t.text, n) == 0) {
        return {t.kind, nullptr, 0, 0, static_cast<int>(n)};
      }
    }
    if (p[0] == 'T' && p[1] == 'T') {
      if (IsDigit(p[2])) return {kFraction, nullptr, 0, p[2] - '0', 3};
      return {kFraction, nullptr, 0, 3, 2};
    }
    if ((p[0] == 'a' || p[0] == 'A') && (p[1] == 'm' || p[1] == 'M')) {
      int cases = (p[0] == 'A' ? kAmUpper : 0) | (p[1] == 'M' ? kMUpper : 0);
      return {kAmPm, nullptr, 0, cases, 2};
    }
  }
  if (p[0] == '\\') {
    if (p[1] == '\0') return {kLiteral, p + 1, 0, 0, 1};
    int len = CharLen(p + 1);
    return {kLiteral, p + 1, len, 0, 1 + len};
  }
  int len = CharLen(p);
  return {kLiteral, p, len, 0, len};
}

std::vector<Token> Tokenize(const char* mask, bool date, bool time) {
  std::vector<Token> out;
  for (const char* p = mask; *p != '\0';) {
    Token t = NextToken(p, date, time);
    out.push_back(t);
    p += t.mask_len;
  }
  return out;
}

bool IsDateKind(Kind k) { return k >= kDayOfYear && k <= kYear2; }
bool IsTimeKind(Kind k) { return k >= kHour12; }

// ---- reading -------------------------------------------------------------------

// Two-digit years fall within the 100 years from 80 years before the current
// year to 19 years after it (in 2026: 46 to 99 are 1946 to 1999, 00 to 45
// are 2000 to 2045).
int WindowYear(int yy, int current) {
  int y = current - current % 100 + yy;
  if (y > current + 19) y -= 100;
  if (y < current - 80) y += 100;
  if (y < 1) y += 100;
  return y;
}

struct Fields {
  int year = -1;
  int month = -1;
  int day = -1;
  int doy = -1;
  int hour = -1;
  int minute = -1;
  int second = -1;
  int ampm = -1;  // 0 before noon, 1 from noon
};

class Matcher {
 public:
  Matcher(const std::vector<Token>& toks, const DateLocale& loc, int current)
      : toks_(toks), loc_(loc), current_(current) {}

  bool Match(const char* text, Fields& out) {
    // Each token is one level of recursion; no sensible mask comes near.
    if (toks_.size() > kMaxTokens) return false;
    budget_ = 20000;
    return Run(0, text, Fields(), out);
  }

 private:
  struct Range {
    int min_width, max_width, min_value, max_value;
  };

  static bool NumberRange(Kind k, Range& r) {
    switch (k) {
      case kDayOfYear: r = {1, 3, 1, 366}; return true;
      case kDay2: case kDay: r = {1, 2, 1, 31}; return true;
      case kMonth2: case kMonth: r = {1, 2, 1, 12}; return true;
      case kYear4: r = {1, 5, 0, 99999}; return true;
      case kYear2: r = {1, 2, 0, 99}; return true;
      case kHour12: case kHour24: r = {1, 2, 0, 23}; return true;
      case kMinute: case kSecond: r = {1, 2, 0, 59}; return true;
      default: return false;
    }
  }

  // Stores a number read for token kind `k`; false when it is out of range.
  bool Store(Kind k, int value, int width, Fields& f) const {
    switch (k) {
      case kDayOfYear: f.doy = value; break;
      case kDay2: case kDay: f.day = value; break;
      case kMonth2: case kMonth: f.month = value; break;
      case kYear4:
        if (width <= 2) {
          f.year = WindowYear(value, current_);
        } else {
          if (value < 1) return false;
          f.year = value;
        }
        break;
      case kYear2: f.year = WindowYear(value, current_); break;
      case kHour12: case kHour24: f.hour = value; break;
      case kMinute: f.minute = value; break;
      case kSecond: f.second = value; break;
      default: return false;
    }
    return true;
  }

  bool Run(size_t ti, const char* p, const Fields& f, Fields& out) {
    if (--budget_ < 0) return false;
    if (ti == toks_.size()) {
      while (IsBlank(*p)) ++p;
      if (*p != '\0') return false;
      out = f;
      return true;
    }
    const Token& t = toks_[ti];
    Range range;
    if (t.kind == kLiteral) {
      if (t.lit_len == 1 && IsBlank(t.lit[0])) {
        // A blank in the mask stands for any run of blanks, even none.
        while (IsBlank(*p)) ++p;
        return Run(ti + 1, p, f, out);
      }
      if (std::strncmp(p, t.lit, t.lit_len) != 0) return false;
      return Run(ti + 1, p + t.lit_len, f, out);
    }
    while (IsBlank(*p)) ++p;
    if (NumberRange(t.kind, range)) {
      int avail = 0;
      while (avail < range.max_width && IsDigit(p[avail])) ++avail;
      // Longest first, except that a four-digit year, as printed, is tried
      // before a five-digit one.
      int widths[5];
      int nw = 0;
      if (t.kind == kYear4 && avail == 5) widths[nw++] = 4;
      for (int w = avail; w >= range.min_width; --w) {
        if (!(t.kind == kYear4 && avail == 5 && w == 4)) widths[nw++] = w;
      }
      for (int i = 0; i < nw; ++i) {
        int w = widths[i];
        int v = 0;
        for (int i = 0; i < w; ++i) v = v * 10 + (p[i] - '0');
        if (v < range.min_value || v > range.max_value) continue;
        Fields g = f;
        if (Store(t.kind, v, w, g) && Run(ti + 1, p + w, g, out)) return true;
      }
      return false;
    }
    switch (t.kind) {
      case kMonthName:
      case kMonthAbbr:
        return RunMonthName(ti, p, f, out);
      case kAmPm: {
        char a = p[0];
        if ((a != 'a' && a != 'A' && a != 'p' && a != 'P') ||
            (p[1] != 'm' && p[1] != 'M')) {
          return false;
        }
        Fields g = f;
        g.ampm = (a == 'p' || a == 'P') ? 1 : 0;
        return Run(ti + 1, p + 2, g, out);
      }
      case kFraction: {
        if (t.arg == 0) return Run(ti + 1, p, f, out);
        int avail = 0;
        while (avail < t.arg && IsDigit(p[avail])) ++avail;
        for (int w = avail; w >= 1; --w) {
          if (Run(ti + 1, p + w, f, out)) return true;
        }
        return false;
      }
      default:
        return false;
    }
  }

  // A month name: any full or abbreviated name of the locale, or a word that
  // FindMonthNumber knows (such as "Sept"); longer matches are tried first.
  bool RunMonthName(size_t ti, const char* p, const Fields& f, Fields& out) {
    std::vector<std::pair<int, int>> cands;  // (length, month)
    for (int i = 0; i < 12; ++i) {
      for (const char* name : {loc_.month_full[i], loc_.month_abbr[i]}) {
        size_t n = std::strlen(name);
        if (n > 0 && strncasecmp(p, name, n) == 0) {
          cands.emplace_back(static_cast<int>(n), i + 1);
        }
      }
    }
    char word[64];
    int w = 0;
    while (w < 63 && p[w] != '\0' &&
           (static_cast<unsigned char>(p[w]) >= 0x80 ||
            (p[w] >= 'a' && p[w] <= 'z') || (p[w] >= 'A' && p[w] <= 'Z'))) {
      word[w] = p[w];
      ++w;
    }
    word[w] = '\0';
    int month = ZQDateTime::FindMonthNumber(word);
    if (month > 0) cands.emplace_back(w, month);
    std::sort(cands.begin(), cands.end(),
              [](const std::pair<int, int>& a, const std::pair<int, int>& b) {
                return a.first > b.first;
              });
    for (const auto& c : cands) {
      Fields g = f;
      g.month = c.second;
      if (Run(ti + 1, p + c.first, g, out)) return true;
    }
    return false;
  }

  static constexpr size_t kMaxTokens = 256;

  const std::vector<Token>& toks_;
  const DateLocale& loc_;
  int current_;
  int budget_ = 0;
};

// Length of the locale's day name (full or abbreviated) that starts `p`.
int DayNameLength(const char* p, const DateLocale& loc) {
  int best = 0;
  for (int i = 0; i < 7; ++i) {
    for (const char* name : {loc.day_full[i], loc.day_abbr[i]}) {
      int n = static_cast<int>(std::strlen(name));
      if (n > best && strncasecmp(p, name, n) == 0) best = n;
    }
  }
  return best;
}

// Matches `text`, allowing a leading day name when a date is read.
bool MatchText(const std::vector<Token>& toks, const char* text, bool date,
               const DateLocale& loc, int current, Fields& out) {
  Matcher m(toks, loc, current);
  while (IsBlank(*text)) ++text;
  if (m.Match(text, out)) return true;
  if (!date) return false;
  int n = DayNameLength(text, loc);
  if (n == 0) return false;
  text += n;
  while (*text == ',' || *text == '.' || IsBlank(*text)) ++text;
  return m.Match(text, out);
}

int CurrentYearForWindow() {
  int y = ZQDateTime::CurrentYear();
  if (y == 0) {
    ZQDateTime now(true);
    y = ZQDateTime::CurrentYear();
  }
  return y > 0 ? y : 2000;
}

// True when `text` is digits only (blanks around them allowed); the digits
// are copied into `digits`.
bool DigitsOnly(const char* text, std::string& digits) {
  digits.clear();
  const char* p = text;
  while (IsBlank(*p)) ++p;
  while (IsDigit(*p)) digits += *p++;
  while (IsBlank(*p)) ++p;
  return *p == '\0' && !digits.empty();
}

}  // namespace
}  // namespace zq

using zq::DateLocale;
using zq::GetDateLocale;

// ---- names and default masks ---------------------------------------------------

const char* ZQDateTime::DayName(int day) {
  if (day < 0 || day > 6) return "Invalid day number";
  return GetDateLocale().day_full[day];
}

const char* ZQDateTime::DayAbbrName(int day) {
  if (day < 0 || day > 6) return "Invalid day abbreviation";
  return GetDateLocale().day_abbr[day];
}

const char* ZQDateTime::MonthName(int month) {
  if (month < 1 || month > 12) return "Invalid month number";
  return GetDateLocale().month_full[month - 1];
}

const char* ZQDateTime::MonthAbbrName(int month) {
  if (month < 1 || month > 12) return "Invalid month abbreviation";
  return GetDateLocale().month_abbr[month - 1];
}

int ZQDateTime::FindMonthNumber(const char* name) {
  if (name == nullptr) return 0;
  size_t n = std::strlen(name);
  if (n < 3) return 0;
  const DateLocale& loc = GetDateLocale();
  for (int i = 0; i < 12; ++i) {
    if (std::strlen(loc.month_full[i]) >= n &&
        strncasecmp(name, loc.month_full[i], n) == 0) {
      return i + 1;
    }
  }
  if (n == 3) {
    for (int i = 0; i < 12; ++i) {
      if (strcasecmp(name, loc.month_abbr[i]) == 0) return i + 1;
    }
  }
  return 0;
}

const char* ZQDateTime::DefaultDateFormat() {
  return GetDateLocale().date_mask;
}

const char* ZQDateTime::DefaultTimeFormat() {
  return GetDateLocale().time_mask;
}

const char* ZQDateTime::DefaultDateTimeFormat() {
  return GetDateLocale().datetime_mask;
}

int ZQDateTime::DefaultDateOrder() { return GetDateLocale().order; }

// ---- printing ------------------------------------------------------------------

void ZQDateTime::PrinttoZQString(ZQString& out, bool date, bool time,
                                 const char* mask) const {
  out.clear();
  if (mask == nullptr) mask = GetFmt();
  if (date && day_ < 1) return;
  const DateLocale& loc = GetDateLocale();
  int month = 0, day = 0, year = 0;
  if (date) jul_cal(day_, month, day, year);
  long hour = secs_ / 3600;
  long minute = (secs_ / 60) % 60;
  long second = secs_ % 60;
  char num[32];
  for (const char* p = mask; *p != '\0';) {
    zq::Token t = zq::NextToken(p, date, time);
    p += t.mask_len;
    num[0] = '\0';
    switch (t.kind) {
      case zq::kLiteral:
        out.Append(t.lit, t.lit_len);
        break;
      case zq::kDayOfYear:
        std::snprintf(num, sizeof num, "%03d",
                      static_cast<int>(day_ - zq::FirstDayOfYear(year) + 1));
        break;
      case zq::kDay2: std::snprintf(num, sizeof num, "%02d", day); break;
      case zq::kDay: std::snprintf(num, sizeof num, "%2d", day); break;
      case zq::kMonth2: std::snprintf(num, sizeof num, "%02d", month); break;
      case zq::kMonthName: out += loc.month_full[month - 1]; break;
      case zq::kMonthAbbr: out += loc.month_abbr[month - 1]; break;
      case zq::kMonth: std::snprintf(num, sizeof num, "%2d", month); break;
      case zq::kYear4: std::snprintf(num, sizeof num, "%04d", year); break;
      case zq::kYear2: std::snprintf(num, sizeof num, "%02d", year % 100); break;
      case zq::kHour12:
        // Midnight prints as 00, noon as 12.
        std::snprintf(num, sizeof num, "%02ld",
                      hour == 0 ? 0L : hour == 12 ? 12L : hour % 12);
        break;
      case zq::kHour24: std::snprintf(num, sizeof num, "%02ld", hour); break;
      case zq::kMinute: std::snprintf(num, sizeof num, "%02ld", minute); break;
      case zq::kSecond: std::snprintf(num, sizeof num, "%02ld", second); break;
      case zq::kFraction: out.Pad('0', t.arg); break;
      case zq::kAmPm:
        out += hour < 12 ? ((t.arg & zq::kAmUpper) ? 'A' : 'a')
                         : ((t.arg & zq::kAmUpper) ? 'P' : 'p');
        out += (t.arg & zq::kMUpper) ? 'M' : 'm';
        break;
    }
    if (num[0] != '\0') out += num;
  }
}

void ZQDateTime::Print(ZQString& out, const char* mask) const {
  PrinttoZQString(out, true, true, mask);
}

void ZQDate::Print(ZQString& out, const char* mask) const {
  PrinttoZQString(out, true, false, mask);
}

void ZQTime::Print(ZQString& out, const char* mask) const {
  PrinttoZQString(out, false, true, mask);
}

// ---- reading -------------------------------------------------------------------

bool ZQDateTime::ConvertParts(const char* text, const char* mask, bool date,
                              bool time) {
  if (text == nullptr) return false;
  if (mask == nullptr) mask = GetFmt();
  const DateLocale& loc = GetDateLocale();
  int current = zq::CurrentYearForWindow();
  std::vector<zq::Token> toks = zq::Tokenize(mask, date, time);
  bool has_date = false, has_time = false;
  for (const zq::Token& t : toks) {
    has_date = has_date || zq::IsDateKind(t.kind);
    has_time = has_time || zq::IsTimeKind(t.kind);
  }
  zq::Fields f;
  bool ok = (has_date || has_time) &&
            zq::MatchText(toks, text, date, loc, current, f);
  std::string digits;
  // Digit-only texts are dates, unless the mask reads only a time.
  if (!ok && date && (has_date || !has_time) && zq::DigitsOnly(text, digits)) {
    // Digit-only dates: month or day first as the locale prefers.
    static const char* const kMonthFirst[] = {"mddyy", "mddyyyy", "dmmyy", "dmmyyyy"};
    static const char* const kDayFirst[] = {"dmmyy", "dmmyyyy", "mddyy", "mddyyyy"};
    const char* const* forms = loc.order == 1 ? kDayFirst : kMonthFirst;
    size_t len = digits.size();
    for (int i = 0; i < 4 && !ok; ++i) {
      // Five or six digits carry a two-digit year, seven or eight four.
      bool long_form = std::strlen(forms[i]) == 7;
      if (len < 5 || len > 8 || long_form != (len >= 7)) continue;
      std::vector<zq::Token> dt = zq::Tokenize(forms[i], true, false);
      zq::Fields g;
      if (zq::MatchText(dt, digits.c_str(), false, loc, current, g) &&
          cal_jul(g.month, g.day, g.year) > 0) {
        f = g;
        ok = true;
        has_date = true;
        has_time = false;
      }
    }
    if (!ok) {
      // Otherwise the digits are a day number.
      long last = cal_jul(12, 31, 25000);
      if (digits.size() <= 9) {
        long n = std::stol(digits);
        if (n >= 1 && n <= last) {
          day_ = static_cast<int32_t>(n);
          if (time) secs_ = 0;
          return true;
        }
      }
      return false;
    }
  }
  if (!ok) return false;

  int32_t new_day = day_;
  int32_t new_secs = secs_;
  if (date && has_date) {
    int year = f.year >= 0 ? f.year : current;
    long n;
    if (f.doy > 0 && f.month < 0 && f.day < 0) {
      if (year < 1 || year > 25000) return false;
      int64_t first = zq::FirstDayOfYear(year);
      if (first + f.doy - 1 >= zq::FirstDayOfYear(year + 1)) return false;
      n = static_cast<long>(first + f.doy - 1);
    } else {
      n = cal_jul(f.month >= 0 ? f.month : 1, f.day >= 0 ? f.day : 1, year);
    }
    if (n < 1) return false;
    new_day = static_cast<int32_t>(n);
  }
  if (time && has_time) {
    int hour = f.hour >= 0 ? f.hour : 0;
    if (f.ampm >= 0) {
      if (hour > 12) return false;
      if (f.ampm == 1 && hour < 12) hour += 12;
      if (f.ampm == 0 && hour == 12) hour = 0;
    }
    new_secs = hour * 3600 + (f.minute >= 0 ? f.minute : 0) * 60 +
               (f.second >= 0 ? f.second : 0);
  } else if (time && date && has_date) {
    // A date read without a time of day is taken at midnight.
    new_secs = 0;
  }
  day_ = new_day;
  secs_ = new_secs;
  return true;
}

bool ZQDateTime::Convert(const char* text, const char* mask) {
  return ConvertParts(text, mask, true, true);
}

bool ZQDate::Convert(const char* text, const char* mask) {
  return ConvertParts(text, mask, true, false);
}

bool ZQTime::Convert(const char* text, const char* mask) {
  return ConvertParts(text, mask, false, true);
}

bool ZQDateTime::Validate(const char* text, const char* mask) {
  ZQDateTime scratch;
  return scratch.ConvertParts(text, mask, true, true);
}

namespace {

const char* const kMonthFirstMasks[] = {"m/d/yyyy", "m/d/yy", "m-d-yyyy",
                                        "m-d-yy",   "m.d.yyyy", "m.d.yy"};
const char* const kDayFirstMasks[] = {
    "d/m/yyyy",   "d/m/yy",       "d-m-yyyy",     "d-m-yy",
    "d.m.yyyy",   "d.m.yy",       "d-mon-yyyy",   "d-mon-yy",
    "d-month-yyyy", "d-month-yy", "mon d, yyyy",  "month d, yyyy"};
const char* const kYearFirstMasks[] = {"yy-m-d", "yy/m/d", "yyyy-m-d",
                                       "yyyy/m/d"};
const char* const kPartialMasks[] = {"m/d", "m-d", "m.d", "d-mon", "d-month"};
const char* const kFixedTimeMasks[] = {"HH:MM:SS am", "HH:MM am", "H24:MM:SS",
                                       "H24:MM", ""};

template <size_t N>
void AddAll(std::vector<const char*>& v, const char* const (&list)[N]) {
  v.insert(v.end(), list, list + N);
}

// Candidate date masks in the order of the locale's date order.
std::vector<const char*> DateCandidates(const DateLocale& loc) {
  std::vector<const char*> v;
  v.push_back(loc.date_mask);
  switch (loc.order) {
    case 1:
      AddAll(v, kDayFirstMasks);
      AddAll(v, kMonthFirstMasks);
      AddAll(v, kYearFirstMasks);
      break;
    case 0:
      AddAll(v, kMonthFirstMasks);
      AddAll(v, kDayFirstMasks);
      AddAll(v, kYearFirstMasks);
      break;
    default:
      AddAll(v, kYearFirstMasks);
      AddAll(v, kMonthFirstMasks);
      AddAll(v, kDayFirstMasks);
      break;
  }
  AddAll(v, kPartialMasks);
  return v;
}

std::vector<const char*> TimeCandidates(const DateLocale& loc) {
  std::vector<const char*> v;
  v.push_back(loc.time_mask);
  AddAll(v, kFixedTimeMasks);
  return v;
}

}  // namespace

bool ZQDateTime::CDate(const char* text, ZQDateTime& out) {
  if (text == nullptr) return false;
  const DateLocale& loc = GetDateLocale();
  std::vector<const char*> times = TimeCandidates(loc);
  std::string combo;
  for (const char* dm : DateCandidates(loc)) {
    for (const char* tm : times) {
      if (*dm == '\0' && *tm == '\0') continue;
      combo = dm;
      if (*dm != '\0' && *tm != '\0') combo += ' ';
      combo += tm;
      ZQDateTime scratch;
      if (scratch.ConvertParts(text, combo.c_str(), true, true)) {
        out.day_ = scratch.day_;
        out.secs_ = scratch.secs_;
        return true;
      }
    }
  }
  return false;
}

bool ZQDateTime::CDate(const unsigned short* text, ZQDateTime& out) {
  if (text == nullptr) return false;
  ZQString narrow;
  narrow.Assign(text, ZQ_CSET_OEM);
  return CDate(narrow.c_str(), out);
}

// ---- assignment from text --------------------------------------------------------

// Without a mask of its own, a date that does not fit the default mask is
// also tried against the candidate masks of CDate.
ZQDate& ZQDate::operator=(const char* text) {
  if (Convert(text)) return *this;
  ZQDateTime any;
  if (fmt_ == nullptr && CDate(text, any)) {
    day_ = static_cast<int32_t>(any.DayNumber());
  } else {
    day_ = 0;
  }
  secs_ = 0;
  return *this;
}

// Without a mask of its own, a time that does not fit the default mask is
// also tried against the fixed time masks.
ZQTime& ZQTime::operator=(const char* text) {
  if (Convert(text)) return *this;
  if (fmt_ != nullptr) return *this;
  for (const char* m : kFixedTimeMasks) {
    if (*m != '\0' && Convert(text, m)) return *this;
  }
  return *this;
}
