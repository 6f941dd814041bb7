// ZQDecimal: construction, conversion, arithmetic, comparison and text.
#include "zq/decimal.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__x86_64__)
#include <tmmintrin.h>
#endif

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

// A value's twelve bytes as two machine words: the first eight digits, and
// the last two digits with the sign and exponent bytes.
struct Raw {
  uint64_t high;
  uint32_t low;
};

inline Raw ReadRaw(void const* object) {
  Raw r;
  std::memcpy(&r.high, object, 8);
  std::memcpy(&r.low, static_cast<char const*>(object) + 8, 4);
  return r;
}

inline void WriteRaw(void* object, Raw r) {
  std::memcpy(object, &r.high, 8);
  std::memcpy(static_cast<char*>(object) + 8, &r.low, 4);
}

// The arithmetic works on the digits as one 128-bit number held in two
// words: digits 0 to 7 in `high` (digit 0 in the top byte), digits 8 and 9 in
// the top bytes of `low`, whose other bits stay zero. The carry out of digit 0
// is then the carry out of the whole number, and the stored form is two byte
// swaps away.
struct Wide {
  uint64_t high;
  uint64_t low;
};

constexpr uint64_t kWordOnes = 0x0101010101010101ull;
constexpr uint64_t kLowOnes = 0x0101ull << 48;
constexpr uint64_t kLowMask = 0xFFFFull << 48;

inline Wide Unpack(Raw r) {
  return {__builtin_bswap64(r.high),
          static_cast<uint64_t>(__builtin_bswap16(static_cast<uint16_t>(r.low)))
              << 48};
}

inline unsigned SignOf(Raw r) { return r.low >> 16 & 0xFF; }

inline int ExponentOf(Raw r) { return static_cast<int8_t>(r.low >> 24); }

inline Raw Pack(Wide v, unsigned sign, int e) {
  return {__builtin_bswap64(v.high),
          static_cast<uint32_t>(
              __builtin_bswap16(static_cast<uint16_t>(v.low >> 48))) |
              sign << 16 |
              static_cast<uint32_t>(static_cast<uint8_t>(e)) << 24};
}

inline unsigned __int128 Join(Wide v) {
  return static_cast<unsigned __int128>(v.high) << 64 | v.low;
}

inline Wide Split(unsigned __int128 w) {
  return {static_cast<uint64_t>(w >> 64), static_cast<uint64_t>(w)};
}

constexpr unsigned __int128 kJoinedBias =
    static_cast<unsigned __int128>(kBias * kWordOnes) << 64 | kBias * kLowOnes;
constexpr unsigned __int128 kJoinedTens =
    static_cast<unsigned __int128>(99 * kWordOnes) << 64 |
    (99 * kLowOnes + (1ull << 48));

// v moved right by n digits (0 to 10); digits moved past the last are lost.
inline Wide ShiftRight(Wide v, int n) {
  Wide r = Split(Join(v) >> (8 * n));
  r.low &= kLowMask;
  return r;
}

// v moved left by n digits (0 to 9).
inline Wide ShiftLeft(Wide v, int n) { return Split(Join(v) << (8 * n)); }

// a when the mask is all ones, b when it is zero.
inline uint64_t Select(uint64_t mask, uint64_t a, uint64_t b) {
  return b ^ ((a ^ b) & mask);
}

