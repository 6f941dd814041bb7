// Decimal digit codecs: packed, BCD, zoned and dBASE numeric.
#include "types/codec_decimal.h"

#include <locale.h>
#include <stdio.h>
#include <stdlib.h>

#include <cmath>
#include <cstring>

namespace zq {
namespace codec {
namespace {

// The C locale, so that numbers use a point whatever the process locale.
locale_t CLocale() {
  static locale_t loc = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  return loc;
}

// Powers of ten that a double holds exactly.
const double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// "00" to "99", two characters each.
const char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes the decimal digits of `v` into `digits`.
void WholeToText(uint64_t v, TextBuf* digits) {
  char tmp[24];
  int n = 0;
  do {
    tmp[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0);
  char* d = digits->Reserve(n);
  for (int i = 0; i < n; ++i) d[i] = tmp[n - 1 - i];
  digits->Resize(n);
}

// Lays `digits` right-aligned into `width` characters, '0' on the left; the
// leftmost digits that do not fit are dropped.
void RightAlign(char* dst, size_t width, const char* digits, size_t n) {
  if (n >= width) {
    std::memcpy(dst, digits + (n - width), width);
  } else {
    std::memset(dst, '0', width - n);
    std::memcpy(dst + (width - n), digits, n);
  }
}

// Overpunches the sign on one zoned character by `style`; a character that is
// not a digit is left alone.
char Overpunch(char c, bool neg, long style) {
  if (!IsDigit(c)) return c;
  const int d = c - '0';
  switch (style) {
    case kStyleIbm:
      if (neg) return d == 0 ? '}' : static_cast<char>('J' + d - 1);
      return d == 0 ? '{' : static_cast<char>('A' + d - 1);
    case kStyleMfCobol:
      return neg ? static_cast<char>(c + 0x40) : c;
    case kStyleWang:
      return static_cast<char>(neg ? c + 0xA0 : c + 0xC0);
    case kStyleAcuCobol:
      if (neg) return d == 0 ? '}' : static_cast<char>('J' + d - 1);
      return c;
    default:
      return c;
  }
}

// Translates an overpunched character back into a digit; returns false when
// the style is not one the table knows.
bool Unpunch(char* c, bool* neg, long style) {
  const unsigned char u = static_cast<unsigned char>(*c);
  switch (style) {
    case kStyleIbm:
      if (u == '}') {
        *c = '0';
        *neg = true;
      } else if (u >= 'J' && u <= 'R') {
        *c = static_cast<char>('1' + (u - 'J'));
        *neg = true;
      } else if (u == '{') {
        *c = '0';
      } else if (u >= 'A' && u <= 'I') {
        *c = static_cast<char>('1' + (u - 'A'));
      }
      return true;
    case kStyleMfCobol:
      if ((u >= 'p' && u <= 'y') || (u >= 'P' && u <= 'Y')) {
        *c = static_cast<char>('0' + (u & 0x0F));
        *neg = true;
      }
      return true;
    case kStyleWang:
      if (u < 0xF0) {
        *c = static_cast<char>(u + 0x60);
        *neg = true;
      } else {
        *c = static_cast<char>(u + 0x40);
      }
      return true;
    case kStyleAcuCobol:
      if (u == '}') {
        *c = '0';
        *neg = true;
      } else if (u >= 'J' && u <= 'R') {
        *c = static_cast<char>('1' + (u - 'J'));
        *neg = true;
      }
      return true;
    default:
      return false;
  }
}

}  // namespace

char* TextBuf::Reserve(size_t n) {
  if (n > cap_) {
    size_t cap = cap_ * 2;
    if (cap < n) cap = n;
    std::unique_ptr<char[]> block(new char[cap + 1]);
    std::memcpy(block.get(), data_, len_ + 1);
    heap_ = std::move(block);
    data_ = heap_.get();
    cap_ = cap;
  }
  return data_;
}

void TextBuf::push_back(char c) {
  Reserve(len_ + 1);
  data_[len_++] = c;
  data_[len_] = 0;
}

void TextBuf::Append(const char* s, size_t n) {
  Reserve(len_ + n);
  std::memcpy(data_ + len_, s, n);
  len_ += n;
  data_[len_] = 0;
}

double ParseDouble(const char* s, size_t* used) {
  char* end = nullptr;
  const double v = strtod_l(s, &end, CLocale());
  if (used != nullptr) *used = static_cast<size_t>(end - s);
  return v;
}

double NumberTextToDouble(const NumberText& t) {
  const char* s = t.text.data();
  const size_t n = t.text.size();
  // Whole numbers below 2^53 are exact, so the C library would give the same.
  size_t i = 0;
  uint64_t v = 0;
  while (i < n && i < 19 && IsDigit(s[i])) v = v * 10 + (s[i++] - '0');
  if (i > 0 && v <= (uint64_t{1} << 53)) {
    const char next = i < n ? s[i] : 0;
    if (!IsDigit(next) && next != '.' && next != 'e' && next != 'E' && next != 'x' && next != 'X') {
      const double d = static_cast<double>(v);
      return t.neg ? -d : d;
    }
  }
  if (!t.neg) return ParseDouble(s, nullptr);
  TextBuf tmp;
  tmp.push_back('-');
  tmp.Append(s, n);
  return ParseDouble(tmp.data(), nullptr);
}

double Unscale(double v, int scale) {
  if (scale == 0) return v;
  if (scale > 0) {
    if (scale <= 22) return v / kPow10[scale];
    return v / std::pow(10.0, scale);
  }
  if (-scale <= 22) return v * kPow10[-scale];
  return v * std::pow(10.0, -scale);
}

void FormatWhole(double v, TextBuf* digits) {
  digits->clear();
  uint64_t mag;
  if (WholeMagnitude(v, &mag)) {
    WholeToText(mag, digits);
    return;
  }
  locale_t old = uselocale(CLocale());
  const int n = snprintf(nullptr, 0, "%.0f", v);
  char* d = digits->Reserve(n);
  snprintf(d, n + 1, "%.0f", v);
  digits->Resize(n);
  uselocale(old);
}

void FormatFixed(double v, int places, TextBuf* out) {
  out->clear();
  if (places < 0) places = 0;
  locale_t old = uselocale(CLocale());
  const int n = snprintf(nullptr, 0, "%.*f", places, v);
  char* d = out->Reserve(n);
  snprintf(d, n + 1, "%.*f", places, v);
  out->Resize(n);
  uselocale(old);
}

bool GetPack(const uint8_t* p, const DecimalFormat& f, NumberText* out) {
  out->text.clear();
  out->neg = false;
  const int len = f.length;
  if (len <= 0) return false;
  const int nibbles = 2 * len;
  int first = 0;       // first digit nibble
  int last = nibbles;  // one past the last digit nibble
  const bool trailing = f.sign_pos == kSignTrailing || f.sign_pos == kSignTrailingSeparate;
  if (trailing) {
    if (f.is_signed) {
      last = nibbles - 1;
      out->neg = (p[len - 1] & 0x0F) == 0x0D;
    }
  } else if (!(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
    const int s = p[0] >> 4;
    out->neg = s == 0x5 || s == 0xD;
    first = 1;
  }
  char* d = out->text.Reserve(nibbles);
  size_t n = 0;
  for (int i = first; i < last; ++i) {
    const int nib = (i & 1) ? (p[i >> 1] & 0x0F) : (p[i >> 1] >> 4);
    d[n++] = static_cast<char>(nib + 0x30);
  }
  out->text.Resize(n);
  return true;
}

bool GetPackWhole(const uint8_t* p, const DecimalFormat& f, int64_t* v) {
  const int len = f.length;
  if (len <= 0 || len > 10) return false;
  const int nibbles = 2 * len;
  int first = 0;
  int last = nibbles;
  bool neg = false;
  const bool trailing = f.sign_pos == kSignTrailing || f.sign_pos == kSignTrailingSeparate;
  if (trailing) {
    if (f.is_signed) {
      last = nibbles - 1;
      neg = (p[len - 1] & 0x0F) == 0x0D;
    } else if ((p[len - 1] & 0x0F) > 9) {
      last = nibbles - 1;  // the usual 0xF: atof stops there
    }
  } else if (!(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
    const int s = p[0] >> 4;
    neg = s == 0x5 || s == 0xD;
    first = 1;
  }
  if (last - first < 1 || last - first > 18) return false;
  int64_t r = 0;
  for (int i = first; i < last; ++i) {
    const int nib = (i & 1) ? (p[i >> 1] & 0x0F) : (p[i >> 1] >> 4);
    if (nib > 9) return false;
    r = r * 10 + nib;
  }
  if (neg && r == 0) return false;  // atof gives -0.0 here
  *v = neg ? -r : r;
  return true;
}

void PutPack(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg) {
  const int len = f.length;
  if (len <= 0) return;
  std::memset(out, 0, len);
  const bool trailing = f.sign_pos == kSignTrailing || f.sign_pos == kSignTrailingSeparate;
  int nib = 2 * len - 1;  // the rightmost nibble still free
  if (trailing) {
    int sign;
    if (!f.is_signed) {
      sign = 0xF;
    } else if (neg) {
      sign = 0xD;
    } else if (f.sign_style == kStyleRmCobol) {
      sign = 0xB;
    } else if (f.sign_style == kStyleAcuCobol) {
      sign = 0xF;
    } else {
      sign = 0xC;
    }
    out[len - 1] = static_cast<uint8_t>(sign);
    --nib;
  }
  for (size_t k = n; k > 0 && nib >= 0; --k, --nib) {
    const uint8_t d = static_cast<uint8_t>(digits[k - 1] & 0x0F);
    out[nib >> 1] |= (nib & 1) ? d : static_cast<uint8_t>(d << 4);
  }
  if (!trailing && !(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
    out[0] = static_cast<uint8_t>((out[0] & 0x0F) | (neg ? 0x50 : 0x30));
  }
}

void PutPack(uint8_t* out, const DecimalFormat& f, uint64_t mag, bool neg) {
  if (f.length <= 0 || f.length > 10) {
    char digits[24];
    int n = 0;
    char tmp[24];
    do {
      tmp[n++] = static_cast<char>('0' + mag % 10);
      mag /= 10;
    } while (mag != 0);
    for (int i = 0; i < n; ++i) digits[i] = tmp[n - 1 - i];
    PutPack(out, f, digits, n, neg);
    return;
  }
  // Fields of up to 19 digits: two digits a byte straight from the number.
  const int len = f.length;
  const bool trailing = f.sign_pos == kSignTrailing || f.sign_pos == kSignTrailingSeparate;
  int i = len - 1;
  if (trailing) {
    int sign;
    if (!f.is_signed) {
      sign = 0xF;
    } else if (neg) {
      sign = 0xD;
    } else if (f.sign_style == kStyleRmCobol) {
      sign = 0xB;
    } else if (f.sign_style == kStyleAcuCobol) {
      sign = 0xF;
    } else {
      sign = 0xC;
    }
    out[i--] = static_cast<uint8_t>((mag % 10) << 4 | sign);
    mag /= 10;
  }
  for (; i >= 0; --i) {
    const unsigned pair = static_cast<unsigned>(mag % 100);
    mag /= 100;
    out[i] = static_cast<uint8_t>((pair / 10) << 4 | (pair % 10));
  }
  if (!trailing && !(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
    out[0] = static_cast<uint8_t>((out[0] & 0x0F) | (neg ? 0x50 : 0x30));
  }
}

bool WholeMagnitude(double v, uint64_t* mag) {
  if (!(v >= 0 && v < 18446744073709551616.0)) return false;
  // Rounds half to even, as the formatter does under the default mode; below
  // 2^53 the fraction is exact.
  uint64_t t = v < 9223372036854775808.0 ? static_cast<uint64_t>(static_cast<int64_t>(v))
                                         : static_cast<uint64_t>(v);
  if (v < 9007199254740992.0) {
    const double frac = v - static_cast<double>(t);
    if (frac > 0.5 || (frac == 0.5 && (t & 1))) ++t;
  }
  *mag = t;
  return true;
}

bool NumberTextWhole(const NumberText& t, int64_t* v) {
  const size_t n = t.text.size();
  if (n < 1 || n > 18) return false;
  int64_t r = 0;
  for (size_t i = 0; i < n; ++i) {
    const char c = t.text[i];
    if (c < '0' || c > '9') return false;
    r = r * 10 + (c - '0');
  }
  *v = t.neg ? -r : r;
  return true;
}

bool GetBCD(const uint8_t* p, const DecimalFormat& f, NumberText* out) {
  out->text.clear();
  out->neg = false;
  int len = f.length;
  if (len <= 0) return false;
  if (f.is_signed) {
    out->neg = p[len - 1] == 0x0D;
    --len;
  }
  char* d = out->text.Reserve(len);
  for (int i = 0; i < len; ++i) d[i] = static_cast<char>(p[i] + 0x30);
  out->text.Resize(len);
  return true;
}

void PutBCD(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg) {
  int len = f.length;
  if (len <= 0) return;
  std::memset(out, 0, len);
  if (f.is_signed) {
    out[len - 1] = neg ? 0x0D : (f.sign_style == kStyleAcuCobol ? 0x0B : 0x0C);
    --len;
  }
  int pos = len - 1;
  for (size_t k = n; k > 0 && pos >= 0; --k, --pos) {
    out[pos] = static_cast<uint8_t>(digits[k - 1] & 0x0F);
  }
}

bool GetZone(const uint8_t* p, const DecimalFormat& f, NumberText* out, bool* unknown_style) {
  out->text.clear();
  out->neg = false;
  if (unknown_style != nullptr) *unknown_style = false;
  size_t b = 0;
  size_t e = f.length > 0 ? static_cast<size_t>(f.length) : 0;
  while (b < e && p[b] == ' ') ++b;
  while (e > b && p[e - 1] == ' ') --e;
  if (b == e) return false;
  // Work on a copy: the sign character may be translated in place.
  TextBuf& t = out->text;
  t.Append(reinterpret_cast<const char*>(p + b), e - b);
  size_t start = 0;
  size_t end = t.size();
  if (!f.is_signed) {
    if (t[0] == '+' || t[0] == '-') start = 1;
  } else if (f.sign_pos == kSignLeading) {
    if (!Unpunch(&t[0], &out->neg, f.sign_style) && unknown_style != nullptr) {
      *unknown_style = true;
    }
  } else if (f.sign_pos == kSignTrailing) {
    Unpunch(&t[end - 1], &out->neg, f.sign_style);
  } else if (f.sign_pos == kSignLeadingSeparate) {
    if (t[0] == '-') out->neg = true;
    if (t[0] == '+' || t[0] == '-') start = 1;
  } else if (f.sign_pos == kSignTrailingSeparate) {
    if (t[end - 1] == '-') out->neg = true;
    if (t[end - 1] == '+' || t[end - 1] == '-') --end;
  }
  size_t k = start;
  while (k < end && (IsDigit(t[k]) || t[k] == '.' || t[k] == ',')) ++k;
  if (start > 0) std::memmove(t.data(), t.data() + start, k - start);
  t.Resize(k - start);
  return true;
}

namespace {

// Pads and signs a zoned field whose digits are in place.
void FinishZone(char* c, const DecimalFormat& f, bool neg) {
  const int len = f.length;
  if (f.pad != 0 && f.pad != '0') {
    for (int i = 0; i + 1 < len && c[i] == '0' && c[i + 1] != '.'; ++i) {
      c[i] = f.pad;
    }
  }
  if (!f.is_signed) return;
  switch (f.sign_pos) {
    case kSignLeading: {
      const char punched = Overpunch(c[0], neg, f.sign_style);
      // The negative leading overpunch of this style is never stored.
      if (!(neg && f.sign_style == kStyleAcuCobol)) c[0] = punched;
      break;
    }
    case kSignTrailing:
      c[len - 1] = Overpunch(c[len - 1], neg, f.sign_style);
      break;
    case kSignLeadingSeparate:
      if (neg) c[0] = '-';
      break;
    case kSignTrailingSeparate:
      std::memmove(c, c + 1, len - 1);
      c[len - 1] = neg ? '-' : '+';
      break;
    default:
      break;
  }
}

}  // namespace

bool GetZoneWhole(const uint8_t* p, const DecimalFormat& f, int64_t* v) {
  const int len = f.length;
  if (len < 1 || len > 19 || p[0] == ' ' || p[len - 1] == ' ') return false;
  char c[20];
  std::memcpy(c, p, len);
  int b = 0;
  int e = len;
  bool neg = false;
  if (!f.is_signed) {
    if (c[0] == '+' || c[0] == '-') b = 1;
  } else if (f.sign_pos == kSignLeading) {
    if (!Unpunch(&c[0], &neg, f.sign_style)) return false;
  } else if (f.sign_pos == kSignTrailing) {
    Unpunch(&c[len - 1], &neg, f.sign_style);
  } else if (f.sign_pos == kSignLeadingSeparate) {
    neg = c[0] == '-';
    if (c[0] == '+' || c[0] == '-') b = 1;
  } else if (f.sign_pos == kSignTrailingSeparate) {
    neg = c[len - 1] == '-';
    if (c[len - 1] == '+' || c[len - 1] == '-') --e;
  }
  if (e - b < 1 || e - b > 18) return false;
  int64_t r = 0;
  for (int i = b; i < e; ++i) {
    if (!IsDigit(c[i])) return false;
    r = r * 10 + (c[i] - '0');
  }
  if (neg && r == 0) return false;  // atof gives -0.0 here
  *v = neg ? -r : r;
  return true;
}

void PutZone(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg) {
  if (f.length <= 0) return;
  char* c = reinterpret_cast<char*>(out);
  RightAlign(c, f.length, digits, n);
  FinishZone(c, f, neg);
}

void PutZone(uint8_t* out, const DecimalFormat& f, uint64_t mag, bool neg) {
  if (f.length <= 0) return;
  char* c = reinterpret_cast<char*>(out);
  int i = f.length - 1;
  for (; i >= 0 && mag > 0xFFFFFFFFu; --i) {
    c[i] = static_cast<char>('0' + mag % 10);
    mag /= 10;
  }
  // The rest fits 32 bits: two digits a step, from a table of pairs.
  uint32_t m = static_cast<uint32_t>(mag);
  for (; i >= 1; i -= 2) {
    const char* pair = kDigitPairs + 2 * (m % 100);
    m /= 100;
    c[i - 1] = pair[0];
    c[i] = pair[1];
  }
  if (i == 0) c[0] = static_cast<char>('0' + m % 10);
  FinishZone(c, f, neg);
}

bool GetDBNumber(const uint8_t* p, int length, NumberText* out) {
  out->text.clear();
  out->neg = false;
  size_t b = 0;
  size_t e = length > 0 ? static_cast<size_t>(length) : 0;
  while (b < e && p[b] == ' ') ++b;
  while (e > b && p[e - 1] == ' ') --e;
  if (b == e) return false;
  out->text.Append(reinterpret_cast<const char*>(p + b), e - b);
  return true;
}

void PutDBNumber(uint8_t* out, int length, int places, double v) {
  if (length <= 0) return;
  TextBuf t;
  FormatFixed(v, places, &t);
  const size_t len = static_cast<size_t>(length);
  if (t.size() >= len) {
    std::memcpy(out, t.data() + (t.size() - len), len);
  } else {
    std::memset(out, ' ', len - t.size());
    std::memcpy(out + (len - t.size()), t.data(), t.size());
  }
}

}  // namespace codec
}  // namespace zq
