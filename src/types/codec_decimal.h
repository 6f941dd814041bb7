// Decimal digit codecs: packed decimal, one-digit-per-byte BCD, zoned
// (display) decimal with COBOL sign conventions, and dBASE numeric text.
//
// Readers turn a field into the text that the C library's atof would see
// (digits, possibly "." and ","), plus a sign; the engine converts that text
// into a double or an exact decimal. Writers take the magnitude as a string of
// whole digits and a sign, so that doubles and exact decimals share them.
// The caller guarantees that the field's bytes lie inside the record.
#ifndef ZQ_TYPES_CODEC_DECIMAL_H
#define ZQ_TYPES_CODEC_DECIMAL_H

#include <cstddef>
#include <cstdint>
#include <memory>

class ZQDecimal;

namespace zq {
namespace codec {

// Sign positions.
enum : long {
  kSignLeading = 1,
  kSignTrailing = 2,
  kSignLeadingSeparate = 4,
  kSignTrailingSeparate = 8,
  kSignNone = 16
};

// Sign styles that the codecs know.
enum : long {
  kStyleIbm = 1,
  kStyleMfCobol = 2,
  kStyleWang = 4,
  kStyleUnisys = 8,
  kStyleRmCobol = 16,
  kStyleAcuCobol = 1024
};

// The descriptor settings a decimal codec reads.
struct DecimalFormat {
  int length = 0;
  int scale = 0;
  bool is_signed = true;
  long sign_pos = kSignTrailingSeparate;
  long sign_style = kStyleMfCobol;
  char pad = 0;
  int decimal_places = 0;
};

// A growable character buffer that keeps short texts inline.
class TextBuf {
 public:
  TextBuf() { inline_[0] = 0; }
  TextBuf(const TextBuf&) = delete;
  TextBuf& operator=(const TextBuf&) = delete;

  // Makes room for `n` characters plus a terminator; returns the buffer.
  char* Reserve(size_t n);
  void clear() {
    len_ = 0;
    data_[0] = 0;
  }
  void push_back(char c);
  void Append(const char* s, size_t n);
  // Ends the text at `n` characters (n must not exceed the length).
  void Resize(size_t n) {
    len_ = n;
    data_[n] = 0;
  }
  char* data() { return data_; }
  const char* data() const { return data_; }
  size_t size() const { return len_; }
  char& operator[](size_t i) { return data_[i]; }
  char operator[](size_t i) const { return data_[i]; }

 private:
  char inline_[96];
  std::unique_ptr<char[]> heap_;
  char* data_ = inline_;
  size_t cap_ = sizeof(inline_) - 1;
  size_t len_ = 0;
};

// Number text read from a field: `text` is what follows any sign, up to the
// character that ends the number for atof; `neg` tells whether a negative
// sign was found.
struct NumberText {
  TextBuf text;
  bool neg = false;
};

// atof of "-" + text (when neg) or text: the C library's result, with a
// point as decimal separator whatever the locale.
double NumberTextToDouble(const NumberText& t);

// Divides by 10^scale (multiplies for a negative scale) in one step.
double Unscale(double v, int scale);

// Formats `v` like "%.0f" into `digits` (no sign: `v` must not be negative;
// NaN and infinity give the C library's text).
void FormatWhole(double v, TextBuf* digits);

// Formats `v` with "%.*f" and the C locale.
void FormatFixed(double v, int places, TextBuf* out);

// Parses text as strtod does in the C locale; `end` receives the count of
// characters used (0 when none).
double ParseDouble(const char* s, size_t* used);

// Packed decimal. Reading of a field of length 0 yields false (no value).
bool GetPack(const uint8_t* p, const DecimalFormat& f, NumberText* out);
// The same field as a whole number when it has 1 to 18 digits, all valid
// (the result atof would give); false otherwise (negative zero included),
// for the text path.
bool GetPackWhole(const uint8_t* p, const DecimalFormat& f, int64_t* v);
void PutPack(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg);

// The same writers from a whole magnitude, without passing through text.
void PutPack(uint8_t* out, const DecimalFormat& f, uint64_t mag, bool neg);
void PutZone(uint8_t* out, const DecimalFormat& f, uint64_t mag, bool neg);

// The magnitude "%.0f" would print for `v` (not negative) when it is below
// 2^64; false for larger values, NaN and infinity.
bool WholeMagnitude(double v, uint64_t* mag);

// The text as a whole number when it is 1 to 18 plain digits.
bool NumberTextWhole(const NumberText& t, int64_t* v);

// One digit per byte, the last byte a sign byte for signed fields.
bool GetBCD(const uint8_t* p, const DecimalFormat& f, NumberText* out);
void PutBCD(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg);

// Zoned decimal. `unknown_style` is set when a leading overpunch met a sign
// style outside the table (the engine logs it). A blank field yields false.
bool GetZone(const uint8_t* p, const DecimalFormat& f, NumberText* out, bool* unknown_style);
void PutZone(uint8_t* out, const DecimalFormat& f, const char* digits, size_t n, bool neg);
// The common zoned field (no blanks at either end, 1 to 18 digits once the
// sign is read, a sign style the table knows) as a whole number, the result
// atof would give; false otherwise, for the text path.
bool GetZoneWhole(const uint8_t* p, const DecimalFormat& f, int64_t* v);

// The descriptor settings the exact-decimal zoned paths read, small enough
// to be passed in two registers.
struct ZoneFormat {
  int32_t length;
  int16_t scale;
  bool is_signed;
  char pad;
  int32_t sign_pos;
  int32_t sign_style;
};

// The same common zoned field as an exact decimal divided by 10^scale, built
// from its digit characters in base-100 pairs: the decimal the engine makes
// of GetZoneWhole's number. The `before` bytes ahead of the field and the
// `after` bytes from its start may be read. False (nothing written) where
// GetZoneWhole is false, for the text path.
bool GetZoneDecimal(const uint8_t* p, ZoneFormat f, long before, long after, ZQDecimal* out);
// Writes d x 10^scale as a zoned field when that value is whole and lies
// within d's twenty digits (no rounding to do, not a negative zero); false
// otherwise, with nothing written, for the general path.
bool PutZoneDecimal(uint8_t* out, ZoneFormat f, const ZQDecimal& d);

// dBASE numeric: right-justified text; a blank field yields false.
bool GetDBNumber(const uint8_t* p, int length, NumberText* out);
// Writes `v` with the descriptor's decimal places into `length` bytes.
void PutDBNumber(uint8_t* out, int length, int places, double v);

}  // namespace codec
}  // namespace zq

#endif  // ZQ_TYPES_CODEC_DECIMAL_H
