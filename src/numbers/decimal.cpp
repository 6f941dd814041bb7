// ZQDecimal: construction, conversion, arithmetic, comparison and text.
#include "zq/decimal.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' ||
         c == '\f';
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The ten base-100 digits as one 80-bit number, one digit per byte with the
// last digit in the lowest byte, so that carries, shifts and comparisons
// work on all digits at once.
using Digits = unsigned __int128;

constexpr Digits RepeatByte(unsigned b) {
  Digits v = 0;
  for (int i = 0; i < 10; ++i) v = v << 8 | b;
  return v;
}

constexpr Digits kDigitMask = RepeatByte(0xFF);
constexpr Digits kOnes = RepeatByte(1);
// Bit 8k is the carry from digit byte k-1 into byte k.
constexpr Digits kCarryBits = kOnes << 8;
// 256 - 100: added to every byte so that a digit sum of 100 or more carries.
constexpr unsigned kBias = 156;

inline Digits LoadDigits(const unsigned char* d) {
  uint64_t high;
  uint16_t low;
  std::memcpy(&high, d, 8);
  std::memcpy(&low, d + 8, 2);
  return static_cast<Digits>(__builtin_bswap64(high)) << 16 |
         __builtin_bswap16(low);
}

inline void StoreDigits(unsigned char* d, Digits v) {
  uint64_t high = __builtin_bswap64(static_cast<uint64_t>(v >> 16));
  uint16_t low = __builtin_bswap16(static_cast<uint16_t>(v));
  std::memcpy(d, &high, 8);
  std::memcpy(d + 8, &low, 2);
}

// Writes a whole value (digits, sign byte, exponent byte) with one 8-byte and
// one 4-byte store, so that a following copy of the twelve bytes reads
// straight from the store buffer. An exponent out of range gives zero.
inline void WriteValue(void* object, Digits v, unsigned sign, int e) {
  if (e < -128 || e > 127) {
    v = 0;
    sign = 0;
    e = 0;
  }
  uint64_t high = __builtin_bswap64(static_cast<uint64_t>(v >> 16));
  uint32_t low = __builtin_bswap16(static_cast<uint16_t>(v)) | sign << 16 |
                 static_cast<uint32_t>(static_cast<uint8_t>(e)) << 24;
  unsigned char* bytes = static_cast<unsigned char*>(object);
  std::memcpy(bytes, &high, 8);
  std::memcpy(bytes + 8, &low, 4);
}

// Number of leading zero digits of a non-zero value.
inline int LeadingZeroDigits(Digits v) {
  uint64_t high = static_cast<uint64_t>(v >> 64);
  if (high != 0) return (__builtin_clzll(high) - 48) / 8;
  return (16 + __builtin_clzll(static_cast<uint64_t>(v))) / 8;
}

// Index of the last non-zero digit of a non-zero value.
inline int LastDigit(Digits v) {
  uint64_t low = static_cast<uint64_t>(v);
  int zeros = low != 0 ? __builtin_ctzll(low)
                       : 64 + __builtin_ctzll(static_cast<uint64_t>(v >> 64));
  return 9 - zeros / 8;
}

// Base-100 sum of two digit strings; `carry` receives the carry out of the
// first digit.
inline Digits AddDigits(Digits a, Digits b, bool* carry) {
  Digits biased = a + RepeatByte(kBias);
  Digits sum = biased + b;
  Digits carries = (biased ^ b ^ sum) & kCarryBits;
  *carry = static_cast<bool>((carries >> 80) & 1);
  // Bytes that did not carry out still hold the bias.
  Digits no_carry = ~(carries >> 8) & kOnes;
  return (sum - no_carry * kBias) & kDigitMask;
}

// Base-100 difference a - b of digit strings with a >= b.
inline Digits SubtractDigits(Digits a, Digits b) {
  Digits diff = a - b;
  Digits borrows = (a ^ b ^ diff) & kCarryBits;
  // A byte that borrowed 256 should have borrowed 100.
  return (diff - ((borrows >> 8) & kOnes) * kBias) & kDigitMask;
}

