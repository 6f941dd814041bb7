// System clock and locale-dependent time formatting for the calendar types.
#ifndef ZQ_PLATFORM_CLOCK_H
#define ZQ_PLATFORM_CLOCK_H

#include <cstddef>

namespace zq {
namespace platform {

// A broken-down moment: year since 1900, month 0 to 11, day 1 to 31, hour,
// minute, second, and weekday 0 (Sunday) to 6.
struct BrokenTime {
  int year_since_1900;
  int month0;
  int day;
  int hour;
  int minute;
  int second;
  int weekday;
};

// The local time of the system clock; false when the clock cannot be read.
bool LocalNow(BrokenTime& out);

// Formats `t` with strftime in the current locale into `buf` (always
// terminated); returns the number of bytes written, 0 on failure.
std::size_t FormatTime(char* buf, std::size_t cap, const char* format,
                       const BrokenTime& t);

// Length in bytes of the character that starts at `s` in the current
// locale's multibyte encoding, looking at no more than `n` bytes; 1 for a
// byte that does not start a valid character.
int CharLength(const char* s, std::size_t n);

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_CLOCK_H
