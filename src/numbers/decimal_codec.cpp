// ZQDecimal: binary integer and packed decimal fields.
#include <cstdint>
#include <cstring>
#include <string>

#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

// Sign position and sign style codes the packed layout depends on.
constexpr long kSignTrailing = 2;
constexpr long kSignTrailingSeparate = 8;
constexpr long kSignNone = 16;
constexpr long kStyleRmcobol = 16;
constexpr long kStyleAcucobol = 1024;

// True when the `length` bytes at `offset` lie inside `in`.
bool FieldInside(ZQString const& in, long offset, long length) {
  return offset >= 0 && length >= 0 &&
         static_cast<int64_t>(offset) + length <= in.length();
}

}  // namespace

int ZQDecimal::PutBinary(ZQString& out, int length, bool msb_first) const {
  if (length < 1) return 0;
  uint64_t v = Whole64();
  char fill = static_cast<int64_t>(v) < 0 ? '\xff' : '\0';
  for (int i = 0; i < length; ++i) {
    int k = msb_first ? length - 1 - i : i;
    out += k < 8 ? static_cast<char>(v >> (8 * k)) : fill;
  }
  return length;
}

int ZQDecimal::GetBinary(ZQString const& in, int offset, int length,
                         bool msb_first, bool is_signed) {
  Clear();
  if (length < 1 || length > 8 || !FieldInside(in, offset, length)) return 0;
  const unsigned char* b =
      reinterpret_cast<const unsigned char*>(in.c_str()) + offset;
  unsigned char top = msb_first ? b[0] : b[length - 1];
  uint64_t v = is_signed && (top & 0x80) ? ~uint64_t{0} : 0;
  for (int k = 0; k < length; ++k) {
    uint64_t byte = msb_first ? b[length - 1 - k] : b[k];
    v = (v & ~(uint64_t{0xff} << (8 * k))) | (byte << (8 * k));
  }
  if (is_signed && static_cast<int64_t>(v) < 0) {
    SetUnsigned64(0 - v);
    sign_ = 1;
  } else {
    SetUnsigned64(v);
  }
  return length;
}

int ZQDecimal::PutPack(ZQString& out, ZQDType const& type) const {
  long length = type.Length();
  if (length < 1) return 0;
  // The decimal digits of the value and where its point falls once the value
  // is multiplied by 10^scale: the first `point` digits are the whole part.
  char d[20];
  for (int i = 0; i < 10; ++i) {
    d[2 * i] = static_cast<char>(digits_[i] / 10);
    d[2 * i + 1] = static_cast<char>(digits_[i] % 10);
  }
  int point = 2 * exponent_ + type.Scale();
  auto whole_digit = [&](int j) {  // j = 0 is the units digit
    int k = point - 1 - j;
    return k >= 0 && k < 20 ? d[k] : 0;
  };
  // Round to a whole number, ties to even, as "%.0f" does.
  int f0 = point >= 0 && point < 20 ? d[point] : 0;
  bool rest = false;
  for (int k = point < 0 ? 0 : point + 1; k < 20; ++k) rest = rest || d[k] != 0;
  if (point < 0) rest = rest || f0 != 0;
  bool round_up =
      point >= 0 && (f0 > 5 || (f0 == 5 && (rest || whole_digit(0) % 2 == 1)));

  long sign_pos = type.SignPos();
  long style = type.SignStyle();
  bool negative = sign_ && !DigitsZero();
  long nibbles = 2 * length;
  std::string nib(static_cast<size_t>(nibbles), '\0');
  long digit_count = nibbles;  // digits fill nibbles [0, digit_count)
  bool trailing =
      sign_pos == kSignTrailing || sign_pos == kSignTrailingSeparate;
  if (trailing) {
    digit_count = nibbles - 1;
    if (!type.Signed()) {
      nib[nibbles - 1] = 0xF;
    } else if (negative) {
      nib[nibbles - 1] = 0xD;
    } else if (style == kStyleRmcobol) {
      nib[nibbles - 1] = 0xB;
    } else if (style == kStyleAcucobol) {
      nib[nibbles - 1] = 0xF;
    } else {
      nib[nibbles - 1] = 0xC;
    }
  }
  // Digits from the right; those that do not fit are dropped on the left.
  int carry = round_up ? 1 : 0;
  for (long j = 0; j < digit_count; ++j) {
    int v = whole_digit(static_cast<int>(j < 1000 ? j : 1000)) + carry;
    carry = v == 10;
    nib[digit_count - 1 - j] = static_cast<char>(carry ? 0 : v);
  }
  if (!trailing && !(sign_pos == kSignNone && style == kStyleAcucobol)) {
    nib[0] = negative ? 0x5 : 0x3;
  }
  for (long i = 0; i < length; ++i) {
    out += static_cast<char>(nib[2 * i] << 4 | nib[2 * i + 1]);
  }
  return static_cast<int>(length);
}

int ZQDecimal::GetPack(ZQString const& in, int offset, ZQDType const& type) {
  long length = type.Length();
  if (length == 0) return 0;
  Clear();
  if (!FieldInside(in, offset, length)) return 0;
  const unsigned char* b =
      reinterpret_cast<const unsigned char*>(in.c_str()) + offset;
  long nibbles = 2 * length;
  auto nibble = [&](long i) { return i & 1 ? b[i / 2] & 0x0F : b[i / 2] >> 4; };
  long sign_pos = type.SignPos();
  long style = type.SignStyle();
  long first = 0;
  long end = nibbles;
  bool negative = false;
  if (sign_pos == kSignTrailing || sign_pos == kSignTrailingSeparate) {
    // Only a signed type has a sign nibble; only 0xD means negative.
    if (type.Signed()) {
      end = nibbles - 1;
      negative = nibble(nibbles - 1) == 0xD;
    }
  } else if (!(sign_pos == kSignNone && style == kStyleAcucobol)) {
    int s = nibble(0);
    negative = s == 0x5 || s == 0xD;
    first = 1;
  }
  // The digits up to the first nibble that is not one (it ends the number),
  // without leading zeros.
  std::string digits;
  for (long i = first; i < end; ++i) {
    int v = nibble(i);
    if (v > 9) break;
    if (v == 0 && digits.empty()) continue;
    digits += static_cast<char>('0' + v);
  }
  if (digits.empty()) return static_cast<int>(length);
  // The field holds value * 10^scale: the point falls `scale` digits from
  // the right.
  long point = static_cast<long>(digits.size()) - type.Scale();
  if (point < -256 || point > 256) return static_cast<int>(length);
  SetDigits(digits.data(), static_cast<int>(digits.size()),
            static_cast<int>(point));
  if (!DigitsZero()) sign_ = negative ? 1 : 0;
  return static_cast<int>(length);
}
