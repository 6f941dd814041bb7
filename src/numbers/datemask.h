// Process-wide locale state of the date and time masks.
#ifndef ZQ_NUMBERS_DATEMASK_H
#define ZQ_NUMBERS_DATEMASK_H

#include <cstdint>

namespace zq {

// Names and default masks of the process's locale, built once.
struct DateLocale {
  char day_full[7][64];
  char day_abbr[7][64];
  char month_full[12][64];
  char month_abbr[12][64];
  char date_mask[64];
  char time_mask[64];
  char datetime_mask[128];
  int order;  // 0 m-d-y, 1 d-m-y, 2 y-m-d, 3 y-d-m
};

// The locale state, built on first use under a process-wide mutex.
const DateLocale& GetDateLocale();

// Day number of 1 January of `year`, also for years beyond the last one.
int64_t FirstDayOfYear(int64_t year);

}  // namespace zq

#endif  // ZQ_NUMBERS_DATEMASK_H