// "00" to "99", for printing a pair with one copy.
struct PairText {
  char text[200];
  constexpr PairText() : text() {
    for (int i = 0; i < 100; ++i) {
      text[2 * i] = static_cast<char>('0' + i / 10);
      text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
  }
};
constexpr PairText kPairText;

// 10^n as a double; exact up to 10^22.
double Pow10(int n) {
  static const double kExact[] = {
      1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (n >= 0 && n <= 22) return kExact[n];
  return std::pow(10.0, n);
}

}  // namespace

static_assert(sizeof(ZQDecimal) == ZQDecimal::kStoreSize,
              "a ZQDecimal is its ten digits, sign byte and exponent byte");

ZQDecimal::ZQDecimal(short v) { SetSigned(v); }
ZQDecimal::ZQDecimal(int v) { SetSigned(v); }
ZQDecimal::ZQDecimal(long v) { SetSigned(static_cast<int32_t>(v)); }
ZQDecimal::ZQDecimal(unsigned long v) { SetUnsigned(static_cast<uint32_t>(v)); }
ZQDecimal::ZQDecimal(double x) { SetDouble(x); }
ZQDecimal::ZQDecimal(char const* text) { SetText(text); }

ZQDecimal& ZQDecimal::operator=(short v) {
  SetSigned(v);
  return *this;
}

ZQDecimal& ZQDecimal::operator=(int v) {
  SetSigned(v);
  return *this;
}

ZQDecimal& ZQDecimal::operator=(long v) {
  SetSigned(static_cast<int32_t>(v));
  return *this;
}

ZQDecimal& ZQDecimal::operator=(unsigned long v) {
  SetUnsigned(static_cast<uint32_t>(v));
  return *this;
}

ZQDecimal& ZQDecimal::operator=(double x) {
  SetDouble(x);
  return *this;
}

ZQDecimal& ZQDecimal::operator=(char const* text) {
  SetText(text);
  return *this;
}

void ZQDecimal::Clear() {
  std::memset(digits_, 0, sizeof digits_);
  sign_ = 0;
  exponent_ = 0;
}

bool ZQDecimal::DigitsZero() const { return LoadDigits(digits_) == 0; }

bool ZQDecimal::IsZero() const { return DigitsZero() && sign_ == 0; }

bool ZQDecimal::SetExponent(int e) {
  if (e < -128 || e > 127) {
    Clear();
    return false;
  }
  exponent_ = static_cast<signed char>(e);
  return true;
}

void ZQDecimal::Normalise() {
  Digits v = LoadDigits(digits_);
  if (v == 0) {
    Clear();
    return;
  }
  int shift = LeadingZeroDigits(v);
  if (shift == 0) return;
  StoreDigits(digits_, (v << (8 * shift)) & kDigitMask);
  SetExponent(exponent_ - shift);
}

void ZQDecimal::SetUnsigned(unsigned int v) {
  Clear();
  // Zero is the canonical all-zero value, not a zero digit with exponent 1.
  if (v == 0) return;
  if (v < 100) {
    digits_[0] = static_cast<unsigned char>(v);
    exponent_ = 1;
  } else if (v < 10000) {
    digits_[0] = static_cast<unsigned char>(v / 100);
    digits_[1] = static_cast<unsigned char>(v % 100);
    exponent_ = 2;
  } else {
    for (int i = 9; i >= 0; --i) {
      digits_[i] = static_cast<unsigned char>(v % 100);
      v /= 100;
    }
    exponent_ = 10;
    Normalise();
  }
}

void ZQDecimal::SetSigned(int v) {
  if (v < 0) {
    SetUnsigned(0u - static_cast<unsigned int>(v));
    sign_ = 1;
  } else {
    SetUnsigned(static_cast<unsigned int>(v));
  }
}

void ZQDecimal::SetUnsigned64(unsigned long long v) {
  Clear();
  if (v == 0) return;
  // 2^64 has twenty decimal digits, so ten pairs always hold it.
  for (int i = 9; i >= 0; --i) {
    digits_[i] = static_cast<unsigned char>(v % 100);
    v /= 100;
  }
  exponent_ = 10;
  Normalise();
}

void ZQDecimal::SetDigits(char const* d, int count, int point) {
  Clear();
  // Pairs are aligned on the decimal point: an odd count of integer digits
  // gets an implied leading zero.
  char text[22];
  int n = 0;
  if (point & 1) {
    text[n++] = '0';
    ++point;
  }
  for (int i = 0; i < count && n < 20; ++i) text[n++] = d[i];
  while (n < 20) text[n++] = '0';
  for (int i = 0; i < 10; ++i) {
    digits_[i] = static_cast<unsigned char>((text[2 * i] - '0') * 10 +
                                            text[2 * i + 1] - '0');
  }
  if (SetExponent(point / 2)) Normalise();
}

void ZQDecimal::SetDouble(double x) {
  Clear();
  if (x == 0 || std::isnan(x) || std::isinf(x)) return;
  bool negative = x < 0;
  if (negative) x = -x;
  // Fifteen significant digits, rounded by the formatter: d.(14 digits)e±E.
  char text[32];
  std::snprintf(text, sizeof text, "%.14e", x);
  char digits[15];
  digits[0] = text[0];
  std::memcpy(digits + 1, text + 2, 14);
  int e = std::atoi(text + 17);
  SetDigits(digits, 15, e + 1);
  if (!DigitsZero()) sign_ = negative ? 1 : 0;
}

bool ZQDecimal::Validate(char const* text) {
  if (text == nullptr) return false;
  char const* p = text;
  while (IsBlank(*p)) ++p;
  if (*p == '+' || *p == '-') ++p;
  if (!IsDigit(*p) && *p != '.') return false;
  while (IsDigit(*p)) ++p;
  if (*p == '.') {
    ++p;
    if (*p != '\0' && !IsDigit(*p)) return false;
    while (IsDigit(*p)) ++p;
  }
  // The marker itself is refused, so no text with an exponent is valid.
  if (*p == 'e' || *p == 'E') return false;
  while (IsBlank(*p)) ++p;
  return *p == '\0';
}

void ZQDecimal::SetText(char const* text) {
  Clear();
  // One pass checks the text as Validate does while taking its digits.
  if (text == nullptr) return;
  char const* p = text;
  while (IsBlank(*p)) ++p;
  bool negative = *p == '-';
  p += (*p == '-') | (*p == '+');
  if (!IsDigit(*p) && *p != '.') return;
  char const* whole = p;
  while (IsDigit(*p)) ++p;
  int count = static_cast<int>(p - whole);
  int exponent = (count + 1) / 2;
  if (exponent > 127) return;

  // Integer digits in pairs, an odd count with an implied leading zero; pairs
  // after the tenth only count in the exponent.
  unsigned char digits[10] = {};
  int stored = 0;
  int i = 0;
  if (count & 1) {
    digits[stored++] = static_cast<unsigned char>(whole[0] - '0');
    i = 1;
  }
  for (; i < count && stored < 10; i += 2) {
    digits[stored++] =
        static_cast<unsigned char>((whole[i] - '0') * 10 + whole[i + 1] - '0');
  }
  if (*p == '.') {
    ++p;
    if (*p != '\0' && !IsDigit(*p)) return;
    // Fraction digits in pairs, a last single digit d as d0; pairs beyond the
    // tenth are dropped, not rounded. The digit after a digit can be read:
    // at worst it is the terminating zero.
    while (IsDigit(*p)) {
      unsigned pair = static_cast<unsigned>(*p - '0') * 10;
      unsigned next =
          static_cast<unsigned char>(p[1]) - static_cast<unsigned>('0');
      bool two = next <= 9;
      pair += two ? next : 0;
      if (stored < 10) digits[stored++] = static_cast<unsigned char>(pair);
      p += two ? 2 : 1;
    }
  }
  // An exponent marker is invalid, so texts with an exponent yield zero.
  while (IsBlank(*p)) ++p;
  if (*p != '\0') return;
  std::memcpy(digits_, digits, sizeof digits);
  exponent_ = static_cast<signed char>(exponent);
  sign_ = negative ? 1 : 0;
}

unsigned int ZQDecimal::Whole32() const {
  uint32_t v = 0;
  for (int i = 0; i < exponent_; ++i) {
    v = v * 100u + (i < 10 ? digits_[i] : 0u);
  }
  return sign_ ? 0u - v : v;
}

unsigned long long ZQDecimal::Whole64() const {
  uint64_t v = 0;
  for (int i = 0; i < exponent_; ++i) {
    v = v * 100u + (i < 10 ? digits_[i] : 0u);
  }
  return sign_ ? 0u - v : v;
}

ZQDecimal::operator short() const {
  return static_cast<short>(static_cast<int32_t>(Whole32()));
}

ZQDecimal::operator int() const { return static_cast<int32_t>(Whole32()); }

ZQDecimal::operator long() const { return static_cast<int32_t>(Whole32()); }

ZQDecimal::operator unsigned long() const { return Whole32(); }

ZQDecimal::operator double() const {
  int last = 9;
  while (last >= 0 && digits_[last] == 0) --last;
  double v = 0;
  for (int i = 0; i <= last; ++i) v = v * 100 + digits_[i];
  // Dividing by an exact power of ten rounds once where multiplying by an
  // inexact negative power would round twice.
  int power = 2 * (exponent_ - (last + 1));
  v = power >= 0 ? v * Pow10(power) : v / Pow10(-power);
  return sign_ ? -v : v;
}

ZQDecimal ZQDecimal::operator-() const {
  ZQDecimal r(*this);
  r.sign_ = DigitsZero() ? 0 : static_cast<unsigned char>(sign_ ^ 1);
  return r;
}

// Adds `other` taken with the sign `other_sign`: magnitudes add on equal
// signs, else the smaller is subtracted from the larger and the result
// normalised; `zero_sign` is the sign a zero difference gets.
void ZQDecimal::Combine(ZQDecimal& other, unsigned char other_sign,
                        bool align_other, unsigned char zero_sign) {
  Digits a = LoadDigits(digits_);
  Digits b = LoadDigits(other.digits_);
  int ea = exponent_;
  int eb = other.exponent_;
  int e = ea > eb ? ea : eb;
  // The operand with the smaller exponent loses its low digits (a shift by
  // 10 to 15 places leaves nothing of the 80 bits).
  int shift_a = e - ea < 15 ? e - ea : 15;
  int shift_b = e - eb < 15 ? e - eb : 15;
  a >>= 8 * shift_a;
  b >>= 8 * shift_b;
  if (sign_ == other_sign) {
    // Same signs: the magnitudes add; a carry out of the first digit
    // becomes the new first digit and the last digit falls off.
    bool carry;
    Digits sum = AddDigits(a, b, &carry);
    if (carry) sum = sum >> 8 | static_cast<Digits>(1) << 72;
    // The non-const addition aligns its argument in place.
    if (align_other && eb < ea) WriteValue(&other, b, other.sign_, ea);
    WriteValue(this, sum, sign_, e + (carry ? 1 : 0));
    return;
  }
  // Opposite signs: the smaller magnitude is taken from the larger and the
  // result normalised; it has the sign of the larger.
  bool swap = b > a;
  Digits diff = swap ? SubtractDigits(b, a) : SubtractDigits(a, b);
  if (diff == 0) {
    WriteValue(this, 0, zero_sign, 0);
    return;
  }
  int shift = LeadingZeroDigits(diff);
  WriteValue(this, (diff << (8 * shift)) & kDigitMask,
             swap ? other_sign : sign_, e - shift);
}

void ZQDecimal::Add(ZQDecimal& other) { Combine(other, other.sign_, true, 0); }

void ZQDecimal::Subtract(ZQDecimal const& other) {
  // this - b is this + (-b); only a zero difference of two negatives keeps
  // its sign: (-5) - (-5) is "-0".
  ZQDecimal b(other);
  Combine(b, static_cast<unsigned char>(other.sign_ ^ 1), false, sign_);
}

ZQDecimal ZQDecimal::operator+(ZQDecimal const& other) const {
  ZQDecimal r(*this);
  ZQDecimal b(other);
  r.Add(b);
  return r;
}

ZQDecimal ZQDecimal::operator-(ZQDecimal const& other) const {
  ZQDecimal r(*this);
  r.Subtract(other);
  return r;
}

ZQDecimal& ZQDecimal::operator+=(ZQDecimal& other) {
  Add(other);
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(ZQDecimal const& other) {
  ZQDecimal copy(other);
  Add(copy);
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(double x) {
  ZQDecimal d(x);
  Add(d);
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(long v) {
  ZQDecimal d(v);
  Add(d);
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(unsigned long v) {
  ZQDecimal d(v);
  Add(d);
  return *this;
}

ZQDecimal& ZQDecimal::operator-=(ZQDecimal const& other) {
  Subtract(other);
  return *this;
}

ZQDecimal& ZQDecimal::Scale(int n) {
  if (DigitsZero()) return *this;
  int e = exponent_ + n / 2;
  if (n % 2 != 0) {
    unsigned char d[10];
    std::memcpy(d, digits_, sizeof d);
    if (d[0] >= 10) {
      // Divide by ten: the low decimal digit of each pair moves down.
      for (int i = 0; i < 10; ++i) {
        digits_[i] = static_cast<unsigned char>(
            d[i] / 10 + (i > 0 ? d[i - 1] % 10 * 10 : 0));
      }
      if (n > 0) ++e;
    } else {
      // Multiply by ten: the high decimal digit of each pair moves up.
      for (int i = 0; i < 10; ++i) {
        digits_[i] = static_cast<unsigned char>(d[i] % 10 * 10 +
                                                (i < 9 ? d[i + 1] / 10 : 0));
      }
      if (n < 0) --e;
    }
  }
  unsigned char sign = sign_;
  if (SetExponent(e)) sign_ = sign;
  return *this;
}

int ZQDecimal::PrintPlain(char* buf, int limit) const {
  int pos = 0;
  auto fits = [&](int n) { return pos + n <= limit - 1; };
  if (IsZero()) {
    if (fits(1)) buf[pos++] = '0';
    buf[pos] = '\0';
    return pos;
  }
  if (sign_) {
    if (!fits(1)) {
      buf[pos] = '\0';
      return pos;
    }
    buf[pos++] = '-';
  }
  Digits v = LoadDigits(digits_);
  int last = v != 0 ? LastDigit(v) : -1;
  int e = exponent_;
  int first = e > 0 ? e : 0;
  bool fraction = last >= first;
  int length = pos + (e > 0 ? (digits_[0] < 10 ? 1 : 2) + 2 * (e - 1) : 1);
  if (fraction) {
    length += 1 + 2 * (e < 0 ? -e : 0) + 2 * (last - first + 1) -
              (digits_[last] % 10 == 0 ? 1 : 0);
  }
  if (length <= limit - 1) {
    // The whole text fits: write it without further checks.
    char* q = buf + pos;
    if (e > 0) {
      if (digits_[0] < 10) {
        *q++ = static_cast<char>('0' + digits_[0]);
      } else {
        std::memcpy(q, kPairText.text + 2 * digits_[0], 2);
        q += 2;
      }
      int stored = e < 10 ? e : 10;
      for (int i = 1; i < stored; ++i, q += 2) {
        std::memcpy(q, kPairText.text + 2 * digits_[i], 2);
      }
      for (int i = stored; i < e; ++i, q += 2) q[0] = q[1] = '0';
    } else {
      *q++ = '0';
    }
    if (fraction) {
      *q++ = '.';
      for (int i = e; i < 0; ++i, q += 2) q[0] = q[1] = '0';
      for (int i = first; i < last; ++i, q += 2) {
        std::memcpy(q, kPairText.text + 2 * digits_[i], 2);
      }
      *q++ = static_cast<char>('0' + digits_[last] / 10);
      if (digits_[last] % 10 != 0)
        *q++ = static_cast<char>('0' + digits_[last] % 10);
    }
    *q = '\0';
    return static_cast<int>(q - buf);
  }
  bool cut = false;
  if (e > 0) {
    for (int i = 0; i < e; ++i) {
      // Stop within two bytes of the end: a pair and the terminator must fit.
      if (pos >= limit - 2) {
        cut = true;
        break;
      }
      int pair = i < 10 ? digits_[i] : 0;
      if (i == 0 && pair < 10) {
        buf[pos++] = static_cast<char>('0' + pair);
      } else {
        buf[pos++] = static_cast<char>('0' + pair / 10);
        buf[pos++] = static_cast<char>('0' + pair % 10);
      }
    }
  } else if (fits(1)) {
    buf[pos++] = '0';
  } else {
    cut = true;
  }
  if (!cut && fraction && fits(1)) {
    buf[pos++] = '.';
    for (int i = e; i < 0 && fits(2); ++i) {
      buf[pos++] = '0';
      buf[pos++] = '0';
    }
    for (int i = first; i <= last; ++i) {
      int pair = digits_[i];
      int width = (i == last && pair % 10 == 0) ? 1 : 2;
      if (!fits(width)) break;
      buf[pos++] = static_cast<char>('0' + pair / 10);
      if (width == 2) buf[pos++] = static_cast<char>('0' + pair % 10);
    }
  }
  buf[pos] = '\0';
  return pos;
}

char* ZQDecimal::Print(char* buf, int size, bool exponential) const {
  if (buf == nullptr || size < 0) return buf;
  int limit = size == 0 ? kUnboundedPrintSize : size;
  if (exponential && !IsZero()) return PrintExp(buf, size);
  PrintPlain(buf, limit);
  return buf;
}

char* ZQDecimal::PrintExp(char* buf, int size) const {
  if (buf == nullptr || size < 0) return buf;
  int limit = size == 0 ? kUnboundedPrintSize : size;
  if (limit <= 6 || DigitsZero()) {
    PrintPlain(buf, limit);
    return buf;
  }
  int last = 9;
  while (last > 0 && digits_[last] == 0) --last;
  if (2 * last + 7 >= limit - 1) last = (limit - 7) / 2;
  // The rule above leaves no room for a sign or a three-digit exponent, so
  // the digits are cut further until the whole text fits.
  for (; last >= 0; --last) {
    char text[64];
    int pos = 0;
    if (sign_) text[pos++] = '-';
    int d0 = digits_[0];
    int correction;
    if (d0 <= 10) {
      text[pos++] = static_cast<char>('0' + d0 / 10);
      text[pos++] = '.';
      text[pos++] = static_cast<char>('0' + d0 % 10);
      correction = -1;
    } else {
      // A leading pair above 10 is written as one character '0' + d0.
      text[pos++] = static_cast<char>('0' + d0);
      text[pos++] = '.';
      correction = -2;
    }
    for (int i = 1; i <= last; ++i) {
      int pair = digits_[i];
      text[pos++] = static_cast<char>('0' + pair / 10);
      if (i != last || pair % 10 != 0) {
        text[pos++] = static_cast<char>('0' + pair % 10);
      }
    }
    // The "+" goes with a non-negative printed exponent; "%02d" writes a
    // negative one as "-1".
    int e = 2 * exponent_ + correction;
    pos += std::snprintf(text + pos, sizeof text - pos,
                         e >= 0 ? "e+%02d" : "e%02d", e);
    if (pos <= limit - 1) {
      std::memcpy(buf, text, pos + 1);
      return buf;
    }
  }
  PrintPlain(buf, limit);
  return buf;
}

void ZQDecimal::Store(char* out) const {
  if (out == nullptr) return;
  out[0] = sign_ ? 0 : 1;
  std::memcpy(out + 1, digits_, sizeof digits_);
  out[11] = static_cast<char>(static_cast<unsigned char>(exponent_) ^ 0x80);
}

void ZQDecimal::Load(char const* in) {
  Clear();
  if (in == nullptr) return;
  for (int i = 1; i <= 10; ++i) {
    if (static_cast<unsigned char>(in[i]) > 99) return;
  }
  std::memcpy(digits_, in + 1, sizeof digits_);
  sign_ = in[0] == 0 ? 1 : 0;
  exponent_ =
      static_cast<signed char>(static_cast<unsigned char>(in[11]) ^ 0x80);
}
