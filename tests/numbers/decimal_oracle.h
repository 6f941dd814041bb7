// Exact arithmetic on scaled 128-bit integers, used as the reference for
// ZQDecimal: a value is m * 10^-s.
#ifndef ZQ_TESTS_NUMBERS_DECIMAL_ORACLE_H
#define ZQ_TESTS_NUMBERS_DECIMAL_ORACLE_H

#include <random>
#include <string>

#include "zq/decimal.h"

namespace decimal_oracle {

using i128 = __int128;

struct Exact {
  i128 m = 0;
  int s = 0;
};

inline i128 Pow10(int n) {
  i128 p = 1;
  while (n-- > 0) p *= 10;
  return p;
}

// Strips trailing zeros so that equal values have equal representations.
inline Exact Reduced(Exact x) {
  if (x.m == 0) return {0, 0};
  for (; x.m % 10 == 0; --x.s) x.m /= 10;
  return x;
}

inline bool Equal(Exact a, Exact b) {
  a = Reduced(a);
  b = Reduced(b);
  return a.m == b.m && a.s == b.s;
}

// Compares two values whose scales differ by at most 18.
inline int Compare(Exact a, Exact b) {
  a = Reduced(a);
  b = Reduced(b);
  int s = a.s > b.s ? a.s : b.s;
  i128 x = a.m * Pow10(s - a.s), y = b.m * Pow10(s - b.s);
  return x < y ? -1 : x > y ? 1 : 0;
}


// Truncates towards zero to scale `s`.
inline Exact Trunc(Exact x, int s) {
  return s >= x.s ? x : Exact{x.m / Pow10(x.s - s), s};
}

// Stored exponent (base-100 digits before the point).
inline int StoredExponent(ZQDecimal const& d) {
  char b[12];
  d.Store(b);
  return static_cast<signed char>(static_cast<unsigned char>(b[11]) ^ 0x80);
}

// Reads the value back from the documented twelve-byte storage form.
inline Exact FromStore(ZQDecimal const& d, bool* negative = nullptr) {
  char b[12];
  d.Store(b);
  i128 m = 0;
  for (int i = 1; i <= 10; ++i) m = m * 100 + static_cast<unsigned char>(b[i]);
  if (negative != nullptr) *negative = b[0] == 0;
  return {b[0] == 0 ? -m : m, 20 - 2 * StoredExponent(d)};
}

// Reads "[-]digits[.digits]".
inline Exact FromText(std::string const& t) {
  Exact x;
  bool frac = false;
  for (char c : t) {
    if (c == '.') frac = true;
    if (c < '0' || c > '9') continue;
    x.m = x.m * 10 + (c - '0');
    x.s += frac;
  }
  if (!t.empty() && t[0] == '-') x.m = -x.m;
  return x;
}

// The shortest text of a value: no leading zeros, no trailing fraction zeros.
inline std::string ToText(Exact x) {
  x = Reduced(x);
  i128 m = x.m < 0 ? -x.m : x.m;
  std::string d;
  do {
    d.insert(d.begin(), static_cast<char>('0' + static_cast<int>(m % 10)));
  } while ((m /= 10) != 0);
  if (x.s <= 0) {
    d += std::string(-x.s, '0');
  } else {
    if (static_cast<int>(d.size()) <= x.s) d.insert(0, x.s + 1 - d.size(), '0');
    d.insert(d.size() - x.s, ".");
  }
  return x.m < 0 ? "-" + d : d;
}

// A random literal of `sig` significant digits (the first non-zero) with
// `int_digits` digits before the point (0 or less: "0.", then that many
// zeros, then the digits).
inline std::string RandomText(std::mt19937_64& rng, int sig, int int_digits,
                              bool negative) {
  std::string d(1, static_cast<char>('1' + rng() % 9));
  for (int i = 1; i < sig; ++i) d += static_cast<char>('0' + rng() % 10);
  if (int_digits <= 0) {
    d = "0." + std::string(-int_digits, '0') + d;
  } else if (int_digits >= sig) {
    d += std::string(int_digits - sig, '0');
  } else {
    d.insert(int_digits, ".");
  }
  return negative ? "-" + d : d;
}

}  // namespace decimal_oracle

#endif  // ZQ_TESTS_NUMBERS_DECIMAL_ORACLE_H
