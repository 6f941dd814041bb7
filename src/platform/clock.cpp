// System clock and locale-dependent time formatting for the calendar types.
#include "platform/clock.h"

#include <time.h>
#include <wchar.h>

#include <cstring>

namespace zq {
namespace platform {

bool LocalNow(BrokenTime& out) {
  time_t now = time(nullptr);
  if (now == static_cast<time_t>(-1)) return false;
  struct tm tm;
  if (localtime_r(&now, &tm) == nullptr) return false;
  out.year_since_1900 = tm.tm_year;
  out.month0 = tm.tm_mon;
  out.day = tm.tm_mday;
  out.hour = tm.tm_hour;
  out.minute = tm.tm_min;
  out.second = tm.tm_sec;
  out.weekday = tm.tm_wday;
  return true;
}

std::size_t FormatTime(char* buf, std::size_t cap, const char* format,
                       const BrokenTime& t) {
  if (buf == nullptr || cap == 0) return 0;
  struct tm tm;
  std::memset(&tm, 0, sizeof tm);
  tm.tm_year = t.year_since_1900;
  tm.tm_mon = t.month0;
  tm.tm_mday = t.day;
  tm.tm_hour = t.hour;
  tm.tm_min = t.minute;
  tm.tm_sec = t.second;
  tm.tm_wday = t.weekday;
  tm.tm_isdst = -1;
  std::size_t n = strftime(buf, cap, format, &tm);
  buf[n < cap ? n : cap - 1] = '\0';
  return n;
}

int CharLength(const char* s, std::size_t n) {
  if (s == nullptr || n == 0) return 1;
  mbstate_t state;
  std::memset(&state, 0, sizeof state);
  std::size_t r = mbrlen(s, n, &state);
  if (r == 0 || r == static_cast<std::size_t>(-1) ||
      r == static_cast<std::size_t>(-2)) {
    return 1;
  }
  return static_cast<int>(r);
}

}  // namespace platform
}  // namespace zq
