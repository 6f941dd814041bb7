// Decimal digit codecs: packed, BCD, zoned and dBASE numeric.
#include "types/codec_decimal.h"

#include <emmintrin.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>

#include <cmath>
#include <cstring>

#include "numbers/decimal_access.h"
#include "zq/decimal.h"

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

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The value 0 to 99 of a packed byte whose two nibbles are digits (0xFF
// otherwise), and the packed byte of 0 to 99, built from the nibble rule.
struct PackTables {
  uint8_t value[256];
  uint8_t byte[100];
  constexpr PackTables() : value(), byte() {
    for (int b = 0; b < 256; ++b) {
      value[b] = (b >> 4) <= 9 && (b & 0x0F) <= 9 ? static_cast<uint8_t>((b >> 4) * 10 + (b & 0x0F))
                                                  : 0xFF;
    }
    for (int v = 0; v < 100; ++v) byte[v] = static_cast<uint8_t>((v / 10) << 4 | (v % 10));
  }
};
constexpr PackTables kPack;

// The trailing sign nibble a writer stores for a non-negative value.
int PositiveSignNibble(const DecimalFormat& f) {
  if (!f.is_signed) return 0xF;
  if (f.sign_style == kStyleRmCobol) return 0xB;
  if (f.sign_style == kStyleAcuCobol) return 0xF;
  return 0xC;
}

// Eight ASCII digits as a number; false when any byte is not a digit. The
// first character is the most significant digit.
bool EightDigits(const char* s, uint32_t* v) {
  uint64_t x;
  std::memcpy(&x, s, 8);
  const uint64_t high_nibbles = x & 0xF0F0F0F0F0F0F0F0ull;
  const uint64_t carried = (x + 0x0606060606060606ull) & 0xF0F0F0F0F0F0F0F0ull;
  if ((high_nibbles | carried >> 4) != 0x3333333333333333ull) return false;
  x = ((x & 0x0F0F0F0F0F0F0F0Full) * 2561) >> 8;
  x = ((x & 0x00FF00FF00FF00FFull) * 6553601) >> 16;
  *v = static_cast<uint32_t>(((x & 0x0000FFFF0000FFFFull) * 42949672960001ull) >> 32);
  return true;
}

// `n` ASCII digits appended to the digits of `r`; false when a character is
// not a digit. The caller keeps the total within 18 digits.
bool AppendDigits(const char* s, int n, uint64_t r, uint64_t* v) {
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    uint32_t eight;
    if (!EightDigits(s + i, &eight)) return false;
    r = r * 100000000u + eight;
  }
  for (; i < n; ++i) {
    const unsigned d = static_cast<unsigned char>(s[i]) - '0';
    if (d > 9) return false;
    r = r * 10 + d;
  }
  *v = r;
  return true;
}

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
constexpr char Overpunch(char c, bool neg, long style) {
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
constexpr bool Unpunch(char* c, bool* neg, long style) {
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

// Unpunch as a table for one style: the translated character and the sign of
// every byte, so that reading an overpunched digit takes no branch.
struct UnpunchTable {
  char ch[256];
  bool neg[256];
  constexpr explicit UnpunchTable(long style) : ch(), neg() {
    for (int u = 0; u < 256; ++u) {
      char c = static_cast<char>(u);
      bool n = false;
      Unpunch(&c, &n, style);
      ch[u] = c;
      neg[u] = n;
    }
  }
};

constexpr UnpunchTable kUnpunchIbm(kStyleIbm);
constexpr UnpunchTable kUnpunchMf(kStyleMfCobol);
constexpr UnpunchTable kUnpunchWang(kStyleWang);
constexpr UnpunchTable kUnpunchAcu(kStyleAcuCobol);

// The table of a style the overpunch table knows, or null.
const UnpunchTable* UnpunchFor(long style) {
  switch (style) {
    case kStyleIbm:
      return &kUnpunchIbm;
    case kStyleMfCobol:
      return &kUnpunchMf;
    case kStyleWang:
      return &kUnpunchWang;
    case kStyleAcuCobol:
      return &kUnpunchAcu;
    default:
      return nullptr;
  }
}

// Overpunch as a table for one style: the character written in place of
// every byte, for a positive and a negative value, so that signing a digit
// takes no branch on the sign.
struct OverpunchTable {
  char ch[2][256];
  constexpr explicit OverpunchTable(long style) : ch() {
    for (int neg = 0; neg < 2; ++neg) {
      for (int u = 0; u < 256; ++u) ch[neg][u] = Overpunch(static_cast<char>(u), neg != 0, style);
    }
  }
};

constexpr OverpunchTable kOverpunchIbm(kStyleIbm);
constexpr OverpunchTable kOverpunchMf(kStyleMfCobol);
constexpr OverpunchTable kOverpunchWang(kStyleWang);
constexpr OverpunchTable kOverpunchAcu(kStyleAcuCobol);

// The table of a style that overpunches, or null (the character is kept).
const OverpunchTable* OverpunchFor(long style) {
  static constexpr const OverpunchTable* kByStyle[5] = {nullptr, &kOverpunchIbm, &kOverpunchMf,
                                                        nullptr, &kOverpunchWang};
  if (static_cast<unsigned long>(style) < 5) return kByStyle[style];
  return style == kStyleAcuCobol ? &kOverpunchAcu : nullptr;
}

// "00000000": eight '0' characters.
constexpr uint64_t kZeroChars = 0x3030303030303030ull;

// Byte masks that keep the characters from a given index on: the eight bytes
// at kKeepFrom + 24 - a + i keep byte j when i + j >= a.
constexpr struct KeepFrom {
  uint8_t b[48];
  constexpr KeepFrom() : b() {
    for (int i = 24; i < 48; ++i) b[i] = 0xFF;
  }
} kKeepFrom;

// Non-zero when some byte of `w` is not a digit character.
uint64_t NonDigits(uint64_t w) {
  const uint64_t high = w & 0xF0F0F0F0F0F0F0F0ull;
  const uint64_t carried = (w + 0x0606060606060606ull) & 0xF0F0F0F0F0F0F0F0ull;
  return (high | carried >> 4) ^ 0x3333333333333333ull;
}

// The four base-100 digits of eight digit characters (first character in
// the lowest byte, most significant), as the bytes of a word.
uint32_t PairsOfChars(uint64_t w) {
  const uint64_t d = w & 0x0F0F0F0F0F0F0F0Full;
  uint64_t x = (d & 0x00FF00FF00FF00FFull) * 10 + ((d >> 8) & 0x00FF00FF00FF00FFull);
  x = (x | x >> 8) & 0x0000FFFF0000FFFFull;
  return static_cast<uint32_t>(x | x >> 16);
}

// The eight characters from character `o` (0 to 48) of the words `t`,
// taken from the two words that hold them.
uint64_t CharsAt(const uint64_t* t, int o) {
  const int sh = 8 * (o & 7);
  const uint64_t* w = t + (o >> 3);
  return w[0] >> sh | (w[1] << (63 - sh)) << 1;
}

// Copies the `n` (1 or more) characters from character `o` of the words `t`
// to `out`, in word-sized pieces that may overlap, never past `out + n`.
void CopyChars(const uint64_t* t, int o, int n, char* out) {
  if (n >= 8) {
    for (int i = 0; i + 8 < n; i += 8) {
      const uint64_t x = CharsAt(t, o + i);
      std::memcpy(out + i, &x, 8);
    }
    const uint64_t x = CharsAt(t, o + n - 8);
    std::memcpy(out + n - 8, &x, 8);
    return;
  }
  // Fewer than eight: the last eight characters hold them in their high
  // bytes (o + n is at least 8 for every caller: 24 '0' come first).
  const uint64_t x = CharsAt(t, o + n - 8) >> (8 * (8 - n));
  if (n >= 4) {
    const uint32_t head = static_cast<uint32_t>(x);
    const uint32_t tail = static_cast<uint32_t>(x >> (8 * (n - 4)));
    std::memcpy(out, &head, 4);
    std::memcpy(out + n - 4, &tail, 4);
    return;
  }
  for (int i = 0; i < n; ++i) out[i] = static_cast<char>(x >> (8 * i));
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
  bool neg = false;
  uint64_t r = 0;  // may wrap for 19 or 20 digits, which are refused below
  int b = 0;    // first byte read two digits at a time
  int e = len;  // one past the last such byte
  int digits = 0;
  const bool trailing = f.sign_pos == kSignTrailing || f.sign_pos == kSignTrailingSeparate;
  if (trailing) {
    // The last byte holds one digit and the sign (or, unsigned, two digits
    // unless its low nibble is the usual 0xF, where atof stops).
    const int last = p[len - 1];
    e = len - 1;
    for (int i = 0; i < e; ++i) {
      const int pair = kPack.value[p[i]];
      if (pair > 99) return false;
      r = r * 100 + pair;
    }
    if ((last >> 4) > 9) return false;
    r = r * 10 + (last >> 4);
    digits = 2 * len - 1;
    if (f.is_signed) {
      neg = (last & 0x0F) == 0x0D;
    } else if ((last & 0x0F) <= 9) {
      r = r * 10 + (last & 0x0F);
      ++digits;
    }
  } else {
    if (!(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
      // The first byte's high nibble is the sign.
      const int s = p[0] >> 4;
      neg = s == 0x5 || s == 0xD;
      if ((p[0] & 0x0F) > 9) return false;
      r = p[0] & 0x0F;
      b = 1;
      digits = 1;
    }
    for (int i = b; i < e; ++i) {
      const int pair = kPack.value[p[i]];
      if (pair > 99) return false;
      r = r * 100 + pair;
    }
    digits += 2 * (e - b);
  }
  if (digits < 1 || digits > 18) return false;
  if (neg && r == 0) return false;  // atof gives -0.0 here
  const int64_t w = static_cast<int64_t>(r);
  *v = neg ? -w : w;
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
    const int sign = f.is_signed && neg ? 0xD : PositiveSignNibble(f);
    out[i--] = static_cast<uint8_t>((mag % 10) << 4 | sign);
    mag /= 10;
  }
  // Four digits a step keep the chain of divisions short.
  for (; i >= 1; i -= 2) {
    const uint64_t q = mag / 10000;
    const unsigned r = static_cast<unsigned>(mag - q * 10000);
    out[i] = kPack.byte[r % 100];
    out[i - 1] = kPack.byte[r / 100];
    mag = q;
  }
  if (i == 0) out[0] = kPack.byte[mag % 100];
  if (!trailing && !(f.sign_pos == kSignNone && f.sign_style == kStyleAcuCobol)) {
    out[0] = static_cast<uint8_t>((out[0] & 0x0F) | (neg ? 0x50 : 0x30));
  }
}

bool WholeMagnitude(double v, uint64_t* mag) {
  if (!(v >= 0 && v < 18446744073709551616.0)) return false;
  if (v < 4503599627370496.0) {
    // Below 2^52, adding 2^52 rounds to a whole number half to even, as the
    // formatter does under the default mode, without a branch on the fraction.
    const double r = (v + 4503599627370496.0) - 4503599627370496.0;
    *mag = static_cast<uint64_t>(static_cast<int64_t>(r));
    return true;
  }
  // From 2^52 on every double is whole.
  *mag = v < 9223372036854775808.0 ? static_cast<uint64_t>(static_cast<int64_t>(v))
                                   : static_cast<uint64_t>(v);
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

// Replaces the leading '0' characters of a zoned field by the pad
// character, keeping the last digit.
inline void PadZone(char* c, const DecimalFormat& f) {
  if (f.pad != 0 && f.pad != '0') {
    for (int i = 0; i + 1 < f.length && c[i] == '0' && c[i + 1] != '.'; ++i) {
      c[i] = f.pad;
    }
  }
}

// Pads and signs a zoned field whose digits are in place.
inline __attribute__((always_inline)) void FinishZone(char* c, const DecimalFormat& f, bool neg) {
  const int len = f.length;
  PadZone(c, f);
  if (!f.is_signed) return;
  switch (f.sign_pos) {
    case kSignLeading: {
      // The negative leading overpunch of this style is never stored, and
      // its positive one is the plain digit.
      const OverpunchTable* t = OverpunchFor(f.sign_style);
      if (t != nullptr && f.sign_style != kStyleAcuCobol) {
        c[0] = t->ch[neg][static_cast<uint8_t>(c[0])];
      }
      break;
    }
    case kSignTrailing: {
      const OverpunchTable* t = OverpunchFor(f.sign_style);
      if (t != nullptr) c[len - 1] = t->ch[neg][static_cast<uint8_t>(c[len - 1])];
      break;
    }
    case kSignLeadingSeparate:
      if (neg) c[0] = '-';
      break;
    case kSignTrailingSeparate:
      std::memmove(c, c + 1, len - 1);
      c[len - 1] = static_cast<char>('+' + 2 * neg);  // '-' follows '+' by two
      break;
    default:
      break;
  }
}

}  // namespace

namespace {

// Where the digits of a common zoned field lie once its sign is read: the
// characters [begin, end) of the field, the overpunched one among them (at
// `punched`, -1 for none) to be read as `punched_digit`.
struct ZoneDigits {
  int begin;
  int end;
  int punched;
  char punched_digit;
  bool neg;
};

// Reads the sign of a zoned field; false for the fields left to the text
// path (blank ends, 0 or more than 18 digits, an unknown leading overpunch
// style, an overpunch that is not a digit). The other characters are not
// checked yet.
bool FindZoneDigits(const uint8_t* p, ZoneFormat f, ZoneDigits* z) {
  const int len = f.length;
  if (len < 1 || len > 19 || p[0] == ' ' || p[len - 1] == ' ') return false;
  int b = 0;
  int e = len;
  bool neg = false;
  // An overpunched digit at either end is read through the style's table;
  // the other characters must be plain digits.
  int punched = -1;
  char punched_digit = 0;
  if (!f.is_signed) {
    if (p[0] == '+' || p[0] == '-') b = 1;
  } else if (f.sign_pos == kSignLeading || f.sign_pos == kSignTrailing) {
    const UnpunchTable* t = UnpunchFor(f.sign_style);
    const bool leading = f.sign_pos == kSignLeading;
    if (t == nullptr) {
      // The leading case logs the unknown style on the text path; the
      // trailing case passes it over and reads the character as it stands.
      if (leading) return false;
    } else {
      punched = leading ? 0 : len - 1;
      const uint8_t u = p[punched];
      punched_digit = t->ch[u];
      neg = t->neg[u];
    }
  } else if (f.sign_pos == kSignLeadingSeparate) {
    neg = p[0] == '-';
    if (p[0] == '+' || p[0] == '-') b = 1;
  } else if (f.sign_pos == kSignTrailingSeparate) {
    neg = p[len - 1] == '-';
    if (p[len - 1] == '+' || p[len - 1] == '-') --e;
  }
  if (e - b < 1 || e - b > 18) return false;
  if (punched >= 0 && !IsDigit(punched_digit)) return false;
  z->begin = b;
  z->end = e;
  z->punched = punched;
  z->punched_digit = punched_digit;
  z->neg = neg;
  return true;
}

// The number GetZoneWhole gives, from digits FindZoneDigits located.
bool ZoneWhole(const uint8_t* p, const ZoneDigits& z, int64_t* v) {
  const char* c = reinterpret_cast<const char*>(p);
  int b = z.begin;
  int e = z.end;
  uint64_t r = 0;
  const unsigned pd = static_cast<unsigned>(z.punched_digit - '0');
  if (z.punched >= 0 && z.punched == b) {
    r = pd;
    ++b;
  } else if (z.punched >= 0) {
    --e;
  }
  if (!AppendDigits(c + b, e - b, r, &r)) return false;
  if (z.punched >= 0 && z.punched != z.begin) r = r * 10 + pd;
  if (z.neg && r == 0) return false;  // atof gives -0.0 here
  const int64_t s = static_cast<int64_t>(r);
  *v = z.neg ? -s : s;
  return true;
}

}  // namespace

bool GetZoneWhole(const uint8_t* p, const DecimalFormat& f, int64_t* v) {
  const ZoneFormat zf = {
      f.length, static_cast<int16_t>(f.scale),    f.is_signed,
      f.pad,    static_cast<int32_t>(f.sign_pos), static_cast<int32_t>(f.sign_style)};
  ZoneDigits z;
  return FindZoneDigits(p, zf, &z) && ZoneWhole(p, z, v);
}

namespace {

// Pads (and, unless `signed_already`, signs) a zoned field written from an
// exact decimal; out of line, away from the usual trailing overpunch.
__attribute__((noinline)) void FinishZoneChars(char* c, ZoneFormat f, bool neg,
                                               bool signed_already) {
  DecimalFormat df;
  df.length = f.length;
  df.scale = f.scale;
  df.is_signed = f.is_signed;
  df.sign_pos = f.sign_pos;
  df.sign_style = f.sign_style;
  df.pad = f.pad;
  if (signed_already) {
    PadZone(c, df);
  } else {
    FinishZone(c, df, neg);
  }
}

// GetZoneDecimal on digits that FindZoneDigits located.
bool ZoneDecimal(const uint8_t* field, const ZoneDigits& z, long before, long after, int scale,
                 ZQDecimal* out) {
  // The digits right-aligned in 24 characters, '0' on their left and, for
  // an odd scale, one '0' after them, so that the decimal point falls
  // between two base-100 digits. Layout character j is field[first + j]
  // from index a on.
  const int n = z.end - z.begin;
  const int s = scale & 1;
  const int a = 24 - s - n;
  const long first = z.end - 24 + s;
  uint8_t tmp[24];
  const uint8_t* src;
  if (first >= -before && z.end + s <= after) {
    // The characters around the field lie inside the record: read them in
    // place and mask them off.
    src = field + first;
  } else {
    std::memset(tmp, '0', sizeof tmp);
    std::memcpy(tmp + a, field + z.begin, n);
    src = tmp;
  }
  // Three words kept in registers: the overpunched character is flipped
  // into its word by masks, not through memory.
  uint64_t w0, w1, w2, k0, k1, k2;
  std::memcpy(&w0, src, 8);
  std::memcpy(&w1, src + 8, 8);
  std::memcpy(&w2, src + 16, 8);
  std::memcpy(&k0, kKeepFrom.b + 24 - a, 8);
  std::memcpy(&k1, kKeepFrom.b + 32 - a, 8);
  std::memcpy(&k2, kKeepFrom.b + 40 - a, 8);
  k2 &= ~uint64_t{0} >> (8 * s);
  w0 = (w0 & k0) | (kZeroChars & ~k0);
  w1 = (w1 & k1) | (kZeroChars & ~k1);
  w2 = (w2 & k2) | (kZeroChars & ~k2);
  if (z.punched >= 0) {
    const long j = z.punched - first;
    const uint8_t flip = static_cast<uint8_t>(field[z.punched] ^ z.punched_digit);
    const uint64_t x = static_cast<uint64_t>(flip) << (8 * (j & 7));
    const long k = j >> 3;
    w0 ^= k == 0 ? x : 0;
    w1 ^= k == 1 ? x : 0;
    w2 ^= k == 2 ? x : 0;
  }
  if ((NonDigits(w0) | NonDigits(w1) | NonDigits(w2)) != 0) return false;
  // Twelve pairs; the first two are always 0 (at most 19 characters are
  // used) and the other ten are the digits before dropping leading zeros.
  const uint64_t g0 = PairsOfChars(w0);
  const uint64_t g1 = PairsOfChars(w1);
  const uint64_t g2 = PairsOfChars(w2);
  const uint64_t lo = g0 >> 16 | g1 << 16 | g2 << 48;
  const uint64_t hi = g2 >> 16;
  if ((lo | hi) == 0) {
    if (z.neg) return false;
    *out = ZQDecimal();
    return true;
  }
  const int zeros = lo != 0 ? __builtin_ctzll(lo) >> 3 : 8 + (__builtin_ctzll(hi) >> 3);
  const int exponent = 10 - zeros - (scale + s) / 2;
  if (exponent < -128 || exponent > 127) {
    *out = ZQDecimal();
    return true;
  }
  const unsigned __int128 digits = (static_cast<unsigned __int128>(hi) << 64 | lo) >> (8 * zeros);
  const uint64_t first8 = static_cast<uint64_t>(digits);
  const uint16_t last2 = static_cast<uint16_t>(digits >> 64);
  uint8_t d[10];
  std::memcpy(d, &first8, 8);
  std::memcpy(d + 8, &last2, 2);
  DecimalAccess::Set(out, d, z.neg, exponent);
  return true;
}

// Writes a field of `len` characters, more than sixteen, that ends with
// the first `n` of the twenty characters in c0, c1, c2: twenty-four '0'
// characters come first. Kept out of line, away from the usual lengths.
__attribute__((noinline)) void PutLongZone(uint64_t c0, uint64_t c1, uint64_t c2, int n, char* out,
                                           int len) {
  const uint64_t t[7] = {kZeroChars, kZeroChars, kZeroChars, c0, c1, c2, kZeroChars};
  const int end = 24 + n;
  if (len > end) {
    std::memset(out, '0', len - n);
    CopyChars(t, 24, n, out + (len - n));
  } else {
    CopyChars(t, end - len, len, out);
  }
}

// The `len` low whole digits of d x 10^scale as characters in `out`, when
// that value is whole and lies within d's twenty digits, with `last` (when
// not null) overpunched on the last one; `neg` receives the sign to store
// (none for an unsigned field). False, with nothing written, otherwise.
bool ZoneChars(const ZQDecimal& d, int scale, bool unsigned_field, char* out, int len,
               const OverpunchTable* last, bool* neg) {
  uint8_t dg[10];
  DecimalAccess::Digits(d, dg);
  uint64_t lo;
  uint16_t hi16;
  std::memcpy(&lo, dg, 8);
  std::memcpy(&hi16, dg + 8, 2);
  const uint64_t hi = hi16;
  const bool negative = !unsigned_field && DecimalAccess::Negative(d);
  if ((lo | hi) == 0) {
    // A negative zero is stored with its sign by the general path.
    if (negative) return false;
    std::memset(out, '0', len);
    if (last != nullptr) out[len - 1] = last->ch[0][static_cast<uint8_t>('0')];
    *neg = false;
    return true;
  }
  // A digit of 100 or more (which no decimal holds: Load and the arithmetic
  // keep them below) sets the top bit of its byte once 28 is added.
  const uint64_t big = ((lo + 0x1C1C1C1C1C1C1C1Cull) | lo) & 0x8080808080808080ull;
  if ((big | (((hi + 0x1C1C) | hi) & 0x8080)) != 0) return false;
  // The decimal point of the scaled value falls after character q of the
  // twenty digit characters; every character after it must be '0'. Pair p
  // holds the last whole character, its tens character when q is odd.
  const int q = 2 * DecimalAccess::Exponent(d) + scale;
  if (q < 1 || q > 20) return false;
  const int p = (q - 1) >> 1;
  const int odd = q & 1;
  const int last_pair =
      hi != 0 ? 8 + ((63 - __builtin_clzll(hi)) >> 3) : (63 - __builtin_clzll(lo)) >> 3;
  if (last_pair > p) return false;
  // Pair p moved to the last of the ten places, zero pairs before it: the
  // whole part ends at character 20, or 19 when q is odd.
  const unsigned __int128 y = (static_cast<unsigned __int128>(hi) << 64 | lo) << (8 * (9 - p));
  // Characters 0 to 15: tens and ones of the first eight pairs in 16-bit
  // lanes.
  const __m128i a =
      _mm_unpacklo_epi8(_mm_cvtsi64_si128(static_cast<int64_t>(y)), _mm_setzero_si128());
  const __m128i ta = _mm_mulhi_epu16(a, _mm_set1_epi16(6554));  // x * 6554 >> 16 is x / 10
  const __m128i ca = _mm_or_si128(
      _mm_or_si128(ta,
                   _mm_slli_epi16(_mm_sub_epi16(a, _mm_mullo_epi16(ta, _mm_set1_epi16(10))), 8)),
      _mm_set1_epi8('0'));
  // Characters 16 to 19 from the last two pairs.
  const unsigned y8 = static_cast<unsigned>(y >> 64);
  uint16_t t8, t9;
  std::memcpy(&t8, kDigitPairs + 2 * (y8 & 0xFF), 2);
  std::memcpy(&t9, kDigitPairs + 2 * ((y8 >> 8) & 0xFF), 2);
  const uint64_t c2 = t8 | static_cast<uint64_t>(t9) << 16 | kZeroChars << 32;
  if (odd != 0 && (c2 >> 24 & 0xFF) != '0') return false;
  if (len <= 16) {
    // The sixteen characters that end the whole part, as two words.
    const __m128i tail = _mm_cvtsi64_si128(static_cast<int64_t>(c2));
    const __m128i v = odd != 0 ? _mm_or_si128(_mm_srli_si128(ca, 3), _mm_slli_si128(tail, 13))
                               : _mm_or_si128(_mm_srli_si128(ca, 4), _mm_slli_si128(tail, 12));
    const uint64_t v0 = static_cast<uint64_t>(_mm_cvtsi128_si64(v));
    uint64_t v1 = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_shuffle_epi32(v, 0xEE)));
    if (last != nullptr) {
      // The field's last character is the top byte of v1.
      const uint64_t punched = static_cast<uint8_t>(last->ch[negative][v1 >> 56]);
      v1 = (v1 & 0x00FFFFFFFFFFFFFFull) | punched << 56;
    }
    if (len >= 8) {
      if (len > 8) {
        const int k = 8 * (16 - len);
        const uint64_t head = k == 0 ? v0 : (v0 >> k | v1 << (64 - k));
        std::memcpy(out, &head, 8);
      }
      std::memcpy(out + len - 8, &v1, 8);
    } else {
      const uint64_t x8 = v1 >> (8 * (8 - len));
      if (len >= 4) {
        const uint32_t head = static_cast<uint32_t>(x8);
        const uint32_t tail = static_cast<uint32_t>(x8 >> (8 * (len - 4)));
        std::memcpy(out, &head, 4);
        std::memcpy(out + len - 4, &tail, 4);
      } else {
        for (int i = 0; i < len; ++i) out[i] = static_cast<char>(x8 >> (8 * i));
      }
    }
  } else {
    const uint64_t c0 = static_cast<uint64_t>(_mm_cvtsi128_si64(ca));
    const uint64_t c1 = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_shuffle_epi32(ca, 0xEE)));
    PutLongZone(c0, c1, c2, 20 - odd, out, len);
    if (last != nullptr) {
      out[len - 1] = last->ch[negative][static_cast<uint8_t>(out[len - 1])];
    }
  }
  *neg = negative;
  return true;
}

}  // namespace

