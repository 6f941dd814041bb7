// Floating-point codecs of foreign machines and products.
#include "types/codec_float.h"

#include <locale.h>
#include <stdio.h>
#include <stdlib.h>

#include <cmath>
#include <cstring>

#include "types/codec_binary.h"
#include "types/codec_decimal.h"

namespace zq {
namespace codec {
namespace {

uint64_t DoubleBits(double v) {
  uint64_t b;
  std::memcpy(&b, &v, 8);
  return b;
}

double BitsDouble(uint64_t b) {
  double v;
  std::memcpy(&v, &b, 8);
  return v;
}

int Clz64(uint64_t v) { return v == 0 ? 64 : __builtin_clzll(v); }

// Rounds `v` (top bit 63 set) to its top `keep` bits, ties to even; returns
// the rounded value right-aligned; it may have keep+1 bits after a carry.
uint64_t RoundTop(uint64_t v, int keep) {
  const int drop = 64 - keep;
  if (drop <= 0) return v;
  if (drop >= 64) return 0;
  const uint64_t kept = v >> drop;
  const uint64_t rest = v & ((uint64_t{1} << drop) - 1);
  const uint64_t half = uint64_t{1} << (drop - 1);
  if (rest > half || (rest == half && (kept & 1))) return kept + 1;
  return kept;
}

// Builds the double nearest to sig x 2^(e - 63), with `sig` normalised (bit 63
// set); overflow gives infinity, underflow a subnormal or zero.
double MakeDouble(bool neg, uint64_t sig, int e) {
  const uint64_t sign = neg ? uint64_t{1} << 63 : 0;
  if (e > 1023) return BitsDouble(sign | 0x7FF0000000000000ull);
  if (e >= -1022) {
    uint64_t m = RoundTop(sig, 53);
    if (m >> 53) {
      m >>= 1;
      ++e;
      if (e > 1023) return BitsDouble(sign | 0x7FF0000000000000ull);
    }
    return BitsDouble(sign | (static_cast<uint64_t>(e + 1023) << 52) | (m & 0x000FFFFFFFFFFFFFull));
  }
  // Subnormal: the units are 2^-1074, so keep the bits above that.
  const int keep = 53 - (-1022 - e);
  if (keep < 0) return BitsDouble(sign);
  uint64_t m = keep == 0 ? ((sig > (uint64_t{1} << 63)) ? 1 : 0) : RoundTop(sig, keep);
  // A carry into bit 52 yields the smallest normal number, as the bits say.
  return BitsDouble(sign | m);
}

// Splits a finite non-zero double into sign, a normalised 64-bit significand
// and the exponent of its top bit.
void SplitDouble(double v, bool* neg, uint64_t* sig, int* e) {
  const uint64_t b = DoubleBits(v);
  *neg = (b >> 63) != 0;
  const int be = static_cast<int>((b >> 52) & 0x7FF);
  const uint64_t frac = b & 0x000FFFFFFFFFFFFFull;
  if (be == 0) {
    const int z = Clz64(frac);
    *sig = frac << z;
    *e = -1074 + (63 - z);
  } else {
    *sig = ((uint64_t{1} << 52) | frac) << 11;
    *e = be - 1023;
  }
}

locale_t CLocale() {
  static locale_t loc = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  return loc;
}

}  // namespace

double GetIBMmfflt(const uint8_t* p, int len) {
  if (len < 2) return 0.0;
  if (len > 8) len = 8;
  uint64_t f = 0;
  for (int i = 1; i < len; ++i) f = (f << 8) | p[i];
  if (f == 0) return 0.0;
  f <<= 64 - 8 * (len - 1);
  const int k = Clz64(f) + 1;  // shifts until the leading 1 falls out
  const uint64_t mant = k >= 64 ? 0 : f << k;
  const int exp = 4 * ((p[0] & 0x7F) - 64) - k + 1023;
  const uint64_t sign = static_cast<uint64_t>(p[0] & 0x80) << 56;
  return BitsDouble(sign | (static_cast<uint64_t>(exp) << 52) | (mant >> 12));
}

void PutIBMmfflt(uint8_t* out, int len, double v) {
  if (len < 1) return;
  std::memset(out, 0, len);
  if (len < 2 || v == 0 || std::isnan(v)) return;
  const int n = len > 8 ? 8 : len;
  const int nb = 8 * (n - 1);  // fraction bits
  const bool neg = std::signbit(v);
  const double a = std::fabs(v);
  uint64_t f = 0;
  int h = 0;  // power of 16
  bool clamp = std::isinf(a);
  if (!clamp) {
    int e;
    std::frexp(a, &e);
    h = e >= 0 ? (e + 3) / 4 : -((-e) / 4);
    double x = std::nearbyint(std::ldexp(a, nb - 4 * h));
    if (x >= std::ldexp(1.0, nb)) {
      ++h;
      x = std::nearbyint(std::ldexp(a, nb - 4 * h));
    }
    if (h > 63) {
      clamp = true;
    } else if (h < -64) {
      // Below the normal range: keep what an unnormalised fraction can hold.
      x = std::nearbyint(std::ldexp(a, nb + 4 * 64));
      h = -64;
    }
    f = static_cast<uint64_t>(x);
  }
  if (clamp) {
    h = 63;
    f = (uint64_t{1} << nb) - 1;
  }
  if (f == 0) return;
  out[0] = static_cast<uint8_t>((neg ? 0x80 : 0) | (h + 64));
  for (int i = n - 1; i >= 1; --i) {
    out[i] = static_cast<uint8_t>(f);
    f >>= 8;
  }
}

double GetVaxFloat(const uint8_t* p, int len) {
  const int n = len >= 8 ? 8 : 4;
  uint64_t w = 0;
  for (int i = 0; i < n; i += 2) w = (w << 16) | (uint64_t{p[i + 1]} << 8) | p[i];
  if (w == 0) return 0.0;
  w <<= 64 - 8 * n;  // the number at the top: sign, exponent, fraction
  const uint64_t sign = w & (uint64_t{1} << 63);
  const uint64_t e = (w >> 55) & 0xFF;
  const uint64_t frac = (w << 9) >> 12;  // top 52 fraction bits
  return BitsDouble(sign | ((e + 894) << 52) | frac);
}

void PutVaxFloat(uint8_t* out, int len, double v) {
  const int n = len >= 8 ? 8 : 4;
  std::memset(out, 0, len > 0 ? len : 0);
  if (len < 4 || v == 0 || std::isnan(v)) return;
  const int fbits = 8 * n - 9;  // fraction bits after the hidden one
  const bool neg = std::signbit(v);
  uint64_t m = 0;
  int e = 0;
  bool clamp = std::isinf(v);
  if (!clamp) {
    std::frexp(std::fabs(v), &e);  // |v| = m x 2^e, m in [0.5, 1)
    double x = std::nearbyint(std::ldexp(std::fabs(v), fbits + 1 - e));
    if (x >= std::ldexp(1.0, fbits + 1)) {
      ++e;
      x = std::nearbyint(std::ldexp(std::fabs(v), fbits + 1 - e));
    }
    m = static_cast<uint64_t>(x);
    if (e + 128 > 255) clamp = true;
    if (e + 128 < 1) return;  // below the smallest VAX magnitude
  }
  uint64_t exp = static_cast<uint64_t>(e + 128);
  if (clamp) {
    exp = 255;
    m = (uint64_t{1} << (fbits + 1)) - 1;
  }
  uint64_t w =
      (neg ? uint64_t{1} << (8 * n - 1) : 0) | (exp << fbits) | (m & ((uint64_t{1} << fbits) - 1));
  for (int i = n - 2; i >= 0; i -= 2) {
    out[i] = static_cast<uint8_t>(w);
    out[i + 1] = static_cast<uint8_t>(w >> 8);
    w >>= 16;
  }
}

float GetmscbFloat(const uint8_t* p) {
  const uint32_t w = static_cast<uint32_t>(GetBinary(p, 4, false, false));
  const uint32_t e = w >> 24;
  const uint32_t ie = e == 0 ? 0 : ((e - 2) & 0xFF);
  const uint32_t bits = ((w & 0x00800000u) << 8) | (ie << 23) | (w & 0x007FFFFFu);
  float f;
  std::memcpy(&f, &bits, 4);
  return f;
}

bool PutmscbFloat(uint8_t* out, float v) {
  if (!(v >= -1.701411733192644e38f && v <= 1.701411733192644e38f)) return false;
  uint32_t w;
  std::memcpy(&w, &v, 4);
  uint32_t e = (w >> 23) & 0xFF;
  if (e != 0) e += 2;
  const uint32_t m = ((e & 0xFF) << 24) | ((w >> 31) << 23) | (w & 0x007FFFFFu);
  PutBinary(out, m, 4, false);
  return true;
}

double GetmscbDouble(const uint8_t* p) {
  const uint64_t w = static_cast<uint64_t>(GetBinary(p, 8, false, false));
  const uint64_t e = w >> 56;
  const uint64_t ie = e == 0 ? 0 : e + 894;
  const uint64_t frac = (w & 0x007FFFFFFFFFFFFFull) >> 3;
  return BitsDouble(((w >> 55) & 1) << 63 | (ie << 52) | frac);
}

bool PutmscbDouble(uint8_t* out, double v) {
  if (!(v >= -1.701411834604692e38 && v <= 1.701411834604692e38)) return false;
  const uint64_t b = DoubleBits(v);
  int e = static_cast<int>((b >> 52) & 0x7FF);
  if (e != 0) e -= 894;
  if (e <= 0) return false;
  const uint64_t w = (static_cast<uint64_t>(e & 0xFF) << 56) | ((b >> 63) << 55) |
                     ((b & 0x000FFFFFFFFFFFFFull) << 3);
  PutBinary(out, static_cast<int64_t>(w), 8, false);
  return true;
}

double GetPasReal(const uint8_t* p, bool result_msb_first) {
  bool zero = true;
  for (int i = 0; i < 6; ++i) zero = zero && p[i] == 0;
  double r = 0.0;
  if (!zero) {
    uint64_t frac = p[5] & 0x7F;
    for (int i = 4; i >= 1; --i) frac = (frac << 8) | p[i];
    const uint64_t sign = static_cast<uint64_t>(p[5] >> 7) << 63;
    r = BitsDouble(sign | (static_cast<uint64_t>(p[0] + 894) << 52) | (frac << 13));
  }
  if (result_msb_first) {
    uint8_t b[8];
    std::memcpy(b, &r, 8);
    uint8_t rev[8];
    for (int i = 0; i < 8; ++i) rev[i] = b[7 - i];
    std::memcpy(&r, rev, 8);
  }
  return r;
}

void PutPasReal(uint8_t* out, double v) {
  std::memset(out, 0, 6);
  if (v == 0 || std::isnan(v)) return;
  const bool neg = std::signbit(v);
  uint64_t m;
  int e;
  if (std::isinf(v)) {
    e = 255;
    m = (uint64_t{1} << 40) - 1;
  } else {
    std::frexp(std::fabs(v), &e);
    double x = std::nearbyint(std::ldexp(std::fabs(v), 40 - e));
    if (x >= std::ldexp(1.0, 40)) {
      ++e;
      x = std::nearbyint(std::ldexp(std::fabs(v), 40 - e));
    }
    m = static_cast<uint64_t>(x);
    e += 128;  // 0.1F x 2^e = 1.F x 2^(e-1), stored in excess 129
    if (e < 1) return;
    if (e > 255) {
      e = 255;
      m = (uint64_t{1} << 40) - 1;
    }
  }
  out[0] = static_cast<uint8_t>(e);
  for (int i = 1; i <= 5; ++i) {
    out[i] = static_cast<uint8_t>(m);
    m >>= 8;
  }
  out[5] = static_cast<uint8_t>((out[5] & 0x7F) | (neg ? 0x80 : 0));
}

double GetCray(const uint8_t* p, bool msb_first) {
  const uint64_t w = static_cast<uint64_t>(GetBinary(p, 8, msb_first, false));
  const uint64_t frac = w & 0x0000FFFFFFFFFFFFull;
  if (frac == 0) return 0.0;
  const int exp = static_cast<int>((w >> 48) & 0x7FFF) - 16384;
  const int z = Clz64(frac);
  // 0.F x 2^exp: the top fraction bit (bit 47) weighs 2^(exp-1).
  return MakeDouble((w >> 63) != 0, frac << z, exp - 1 - (z - 16));
}

void PutCray(uint8_t* out, double v, bool msb_first) {
  uint64_t w = 0;
  if (v != 0 && !std::isnan(v)) {
    const bool neg = std::signbit(v);
    uint64_t frac;
    int exp;
    if (std::isinf(v)) {
      frac = 0x0000FFFFFFFFFFFFull;
      exp = 0x5FFF;
    } else {
      uint64_t sig;
      int e;
      bool n;
      SplitDouble(v, &n, &sig, &e);
      frac = RoundTop(sig, 48);
      if (frac >> 48) {
        frac >>= 1;
        ++e;
      }
      exp = e + 1 + 16384;
    }
    w = (neg ? uint64_t{1} << 63 : 0) | (static_cast<uint64_t>(exp) << 48) | frac;
  }
  PutBinary(out, static_cast<int64_t>(w), 8, msb_first);
}

double GetTReal(const uint8_t* p, bool msb_first) {
  uint8_t b[10];
  GetRaw(p, 10, msb_first, b);
  uint64_t sig;
  std::memcpy(&sig, b, 8);
  const int se = b[8] | (b[9] << 8);
  const bool neg = (se & 0x8000) != 0;
  const int exp = se & 0x7FFF;
  if (exp == 0x7FFF) {
    const uint64_t sign = neg ? uint64_t{1} << 63 : 0;
    if ((sig << 1) == 0) return BitsDouble(sign | 0x7FF0000000000000ull);
    // NaN: keep the payload's top bits and make it quiet.
    return BitsDouble(sign | 0x7FF8000000000000ull | ((sig << 1) >> 12));
  }
  if (sig == 0) return neg ? -0.0 : 0.0;
  const int eff = exp == 0 ? -16382 : exp - 16383;
  const int z = Clz64(sig);
  return MakeDouble(neg, sig << z, eff - z);
}

void PutTReal(uint8_t* out, double v, bool msb_first) {
  uint8_t b[10];
  const uint64_t bits = DoubleBits(v);
  const bool neg = (bits >> 63) != 0;
  uint64_t sig = 0;
  int exp = 0;
  const int be = static_cast<int>((bits >> 52) & 0x7FF);
  const uint64_t frac = bits & 0x000FFFFFFFFFFFFFull;
  if (be == 0x7FF) {
    exp = 0x7FFF;
    sig = (uint64_t{1} << 63) | (frac << 11);
  } else if (be != 0 || frac != 0) {
    bool n;
    int e;
    SplitDouble(v, &n, &sig, &e);
    exp = e + 16383;
  }
  std::memcpy(b, &sig, 8);
  const int se = exp | (neg ? 0x8000 : 0);
  b[8] = static_cast<uint8_t>(se);
  b[9] = static_cast<uint8_t>(se >> 8);
  PutRaw(out, b, 10, msb_first);
}

double GetMAGNum(const uint8_t* p, int len) {
  if (len < 2) return 0.0;
  TextBuf t;
  if (p[0] & 0x80) t.push_back('-');
  t.Append("0.", 2);
  bool any = false;
  for (int i = 1; i < len; ++i) {
    const int hi = p[i] >> 4;
    const int lo = p[i] & 0x0F;
    if (hi > 9) break;
    t.push_back(static_cast<char>('0' + hi));
    any = any || hi != 0;
    if (lo > 9) break;
    t.push_back(static_cast<char>('0' + lo));
    any = any || lo != 0;
  }
  if (!any) return 0.0;
  char e[16];
  snprintf(e, sizeof(e), "e%d", (p[0] & 0x7F) - 64);
  t.Append(e, std::strlen(e));
  return ParseDouble(t.data(), nullptr);
}

void PutMAGNum(uint8_t* out, int len, double v) {
  if (len < 1) return;
  std::memset(out, 0, len);
  if (len < 2 || v == 0 || std::isnan(v)) return;
  // Digits beyond the 32 that a double can matter for are left zero.
  const int ndig = 2 * ((len > 17 ? 17 : len) - 1);
  const bool neg = std::signbit(v);
  char digits[64];
  int exp;  // decimal exponent in excess 64
  if (std::isinf(v)) {
    std::memset(digits, '9', ndig);
    exp = 127;
  } else {
    char buf[64];
    locale_t old = uselocale(CLocale());
    snprintf(buf, sizeof(buf), "%.*e", ndig - 1, std::fabs(v));
    uselocale(old);
    // d.ddd...e+XX: the digits, then the exponent of 10.
    int k = 0;
    for (const char* s = buf; *s != 'e' && *s != 0; ++s) {
      if (*s >= '0' && *s <= '9' && k < ndig) digits[k++] = *s;
    }
    const char* es = std::strchr(buf, 'e');
    exp = (es != nullptr ? atoi(es + 1) : 0) + 1 + 64;
    if (exp < 0) return;  // too small: zero
    if (exp > 127) {
      std::memset(digits, '9', ndig);
      exp = 127;
    }
  }
  out[0] = static_cast<uint8_t>((neg ? 0x80 : 0) | exp);
  for (int i = 0; i < ndig; ++i) {
    const uint8_t d = static_cast<uint8_t>(digits[i] - '0');
    out[1 + i / 2] |= (i & 1) ? d : static_cast<uint8_t>(d << 4);
  }
}

double GetMAGReal(const uint8_t* p, int len) {
  if (len >= 8) {
    double d;
    std::memcpy(&d, p, 8);
    return d;
  }
  if (len < 4) return 0.0;
  float f;
  std::memcpy(&f, p, 4);
  return f;
}

void PutMAGReal(uint8_t* out, int len, double v) {
  if (len >= 8) {
    std::memcpy(out, &v, 8);
    std::memset(out + 8, 0, len - 8);
  } else if (len >= 4) {
    const float f = static_cast<float>(v);
    std::memcpy(out, &f, 4);
  } else if (len > 0) {
    std::memset(out, 0, len);
  }
}

}  // namespace codec
}  // namespace zq
