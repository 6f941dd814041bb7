// ZQDecimal: an exact decimal number of twenty significant digits.
//
// A value is twelve bytes: ten base-100 digits (most significant first), a
// sign byte (1 when negative) and a signed exponent byte counting the base-100
// digits before the decimal point. The value is the sum of digit[i] times
// 100^(exponent - 1 - i). Zero is all bytes 0. Nothing allocates and nothing
// reports failure: bad input yields zero.
//
// Values are kept as computed, not normalised (leading zero digits are
// allowed), and comparison works on the stored form, so an unnormalised value
// can compare differently from its normalised twin. Addition and subtraction
// truncate: the operand with the smaller exponent loses its low digits.
//
// The documented `long` is 32-bit: conversions from and to `long` and
// `unsigned long` use the low 32 bits and wrap in 32 bits.
#ifndef ZQ_DECIMAL_H
#define ZQ_DECIMAL_H

#include "zq/export.h"

class ZQString;
class ZQDType;
namespace zq {
struct DecimalAccess;
}

class ZQ_EXPORT ZQDecimal {
 public:
  // Size of the storage form written by Store and read by Load.
  static constexpr int kStoreSize = 12;
  // Buffer size that Print and PrintExp assume when given a size of 0.
  static constexpr int kUnboundedPrintSize = 45;

  // Zero.
  ZQDecimal() : digits_(), sign_(0), exponent_(0) {}
  ZQDecimal(ZQDecimal const& other) = default;
  ZQDecimal(short v);
  ZQDecimal(int v);
  // The low 32 bits of `v` as a signed number.
  ZQDecimal(long v);
  // The low 32 bits of `v` as an unsigned number.
  ZQDecimal(unsigned long v);
  // Fifteen significant digits of `x` ("%.14e"); NaN, infinities and values
  // whose exponent does not fit the exponent byte give zero.
  ZQDecimal(double x);
  // The decimal literal `text`; zero when Validate rejects it.
  ZQDecimal(char const* text);

  ZQDecimal& operator=(ZQDecimal const& other) = default;
  ZQDecimal& operator=(short v);
  ZQDecimal& operator=(int v);
  ZQDecimal& operator=(long v);
  ZQDecimal& operator=(unsigned long v);
  ZQDecimal& operator=(double x);
  ZQDecimal& operator=(char const* text);

  // Whole part, truncated towards zero, wrapping in 32 bits.
  operator short() const;
  operator int() const;
  operator long() const;
  operator unsigned long() const;
  operator double() const;

  // The value with its sign flipped; zero stays zero.
  ZQDecimal operator-() const;
  ZQDecimal operator+(ZQDecimal const& other) const;
  ZQDecimal operator-(ZQDecimal const& other) const;

  // Adds a copy of `other`.
  ZQDecimal& operator+=(ZQDecimal const& other);
  // Adds `other`, shifting it in place to this value's exponent when its
  // exponent is the smaller one (it loses those low digits).
  ZQDecimal& operator+=(ZQDecimal& other);
  ZQDecimal& operator+=(double x);
  ZQDecimal& operator+=(long v);
  ZQDecimal& operator+=(unsigned long v);
  ZQDecimal& operator-=(ZQDecimal const& other);

  // Ordering of the stored forms (see the file comment): the sign, then the
  // exponent, then the digits. Inline: comparisons are the hottest use.
  bool operator>(ZQDecimal const& other) const {
    if (sign_ != other.sign_) return sign_ == 0;
    if (exponent_ != other.exponent_) {
      return (exponent_ > other.exponent_) != (sign_ != 0);
    }
    int order = CompareDigits(other);
    return sign_ != 0 ? order < 0 : order > 0;
  }
  bool operator<(ZQDecimal const& other) const { return other > *this; }
  // Sign, exponent and all ten digits equal byte for byte.
  bool operator==(ZQDecimal const& other) const {
    return sign_ == other.sign_ && exponent_ == other.exponent_ &&
           CompareDigits(other) == 0;
  }

  // The sign byte.
  bool IsNeg() const { return sign_ != 0; }

  // Multiplies by 10^n in place and returns this value.
  ZQDecimal& Scale(int n);

