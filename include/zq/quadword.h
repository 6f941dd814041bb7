// ZQQuadWord: a signed 64-bit integer value.
//
// Eight bytes, the low 32-bit word first, two's complement; no allocation.
// The documented `long` is 32-bit: constructors take the low 32 bits of a
// `long`, and the `long` conversions give the low 32 bits.
#ifndef ZQ_QUADWORD_H
#define ZQ_QUADWORD_H

#include "zq/export.h"

class ZQ_EXPORT ZQQuadWord {
 public:
  // Longest text Print writes, terminator included.
  static constexpr int kPrintSize = 21;

  // 0.
  ZQQuadWord() : value_(0) {}
  ZQQuadWord(ZQQuadWord const& other) = default;
  // Sign-extended to 64 bits.
  ZQQuadWord(short v);
  ZQQuadWord(int v);
  ZQQuadWord(long v);
  // Zero-extended from 32 bits.
  ZQQuadWord(unsigned long v);
  // Truncated towards zero; NaN gives 0 and values out of range saturate.
  ZQQuadWord(double x);
  // A full 64-bit value, for codecs.
  explicit ZQQuadWord(long long v) : value_(v) {}

  ZQQuadWord& operator=(ZQQuadWord const& other) = default;
  ZQQuadWord& operator=(short v);
  ZQQuadWord& operator=(int v);
  ZQQuadWord& operator=(long v);
  ZQQuadWord& operator=(unsigned long v);
  ZQQuadWord& operator=(double x);

  // The low 32 bits.
  long LoVal() const;
  // The value shifted right arithmetically by 32.
  long HiVal() const;
  operator long() const;
  operator int() const;
  operator unsigned long() const;
  // The low 16 bits.
  operator short() const;
  operator double() const;
  // The full 64-bit value.
  long long Value() const { return value_; }

  // The eight bytes, least significant first.
  char* RawData() { return reinterpret_cast<char*>(&value_); }
  char const* RawData() const { return reinterpret_cast<char const*>(&value_); }

  // Adds, wrapping in 64 bits.
  void operator+=(long v);
  void operator+=(ZQQuadWord const& other);
  // Multiplies, keeping the low 64 bits.
  void operator*=(long v);

  // Writes the decimal text into `buf` (at least kPrintSize bytes); returns
  // `buf`.
  char* Print(char* buf) const;
  unsigned short* Print(unsigned short* buf) const;

 private:
  long long value_;
};

#endif  // ZQ_QUADWORD_H