// a + b, b taken with the sign `b_sign`: the operand with the smaller
// exponent loses its low digits; on equal signs the magnitudes add and a
// carry out of digit 0 shifts the sum right by a digit; on opposite signs the
// smaller magnitude is taken from the larger, the difference is normalised
// and gets the sign of the larger; `zero_sign` is the sign of a zero
// difference. When `aligned` is given it receives b moved to a's exponent if
// the magnitudes were added and b's exponent was the smaller, else b
// unchanged. Only the choice between adding and subtracting is a branch:
// carries, the larger magnitude and the alignment are masks and shifts, as
// they are unpredictable.
__attribute__((always_inline)) inline Raw AddSigned(Raw a, Raw b,
                                                    unsigned b_sign,
                                                    unsigned zero_sign,
                                                    Raw* aligned = nullptr) {
  int ea = ExponentOf(a);
  int eb = ExponentOf(b);
  int e = ea > eb ? ea : eb;
  // A shift of ten or more digits leaves nothing.
  Wide x = ShiftRight(Unpack(a), e - ea < 10 ? e - ea : 10);
  Wide y = ShiftRight(Unpack(b), e - eb < 10 ? e - eb : 10);
  unsigned sign_a = SignOf(a);
  bool opposite = sign_a != b_sign;
  if (aligned != nullptr) {
    *aligned = !opposite && eb < ea ? Pack(y, SignOf(b), ea) : b;
  }
  Wide v;
  unsigned sign = sign_a;
  if (!opposite) {
    // The magnitudes add: the bias makes a digit sum of 100 or more carry
    // into the next byte and leave its value (0 to 99) there; a digit that
    // did not carry keeps the bias, which sets its top bit (156 to 255), and
    // loses it again.
    unsigned __int128 sum = Join(x) + Join(y) + kJoinedBias;
    v = Split(sum);
    // Digit 0 carried out of the number when its top bit is clear; the sum
    // then moves right by a digit and gains a leading 1.
    uint64_t carry = ~v.high >> 63;
    v.high -= (v.high >> 7 & kWordOnes) * kBias;
    v.low -= (v.low >> 7 & kLowOnes) * kBias;
    uint64_t carry_mask = -carry;
    v.low = Select(carry_mask, (v.low >> 8 | v.high << 56) & kLowMask, v.low);
    v.high = Select(carry_mask, v.high >> 8 | 1ull << 56, v.high);
    e += static_cast<int>(carry);
  } else {
    // The smaller magnitude is taken from the larger by adding its ten's
    // complement (99 - d for every digit, 100 - d for the last one).
    unsigned __int128 wx = Join(x);
    unsigned __int128 wy = Join(y);
    bool swap = wy > wx;
    unsigned __int128 swap_mask = -static_cast<unsigned __int128>(swap);
    unsigned __int128 exchange = (wx ^ wy) & swap_mask;
    unsigned __int128 sum =
        (wx ^ exchange) + (kJoinedTens - (wy ^ exchange)) + kJoinedBias;
    v = Split(sum);
    v.high -= (v.high >> 7 & kWordOnes) * kBias;
    v.low -= (v.low >> 7 & kLowOnes) * kBias;
    sign ^= (sign ^ b_sign) & -static_cast<unsigned>(swap);
    if (__builtin_expect((v.high | v.low) == 0, 0)) {
      return Pack(v, zero_sign, 0);
    }
    // The difference is normalised.
    int zeros =
        (v.high != 0 ? __builtin_clzll(v.high) : 64 + __builtin_clzll(v.low)) >>
        3;
    v = ShiftLeft(v, zeros);
    e -= zeros;
  }
  // An exponent out of range gives zero.
  if (__builtin_expect(e < -128 || e > 127, 0)) return Raw{0, 0};
  return Pack(v, sign, e);
}

#if defined(__x86_64__)
// Byte shuffles that place the twenty digit characters of a value with one
// to ten pairs before the point, together with the sign and the point, at
// their text positions. The first source register holds characters 0 to 15,
// the second characters 16 to 19, the '-' at byte 14 and the '.' at byte 15.
// Entry (e - 1) * 4 + skip * 2 + sign: e pairs before the point, a leading
// single digit (skip) and a sign; an index with the top bit set gives 0.
struct TextShuffles {
  static constexpr int kMinus = 16 + 14;
  static constexpr int kPoint = 16 + 15;
  // [entry][output register][source register][byte]
  unsigned char index[40][2][2][16];

  constexpr TextShuffles() : index() {
    for (int e = 1; e <= 10; ++e) {
      for (int skip = 0; skip <= 1; ++skip) {
        for (int sign = 0; sign <= 1; ++sign) {
          int entry = (e - 1) * 4 + skip * 2 + sign;
          int point = sign + 2 * e - skip;
          for (int i = 0; i < 32; ++i) {
            int from = -1;  // source character, or -1 for none
            if (sign && i == 0) {
              from = kMinus;
            } else if (i < point) {
              from = i - sign + skip;
            } else if (i == point) {
              from = kPoint;
            } else {
              from = i - sign + skip - 1;
              if (from >= 20) from = -1;
            }
            for (int src = 0; src < 2; ++src) {
              bool here = from >= 16 * src && from < 16 * src + 16;
              index[entry][i / 16][src][i % 16] =
                  here ? static_cast<unsigned char>(from - 16 * src) : 0x80;
            }
          }
        }
      }
    }
  }
};
constexpr TextShuffles kTextShuffles;

