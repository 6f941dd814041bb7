// ZQQuadWord: a signed 64-bit integer value.
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "zq/quadword.h"
#include "zq/wsfmt.h"

namespace {

// Truncates towards zero; NaN gives 0 and values beyond the range saturate.
int64_t DoubleToInt64(double x) {
  if (std::isnan(x)) return 0;
  if (x >= 9223372036854775808.0) return INT64_MAX;
  if (x < -9223372036854775808.0) return INT64_MIN;
  return static_cast<int64_t>(x);
}

}  // namespace

ZQQuadWord::ZQQuadWord(short v) : value_(v) {}
ZQQuadWord::ZQQuadWord(int v) : value_(v) {}
ZQQuadWord::ZQQuadWord(long v) : value_(static_cast<int32_t>(v)) {}
ZQQuadWord::ZQQuadWord(unsigned long v) : value_(static_cast<uint32_t>(v)) {}
ZQQuadWord::ZQQuadWord(double x) : value_(DoubleToInt64(x)) {}

ZQQuadWord& ZQQuadWord::operator=(short v) {
  value_ = v;
  return *this;
}

ZQQuadWord& ZQQuadWord::operator=(int v) {
  value_ = v;
  return *this;
}

ZQQuadWord& ZQQuadWord::operator=(long v) {
  value_ = static_cast<int32_t>(v);
  return *this;
}

ZQQuadWord& ZQQuadWord::operator=(unsigned long v) {
  value_ = static_cast<uint32_t>(v);
  return *this;
}

ZQQuadWord& ZQQuadWord::operator=(double x) {
  value_ = DoubleToInt64(x);
  return *this;
}

long ZQQuadWord::LoVal() const {
  return static_cast<int32_t>(static_cast<uint32_t>(value_));
}

long ZQQuadWord::HiVal() const {
  // Arithmetic shift: the high word keeps the sign.
  return static_cast<int32_t>(value_ >> 32);
}

ZQQuadWord::operator long() const { return LoVal(); }

ZQQuadWord::operator int() const { return static_cast<int>(LoVal()); }

ZQQuadWord::operator unsigned long() const {
  return static_cast<uint32_t>(value_);
}

ZQQuadWord::operator short() const {
  return static_cast<short>(static_cast<uint16_t>(value_));
}

ZQQuadWord::operator double() const { return static_cast<double>(value_); }

void ZQQuadWord::operator+=(long v) {
  value_ = static_cast<int64_t>(
      static_cast<uint64_t>(value_) +
      static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))));
}

void ZQQuadWord::operator+=(ZQQuadWord const& other) {
  value_ = static_cast<int64_t>(static_cast<uint64_t>(value_) +
                                static_cast<uint64_t>(other.value_));
}

void ZQQuadWord::operator*=(long v) {
  value_ = static_cast<int64_t>(
      static_cast<uint64_t>(value_) *
      static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))));
}

char* ZQQuadWord::Print(char* buf) const {
  if (buf == nullptr) return buf;
  std::snprintf(buf, kPrintSize, "%" PRId64, static_cast<int64_t>(value_));
  return buf;
}

unsigned short* ZQQuadWord::Print(unsigned short* buf) const {
  static const unsigned short kFormat[] = {'%', 'q', 'd', 0};
  if (buf == nullptr) return buf;
  wsnfmt(buf, kPrintSize, kFormat, static_cast<long long>(value_));
  return buf;
}