  // Writes the value as text into `buf` of `size` bytes (0: the buffer holds
  // at least kUnboundedPrintSize bytes; negative: nothing is written), always
  // terminated; `exponential` selects PrintExp. Returns `buf`.
  char* Print(char* buf, int size = 0, bool exponential = false) const;
  // Writes the exponential form; sizes 1 to 6 fall back to the plain form.
  char* PrintExp(char* buf, int size = 0) const;

  // Tells whether `text` is a decimal literal: optional white space, an
  // optional sign, digits with an optional point, optional white space.
  // Texts with an exponent marker are rejected.
  static bool Validate(char const* text);

  // Writes the twelve-byte storage form: byte 0 is 1 for a non-negative value
  // and 0 for a negative one, bytes 1 to 10 the digits, byte 11 the exponent
  // with its top bit inverted.
  void Store(char* out) const;
  // Reads the storage form; a digit above 99 gives zero.
  void Load(char const* in);

  // Appends the whole part (truncated, wrapping modulo 2^64) as a
  // two's-complement integer of `length` bytes; lengths above 8 get
  // sign-extension bytes. Returns the bytes appended (0 when `length` < 1).
  int PutBinary(ZQString& out, int length, bool msb_first) const;
  // Reads a two's-complement (or, when not `is_signed`, unsigned) integer of
  // `length` bytes (1 to 8) at `offset`. Returns `length`, or 0 (value zero)
  // when the field does not lie within `in` or the length is out of range.
  int GetBinary(ZQString const& in, int offset, int length, bool msb_first,
                bool is_signed);
  // Appends the value times 10^scale, rounded to a whole number (ties to
  // even), as a packed decimal field of the descriptor's length, sign
  // position and sign style. Returns the bytes appended.
  int PutPack(ZQString& out, ZQDType const& type) const;
  // Reads a packed decimal field at `offset` and divides it by 10^scale.
  // Returns the field length; a length of 0 leaves the value untouched; a
  // field beyond the end of `in` gives zero and 0.
  int GetPack(ZQString const& in, int offset, ZQDType const& type);

 private:
  // The library's field codecs read and build values from their parts.
  friend struct zq::DecimalAccess;

  // Helpers stay inside the library (no interposable calls between them).
#define ZQ_DECIMAL_INTERNAL __attribute__((visibility("hidden")))
  ZQ_DECIMAL_INTERNAL void SetUnsigned(unsigned int v);
  ZQ_DECIMAL_INTERNAL void SetSigned(int v);
  ZQ_DECIMAL_INTERNAL void SetDouble(double x);
  ZQ_DECIMAL_INTERNAL void SetText(char const* text);
  ZQ_DECIMAL_INTERNAL void SetUnsigned64(unsigned long long v);
  ZQ_DECIMAL_INTERNAL void SetDigits(char const* d, int count, int point);
  ZQ_DECIMAL_INTERNAL bool SetExponent(int e);
  ZQ_DECIMAL_INTERNAL unsigned long long Whole64() const;
  ZQ_DECIMAL_INTERNAL unsigned int Whole32() const;
  ZQ_DECIMAL_INTERNAL bool DigitsZero() const;
  ZQ_DECIMAL_INTERNAL bool IsZero() const;
  ZQ_DECIMAL_INTERNAL void Clear();
  ZQ_DECIMAL_INTERNAL void Normalise();
  ZQ_DECIMAL_INTERNAL int PrintPlain(char* buf, int limit) const;
#undef ZQ_DECIMAL_INTERNAL

  // Orders the digits as an unsigned number, most significant first.
  int CompareDigits(ZQDecimal const& other) const {
    unsigned long long a, b;
    __builtin_memcpy(&a, digits_, 8);
    __builtin_memcpy(&b, other.digits_, 8);
    a = __builtin_bswap64(a);
    b = __builtin_bswap64(b);
    if (a != b) return a < b ? -1 : 1;
    unsigned c = static_cast<unsigned>(digits_[8]) << 8 | digits_[9];
    unsigned d =
        static_cast<unsigned>(other.digits_[8]) << 8 | other.digits_[9];
    return c < d ? -1 : c > d ? 1 : 0;
  }

  unsigned char digits_[10];
  unsigned char sign_;
  signed char exponent_;
};

#endif  // ZQ_DECIMAL_H