// Each 16-bit lane d (0 to 99) as the two characters of d / 10 and d % 10.
__attribute__((target("ssse3"))) inline __m128i PairChars(__m128i d) {
  // d * 6554 / 65536 is d / 10 for d below 100.
  __m128i tens = _mm_mulhi_epu16(d, _mm_set1_epi16(6554));
  __m128i ones = _mm_sub_epi16(d, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
  return _mm_add_epi16(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)),
                       _mm_set1_epi16(0x3030));
}

__attribute__((target("ssse3"))) inline __m128i Shuffle(
    __m128i source, unsigned char const* m) {
  return _mm_shuffle_epi8(source,
                          _mm_loadu_si128(reinterpret_cast<__m128i const*>(m)));
}

// Writes the plain text of a value with one to ten pairs before the point
// when the text fits in `limit` - 1 characters, without branches on the
// digits: all twenty digits are converted at once and put in place by one
// table-driven shuffle. Returns the length, or -1 to leave the value to the
// general code.
__attribute__((target("ssse3"), noinline)) int PrintPairs(
    unsigned char const* digits, int sign, int e, char* buf, int limit) {
  if (e < 1 || e > 10) return -1;
  uint64_t head;
  uint16_t tail;
  std::memcpy(&head, digits, 8);
  std::memcpy(&tail, digits + 8, 2);
  __m128i zero = _mm_setzero_si128();
  __m128i bytes =
      _mm_insert_epi16(_mm_cvtsi64_si128(static_cast<int64_t>(head)), tail, 4);
  int nonzero = ~_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, zero)) & 0x3FF;
  if (nonzero == 0) return -1;
  int last = 31 - __builtin_clz(static_cast<unsigned>(nonzero));
  // A first pair below 10 prints as one digit.
  int skip = digits[0] < 10;
  int n = sign + 2 * e - skip;
  // The point and the fraction pairs, the last one without a trailing zero.
  if (last >= e) n += 2 * (last - e) + 3 - (digits[last] % 10 == 0);
  if (n > limit - 1) return -1;

  __m128i low = PairChars(_mm_unpacklo_epi8(bytes, zero));
  __m128i high = _mm_insert_epi16(PairChars(_mm_unpackhi_epi8(bytes, zero)),
                                  '-' | '.' << 8, 7);
  auto const& m = kTextShuffles.index[(e - 1) * 4 + skip * 2 + sign];
  __m128i text0 = _mm_or_si128(Shuffle(low, m[0][0]), Shuffle(high, m[0][1]));
  __m128i text1 = _mm_or_si128(Shuffle(low, m[1][0]), Shuffle(high, m[1][1]));

  // Exactly n characters and the terminator: the first 4, 8 or 16
  // characters, then the 4 or 8 bytes that end with the terminator (they may
  // overlap).
  uint64_t q0 = static_cast<uint64_t>(_mm_cvtsi128_si64(text0));
  if (n < 8) {
    if (n < 3) {
      buf[0] = static_cast<char>(q0);
      buf[1] = static_cast<char>(q0 >> 8);
      buf[n] = '\0';
      return n;
    }
    uint32_t head = static_cast<uint32_t>(q0);
    uint32_t end = static_cast<uint32_t>(q0 >> (8 * (n - 3))) & 0x00FFFFFF;
    std::memcpy(buf, &head, 4);
    std::memcpy(buf + n - 3, &end, 4);
    return n;
  }
  uint64_t q1 =
      static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_srli_si128(text0, 8)));
  uint64_t q2 = static_cast<uint64_t>(_mm_cvtsi128_si64(text1));
  unsigned __int128 window;
  int from;
  if (n >= 16) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(buf), text0);
    window = static_cast<unsigned __int128>(q2) << 64 | q1;
    from = 8;
  } else {
    std::memcpy(buf, &q0, 8);
    window = static_cast<unsigned __int128>(q1) << 64 | q0;
    from = 0;
  }
  uint64_t end = static_cast<uint64_t>(window >> (8 * (n - 7 - from))) &
                 0x00FFFFFFFFFFFFFFull;
  std::memcpy(buf + n - 7, &end, 8);
  return n;
}

// Characters of a number's digit run: the digits and the point.
struct RunChars {
  bool in_run[256];
  constexpr RunChars() : in_run() {
    for (int c = '0'; c <= '9'; ++c) in_run[c] = true;
    in_run[static_cast<unsigned char>('.')] = true;
  }
};
constexpr RunChars kRunChars;