bool GetZoneDecimal(const uint8_t* p, ZoneFormat f, long before, long after, ZQDecimal* out) {
  ZoneDigits z;
  return FindZoneDigits(p, f, &z) && ZoneDecimal(p, z, before, after, f.scale, out);
}

bool PutZoneDecimal(uint8_t* out, ZoneFormat f, const ZQDecimal& d) {
  char* c = reinterpret_cast<char*>(out);
  // A trailing overpunch is applied while the characters are in registers;
  // the padding never reaches the last character.
  const OverpunchTable* last =
      f.is_signed && f.sign_pos == kSignTrailing ? OverpunchFor(f.sign_style) : nullptr;
  bool neg;
  if (!ZoneChars(d, f.scale, !f.is_signed, c, f.length, last, &neg)) return false;
  if (last == nullptr || (f.pad != 0 && f.pad != '0')) FinishZoneChars(c, f, neg, last != nullptr);
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
  // The rest fits 32 bits: four digits a step, from a table of pairs.
  uint32_t m = static_cast<uint32_t>(mag);
  for (; i >= 3; i -= 4) {
    const uint32_t q = m / 10000;
    const uint32_t r = m - q * 10000;
    std::memcpy(c + i - 1, kDigitPairs + 2 * (r % 100), 2);
    std::memcpy(c + i - 3, kDigitPairs + 2 * (r / 100), 2);
    m = q;
  }
  for (; i >= 1; i -= 2) {
    std::memcpy(c + i - 1, kDigitPairs + 2 * (m % 100), 2);
    m /= 100;
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