// The digit values for pair digits `j` (one per byte) of a run laid out in
// `first` and `rest` as ParseRun describes: digit j is run character
// j - pad, one further on past the point at `whole`; outside the run it is
// zero.
__attribute__((target("ssse3"))) inline __m128i GatherDigits(
    __m128i j, __m128i first, __m128i rest, int split, int pad, int whole,
    int length) {
  __m128i k = _mm_sub_epi8(j, _mm_set1_epi8(static_cast<char>(pad)));
  k = _mm_sub_epi8(
      k, _mm_cmpgt_epi8(k, _mm_set1_epi8(static_cast<char>(whole - 1))));
  // A shuffle index with the top bit set gives 0; so does k = -1, the pad.
  __m128i in_first = _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(split)), k);
  __m128i from_first =
      _mm_or_si128(k, _mm_andnot_si128(in_first, _mm_set1_epi8(-1)));
  __m128i in_rest =
      _mm_sub_epi8(k, _mm_set1_epi8(static_cast<char>(length - 16)));
  __m128i from_rest = _mm_or_si128(
      in_rest,
      _mm_or_si128(in_first, _mm_cmpgt_epi8(in_rest, _mm_set1_epi8(15))));
  __m128i chars = _mm_or_si128(_mm_shuffle_epi8(first, from_first),
                               _mm_shuffle_epi8(rest, from_rest));
  // Bytes outside the run are 0 and stay 0.
  return _mm_subs_epu8(chars, _mm_set1_epi8('0'));
}

// Parses a valid literal whose digit run (digits and point) has 4 to 32
// characters: one scan finds the end of the run, then two loads that stay
// within the run find the point and gather the twenty digits of the ten
// pairs (an odd count of integer digits gets a leading zero; a last single
// fraction digit d counts as d0; later digits are dropped), and writes the
// value's twelve bytes to `object`. Returns false, writing nothing, for any
// other text.
__attribute__((target("ssse3"), noinline)) bool ParseRun(char const* text,
                                                         void* object) {
  char const* p = text;
  while (IsBlank(*p)) ++p;
  unsigned negative = *p == '-';
  p += (*p == '-') | (*p == '+');
  // Two characters a step; the second is read only after the first proved
  // not to be the end.
  char const* q = p;
  for (;;) {
    if (!kRunChars.in_run[static_cast<unsigned char>(q[0])]) break;
    if (!kRunChars.in_run[static_cast<unsigned char>(q[1])]) {
      ++q;
      break;
    }
    q += 2;
  }
  int length = static_cast<int>(q - p);
  if (length < 4 || length > 32) return false;
  // The run's first `split` characters are bytes 0 to split - 1 of `first`;
  // character k from `split` on is byte k + 16 - length of `rest`. Every
  // load lies within the run.
  __m128i first;
  __m128i rest;
  int split;
  if (length >= 16) {
    first = _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
    rest = _mm_loadu_si128(reinterpret_cast<__m128i const*>(q - 16));
    split = 16;
  } else if (length >= 8) {
    first = rest = _mm_unpacklo_epi64(
        _mm_loadl_epi64(reinterpret_cast<__m128i const*>(p)),
        _mm_loadl_epi64(reinterpret_cast<__m128i const*>(q - 8)));
    split = 8;
  } else {
    uint32_t head;
    uint32_t tail;
    std::memcpy(&head, p, 4);
    std::memcpy(&tail, q - 4, 4);
    first = rest = _mm_or_si128(
        _mm_cvtsi32_si128(static_cast<int>(head)),
        _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(tail)), 12));
    split = 4;
  }
  __m128i dot = _mm_set1_epi8('.');
  uint64_t points =
      (static_cast<uint64_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(first, dot))) &
       ((1u << split) - 1)) |
      static_cast<uint64_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(rest, dot)))
              << 16 >>
          (32 - length);
  // Two points, or a point followed by anything but the end, are invalid.
  if ((points & (points - 1)) != 0) return false;
  int whole = points != 0 ? __builtin_ctzll(points) : length;
  if (*q != '\0') {
    if (whole == length - 1) return false;
    char const* t = q;
    while (IsBlank(*t)) ++t;
    if (*t != '\0') return false;
  }

  // Digit j of the pairs is run character j - pad, one further on past the
  // point; outside the run it is zero.
  int pad = whole & 1;
  __m128i index0 =
      _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  __m128i index1 = _mm_add_epi8(index0, _mm_set1_epi8(16));
  __m128i low = GatherDigits(index0, first, rest, split, pad, whole, length);
  __m128i high = GatherDigits(index1, first, rest, split, pad, whole, length);
  __m128i tens_ones = _mm_set1_epi16(1 << 8 | 10);
  __m128i pairs = _mm_packus_epi16(_mm_maddubs_epi16(low, tens_ones),
                                   _mm_maddubs_epi16(high, tens_ones));
  WriteRaw(object,
           {static_cast<uint64_t>(_mm_cvtsi128_si64(pairs)),
            static_cast<uint32_t>(_mm_extract_epi16(pairs, 4)) |
                negative << 16 | static_cast<uint32_t>((whole + 1) / 2) << 24});
  return true;
}
#endif

// The value of the decimal literal `text`, or zero when Validate rejects it.
__attribute__((noinline)) Raw ParseText(char const* text) {
  // One pass checks the text as Validate does while taking its digits.
  Raw zero = {0, 0};
  if (text == nullptr) return zero;
  char const* p = text;
  while (IsBlank(*p)) ++p;
  bool negative = *p == '-';
  p += (*p == '-') | (*p == '+');
  if (!IsDigit(*p) && *p != '.') return zero;
  char const* whole = p;
  while (IsDigit(*p)) ++p;
  int count = static_cast<int>(p - whole);
  int exponent = (count + 1) / 2;
  if (exponent > 127) return zero;

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
    if (*p != '\0' && !IsDigit(*p)) return zero;
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
  if (*p != '\0') return zero;
  Raw r;
  std::memcpy(&r.high, digits, 8);
  r.low = static_cast<uint32_t>(digits[8] | digits[9] << 8) |
          static_cast<uint32_t>(negative) << 16 |
          static_cast<uint32_t>(exponent) << 24;
  return r;
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
#if defined(__x86_64__)
  // As in Print: the fast path when the processor has byte shuffles and the
  // text suits it, else the general parser.
  if (text != nullptr && __builtin_cpu_supports("ssse3") &&
      ParseRun(text, this)) {
    return;
  }
#endif
  WriteRaw(this, ParseText(text));
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
  // Built in registers: a byte store into a copy that is then read back
  // whole would stall the read.
  Raw v = ReadRaw(this);
  bool zero = (v.high | (v.low & 0xFFFF)) == 0;
  unsigned sign = zero ? 0 : (SignOf(v) ^ 1) & 0xFF;
  v.low = (v.low & ~0xFF0000u) | sign << 16;
  ZQDecimal r;
  WriteRaw(&r, v);
  return r;
}

ZQDecimal ZQDecimal::operator+(ZQDecimal const& other) const {
  ZQDecimal r;
  WriteRaw(&r, AddSigned(ReadRaw(this), ReadRaw(&other), other.sign_, 0));
  return r;
}

ZQDecimal ZQDecimal::operator-(ZQDecimal const& other) const {
  // this - b is this + (-b); only a zero difference from a negative value
  // keeps its sign: (-5) - (-5) is "-0".
  ZQDecimal r;
  WriteRaw(&r, AddSigned(ReadRaw(this), ReadRaw(&other),
                         static_cast<unsigned char>(other.sign_ ^ 1), sign_));
  return r;
}

ZQDecimal& ZQDecimal::operator+=(ZQDecimal& other) {
  Raw b = ReadRaw(&other);
  Raw aligned;
  Raw sum = AddSigned(ReadRaw(this), b, other.sign_, 0, &aligned);
  // The argument is written first, so that x += x leaves the sum in x.
  WriteRaw(&other, aligned);
  WriteRaw(this, sum);
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(ZQDecimal const& other) {
  WriteRaw(this, AddSigned(ReadRaw(this), ReadRaw(&other), other.sign_, 0));
  return *this;
}

ZQDecimal& ZQDecimal::operator+=(double x) { return *this += ZQDecimal(x); }

ZQDecimal& ZQDecimal::operator+=(long v) { return *this += ZQDecimal(v); }

ZQDecimal& ZQDecimal::operator+=(unsigned long v) {
  return *this += ZQDecimal(v);
}

ZQDecimal& ZQDecimal::operator-=(ZQDecimal const& other) {
  WriteRaw(this, AddSigned(ReadRaw(this), ReadRaw(&other),
                           static_cast<unsigned char>(other.sign_ ^ 1), sign_));
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
#if defined(__x86_64__)
  // The whole-value path needs byte shuffles; other processors, and values
  // it does not take, go the general way.
  if (!exponential && __builtin_cpu_supports("ssse3") &&
      PrintPairs(digits_, sign_ != 0, exponent_, buf, limit) >= 0) {
    return buf;
  }
#endif
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
