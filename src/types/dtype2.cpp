// The conversion engine of ZQDType: Input and Output dispatch on the type to
// the codecs, with the scale applied around them.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "types/codec_binary.h"
#include "types/codec_decimal.h"
#include "types/codec_exact.h"
#include "types/codec_float.h"
#include "types/codec_punch.h"
#include "zq/common.h"
#include "zq/datetime.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/quadword.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

namespace codec = zq::codec;
using codec::NumberText;
using codec::TextBuf;

// The field's bytes when `need` bytes from `offset` lie inside the record.
const uint8_t* FieldAt(const ZQString& rec, long offset, long need) {
  if (offset < 0 || need < 0 || offset > rec.length() || need > rec.length() - offset) {
    return nullptr;
  }
  return reinterpret_cast<const uint8_t*>(rec.c_str()) + offset;
}

void AppendBytes(ZQString& out, const void* p, long n) {
  if (n > 0) out.Append(static_cast<const char*>(p), n);
}

// Room for `n` (at least 1) more bytes after the content of `out`, so that a
// field is encoded in place; null when the string cannot grow. Reserving
// length + n - 1 bytes and the terminator grows the buffer exactly when
// appending n bytes would. TakeRoom then adds the bytes to the content.
uint8_t* AppendRoom(ZQString& out, long n) {
  const long len = out.length();
  if (!out.Allocate(len + n - 1)) return nullptr;
  return reinterpret_cast<uint8_t*>(out.GetBuffer()) + len;
}

void TakeRoom(ZQString& out, long n) { out.SetLength(out.length() + n); }

// Room for one field's bytes and a terminator: on the stack for the usual
// lengths.
class FieldBuf {
 public:
  explicit FieldBuf(long n) {
    if (n >= static_cast<long>(sizeof(small_))) {
      big_.reset(new uint8_t[n + 1]);
      data_ = big_.get();
    }
  }
  uint8_t* data() { return data_; }

 private:
  uint8_t small_[64];
  std::unique_ptr<uint8_t[]> big_;
  uint8_t* data_ = small_;
};

// A scratch area for one field's bytes.
uint8_t* Room(TextBuf& buf, long n) {
  return reinterpret_cast<uint8_t*>(buf.Reserve(n > 0 ? n : 0));
}

int32_t Wrap32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

// Truncation toward zero; NaN and values beyond the range give the x86
// "integer indefinite" (the lowest value), as the hardware conversion does.
int32_t Trunc32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
}

int64_t Trunc64(double v) {
  if (!(v >= -9223372036854775808.0 && v < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<int64_t>(v);
}

// Truncation toward zero, clamped to the 32-bit range; NaN gives 0.
int32_t Clamp32(double v) {
  if (std::isnan(v)) return 0;
  if (v <= -2147483648.0) return INT32_MIN;
  if (v >= 2147483647.0) return INT32_MAX;
  return static_cast<int32_t>(v);
}

bool IsTextType(int t) {
  switch (t) {
    case ZQDT_TEXT:
    case ZQDT_NAME:
    case ZQDT_MEMO:
    case ZQDT_CSTRING:
    case ZQDT_PASCAL_STRING1:
    case ZQDT_PASCAL_STRING2:
    case ZQDT_DISPLAY:
    case ZQDT_DISPLAY_JUSTIFIED:
    case ZQDT_PICTURE:
    case ZQDT_VARCHAR:
    case ZQDT_LONG_VARCHAR:
    case ZQDT_BINARY:
    case ZQDT_VARBIN:
    case ZQDT_LONG_VARBIN:
    case ZQDT_VARGRAPHIC:
    case ZQDT_LONG_VARGRAPHIC:
      return true;
    default:
      return false;
  }
}

bool IsSignedDisplay(int t) {
  return t >= ZQDT_DISPLAY_SIGN_TRAILING && t <= ZQDT_DISPLAY_SIGN_LEADING_SEP;
}

bool IsPacked(int t) {
  return t == ZQDT_DECIMAL || t == ZQDT_NUMBER || t == ZQDT_PACKED || t == ZQDT_COMP3;
}

bool IsZoned(int t) { return t == ZQDT_ZONED || IsSignedDisplay(t); }

// Types whose stored form is a whole binary number scaled by the engine.
bool IsBinaryInteger(int t) {
  switch (t) {
    case ZQDT_SHORT:
    case ZQDT_INTEGER:
    case ZQDT_DATE:
    case ZQDT_TIME:
    case ZQDT_COMP:
    case ZQDT_COMP5:
    case ZQDT_COMPX:
    case ZQDT_BINARY8:
    case ZQDT_BIT_FIELD:
    case ZQDT_BINARY24:
    case ZQDT_TEC_BINARY:
      return true;
    default:
      return false;
  }
}

bool IsLegacyDate(int t) {
  switch (t) {
    case ZQDT_BTRIEVE_DATE:
    case ZQDT_BTRIEVE_TIME:
    case ZQDT_MAGIC_DATE:
    case ZQDT_MAGIC_TIME:
    case ZQDT_SALESALLY_DATE:
    case ZQDT_SALESALLY_TIME:
    case ZQDT_TIME_MINUTES:
      return true;
    default:
      return false;
  }
}

codec::DecimalFormat FormatOf(const ZQDType& t) {
  codec::DecimalFormat f;
  f.length = static_cast<int>(t.Length());
  f.scale = t.Scale();
  f.is_signed = t.Signed();
  f.sign_pos = t.SignPos();
  f.sign_style = t.SignStyle();
  f.pad = static_cast<char>(t.PadChar());
  f.decimal_places = t.DecimalPlaces();
  return f;
}

// The settings of a zoned descriptor for the exact-decimal paths.
codec::ZoneFormat ZoneFormatOf(const ZQDType& t) {
  return {static_cast<int32_t>(t.Length()),
          t.Scale(),
          t.Signed(),
          static_cast<char>(t.PadChar()),
          static_cast<int32_t>(t.SignPos()),
          static_cast<int32_t>(t.SignStyle())};
}

// Reads the stored whole number of a binary integer type, before scaling,
// with the sign rules of the numeric forms.
bool ReadRawInteger(const ZQDType& t, const uint8_t* p, int64_t* v) {
  const int len = static_cast<int>(t.Length());
  const bool msb = t.MSBFirst();
  switch (t.Type()) {
    case ZQDT_SHORT:
      *v = codec::GetBinary(p, len > 8 ? 8 : len, msb, t.Signed());
      return true;
    case ZQDT_INTEGER:
    case ZQDT_DATE:
    case ZQDT_TIME:
      *v = codec::GetBinary(p, len > 4 ? 4 : len, msb, t.Signed());
      return true;
    case ZQDT_COMP:
    case ZQDT_COMP5:
    case ZQDT_COMPX:
      // Only the 3-byte form honours the signedness flag.
      if (len == 3) {
        *v = codec::Get3Byte(p, msb, t.Signed());
      } else {
        *v = codec::GetBinary(p, len > 8 ? 8 : len, msb, true);
      }
      return true;
    case ZQDT_BINARY8:
    case ZQDT_BIT_FIELD:
      *v = codec::GetBinary(p, 1, false, t.Signed());
      return true;
    case ZQDT_BINARY24:
      *v = codec::Get3Byte(p, msb, t.Signed());
      return true;
    case ZQDT_TEC_BINARY:
      *v = codec::Get4FuBin(p, msb);
      return true;
    default:
      return false;
  }
}

// Writes a whole number into a binary integer type's bytes. `wide` is the
// value for lengths above 4; `ext_from_long` selects the documented
// extension bytes of the `long` form instead.
void WriteRawInteger(const ZQDType& t, uint8_t* out, int64_t v, bool ext_from_long) {
  const int len = static_cast<int>(t.Length());
  const bool msb = t.MSBFirst();
  switch (t.Type()) {
    case ZQDT_BINARY24:
      codec::Put3Byte(out, Wrap32(v), msb);
      return;
    case ZQDT_TEC_BINARY:
      codec::Put4FuBin(out, Wrap32(v), msb);
      return;
    case ZQDT_BINARY8:
    case ZQDT_BIT_FIELD:
      codec::PutBinary(out, v, len, false);
      return;
    default:
      break;
  }
  if (len <= 4) {
    codec::PutBinary(out, v, len, msb);
    return;
  }
  const int n = len > 8 ? 8 : len;
  if (ext_from_long) {
    // Four value bytes and sign-extension bytes, which are 0xFF only for a
    // negative value of a signed type.
    const uint8_t ext = (t.Signed() && Wrap32(v) < 0) ? 0xFF : 0x00;
    if (msb) {
      std::memset(out, ext, n - 4);
      codec::PutBinary(out + n - 4, v, 4, true);
    } else {
      codec::PutBinary(out, v, 4, false);
      std::memset(out + 4, ext, n - 4);
    }
  } else {
    codec::PutBinary(out, v, n, msb);
  }
  if (len > n) std::memset(out + n, 0, len - n);
}

// Appends a binary integer field holding `v`: encoded in place for the types
// whose writer fills the whole field, through a scratch copy otherwise.
void AppendRawInteger(const ZQDType& t, ZQString& out, int64_t v, bool ext_from_long) {
  const long len = t.Length();
  switch (t.Type()) {
    case ZQDT_BINARY24:
    case ZQDT_TEC_BINARY:
    case ZQDT_BINARY8:
    case ZQDT_BIT_FIELD: {
      FieldBuf buf(len);
      WriteRawInteger(t, buf.data(), v, ext_from_long);
      AppendBytes(out, buf.data(), len);
      return;
    }
    default: {
      uint8_t* b = AppendRoom(out, len);
      if (b == nullptr) return;
      WriteRawInteger(t, b, v, ext_from_long);
      TakeRoom(out, len);
      return;
    }
  }
}

// Exact decimal from the text of a decimal field: the digits, at most one
// point, as far as atof would read them.
ZQDecimal DecimalFromInt(int64_t v);

ZQDecimal DecimalFromText(const NumberText& t) {
  int64_t whole;
  if (codec::NumberTextWhole(t, &whole) && !(whole == 0 && t.neg)) {
    return DecimalFromInt(whole);
  }
  TextBuf s;
  if (t.neg) s.push_back('-');
  bool point = false;
  size_t digits = 0;
  // Leading zeros are left out: a decimal read from text keeps the digit
  // pairs as they fall, and "0123" would hold a zero pair.
  size_t i = 0;
  while (i + 1 < t.text.size() && t.text[i] == '0' && t.text[i + 1] >= '0' &&
         t.text[i + 1] <= '9') {
    ++i;
    ++digits;
  }
  for (; i < t.text.size(); ++i) {
    const char c = t.text[i];
    if (c >= '0' && c <= '9') {
      s.push_back(c);
      ++digits;
    } else if (c == '.' && !point) {
      s.push_back(c);
      point = true;
    } else {
      break;
    }
  }
  if (digits == 0) return ZQDecimal();
  return ZQDecimal(s.data());
}

ZQDecimal DecimalFromInt(int64_t v) {
  if (v >= INT32_MIN && v <= INT32_MAX) return ZQDecimal(static_cast<long>(v));
  char buf[32];
  snprintf(buf, sizeof(buf), "%lld", static_cast<long long>(v));
  return ZQDecimal(buf);
}

// The decimal of a whole number read from a field, divided by 10^scale.
void ScaledDecimal(int64_t v, int scale, ZQDecimal* out) {
  if (codec::DecimalOfScaledWhole(v, scale, out)) return;
  *out = DecimalFromInt(v);
  out->Scale(-scale);
}

// The whole digits of a decimal (rounded half to even, as "%.0f" rounds) and
// its sign.
void WholeDigits(const ZQDecimal& d, TextBuf* digits, bool* neg) {
  char buf[ZQDecimal::kUnboundedPrintSize + 8];
  d.Print(buf, sizeof(buf), false);
  const char* s = buf;
  *neg = *s == '-';
  if (*neg) ++s;
  const char* point = std::strchr(s, '.');
  const size_t int_len = point != nullptr ? static_cast<size_t>(point - s) : std::strlen(s);
  digits->clear();
  digits->Append(s, int_len);
  if (digits->size() == 0) digits->push_back('0');
  if (point != nullptr) {
    const char* f = point + 1;
    bool up = false;
    if (*f > '5') {
      up = true;
    } else if (*f == '5') {
      bool rest = false;
      for (const char* r = f + 1; *r; ++r) rest = rest || *r != '0';
      up = rest || (((*digits)[digits->size() - 1] - '0') & 1);
    }
    if (up) {
      size_t i = digits->size();
      while (i > 0 && (*digits)[i - 1] == '9') (*digits)[--i] = '0';
      if (i == 0) {
        TextBuf tmp;
        tmp.push_back('1');
        tmp.Append(digits->data(), digits->size());
        digits->clear();
        digits->Append(tmp.data(), tmp.size());
      } else {
        ++(*digits)[i - 1];
      }
    }
  }
}

// The magnitude of a decimal that holds a whole number below 2^31.
bool DecimalWhole(const ZQDecimal& d, uint64_t* mag, bool* neg) {
  const double approx = static_cast<double>(d);
  if (!(approx > -2.0e9 && approx < 2.0e9)) return false;
  const long w = static_cast<long>(d);
  if (!(ZQDecimal(w) == d)) return false;
  *neg = d.IsNeg();
  *mag = static_cast<uint64_t>(w < 0 ? -static_cast<int64_t>(w) : w);
  return true;
}

// Whole part of a decimal, truncated toward zero and clamped to 64 bits.
int64_t DecimalToInt64(const ZQDecimal& d) {
  // The 32-bit conversion truncates exactly while the value fits.
  const double approx = static_cast<double>(d);
  if (approx > -2.0e9 && approx < 2.0e9) return static_cast<int32_t>(static_cast<long>(d));
  // Otherwise the whole part is taken from the digits and truncated to 64
  // bits, so an unsigned 64-bit field holds values up to 2^64-1.
  char buf[ZQDecimal::kUnboundedPrintSize + 8];
  d.Print(buf, sizeof(buf), false);
  const char* p = buf;
  const bool neg = *p == '-';
  if (neg || *p == '+') ++p;
  uint64_t u = 0;
  for (; *p >= '0' && *p <= '9'; ++p) u = u * 10u + static_cast<uint64_t>(*p - '0');
  return static_cast<int64_t>(neg ? 0u - u : u);
}

// The 16-bit text of an 8-bit one, unit for byte.
void Widen(const char* s, size_t n, ZQWString& out) {
  for (size_t i = 0; i < n; ++i) {
    const unsigned short u = static_cast<unsigned char>(s[i]);
    out.Append(&u, 1);
  }
}

// A field of 16-bit units as bytes (units above 255 become "?").
bool Narrow(const ZQWString& rec, long offset, long len, TextBuf* out) {
  if (offset < 0 || len < 0 || offset > rec.length() || len > rec.length() - offset) {
    return false;
  }
  const unsigned short* u = rec.c_str() + offset;
  out->clear();
  for (long i = 0; i < len; ++i) {
    out->push_back(u[i] > 255 ? '?' : static_cast<char>(u[i]));
  }
  return true;
}

// Multiplies by 10^n: one step for n of 1 to 4 (or -1 to -4), else by 10 as
// many times as the magnitude of n; the step-by-step form sets the rounding.
inline double ScaleDouble(double v, int n) {
  static const double kStep[] = {1.0, 10.0, 100.0, 1000.0, 10000.0};
  if (n >= 1 && n <= 4) return v * kStep[n];
  if (n <= -1 && n >= -4) return v / kStep[-n];
  for (int i = 0; i < n; ++i) v *= 10.0;
  for (int i = 0; i < -n; ++i) v /= 10.0;
  return v;
}

// Reads a packed field as a double: the whole number when it has up to 18
// valid digits (exact below 2^53, as atof would convert it), else the text
// that atof sees.
long DecodePack(const ZQDType& t, const ZQString& rec, long offset, double& v) {
  const long len = t.Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr) return 0;
  const codec::DecimalFormat f = FormatOf(t);
  int64_t whole;
  if (codec::GetPackWhole(p, f, &whole) && whole <= (int64_t{1} << 53) &&
      whole >= -(int64_t{1} << 53)) {
    v = codec::Unscale(static_cast<double>(whole), t.Scale());
    return len;
  }
  NumberText text;
  if (!codec::GetPack(p, f, &text)) return 0;
  v = codec::Unscale(codec::NumberTextToDouble(text), t.Scale());
  return len;
}

// Reads a zoned field as a double, as DecodePack does; a blank field is 0.
long DecodeZone(const ZQDType& t, const ZQString& rec, long offset, double& v) {
  const long len = t.Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr) return 0;
  const codec::DecimalFormat f = FormatOf(t);
  int64_t whole;
  if (codec::GetZoneWhole(p, f, &whole) && whole <= (int64_t{1} << 53) &&
      whole >= -(int64_t{1} << 53)) {
    v = codec::Unscale(static_cast<double>(whole), t.Scale());
    return len;
  }
  NumberText text;
  bool unknown = false;
  if (!codec::GetZone(p, f, &text, &unknown)) {
    v = 0.0;
    return len;
  }
  if (unknown) {
    ZQGlob::LogMessage(4, BATCH_INVALID, "Unknown signstyle %d", static_cast<int>(t.SignStyle()));
  }
  v = codec::Unscale(codec::NumberTextToDouble(text), t.Scale());
  return len;
}

// Writes a double as a packed (`zoned` false) or zoned field: scaled, then
// rounded to a whole number as "%.0f" rounds.
long EncodeDigits(const ZQDType& t, ZQString& out, double v, bool zoned) {
  const long len = t.Length();
  if (len < 1) return 0;
  v = ScaleDouble(v, t.Scale());
  uint8_t* b = AppendRoom(out, len);
  if (b == nullptr) return len;
  const codec::DecimalFormat f = FormatOf(t);
  const bool neg = v < 0;
  uint64_t mag;
  if (codec::WholeMagnitude(std::fabs(v), &mag)) {
    if (zoned) {
      codec::PutZone(b, f, mag, neg);
    } else {
      codec::PutPack(b, f, mag, neg);
    }
  } else {
    TextBuf digits;
    codec::FormatWhole(std::fabs(v), &digits);
    if (zoned) {
      codec::PutZone(b, f, digits.data(), digits.size(), neg);
    } else {
      codec::PutPack(b, f, digits.data(), digits.size(), neg);
    }
  }
  TakeRoom(out, len);
  return len;
}

// Reads a floating-point field of `len` bytes (at least `min_len`) with
// `read`; 0 when the field is not inside the record.
long ReadFloatField(const ZQString& rec, long offset, long len, long min_len,
                    double (*read)(const uint8_t*, int), double& v) {
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr || len < min_len) return 0;
  v = read(p, static_cast<int>(len));
  return len;
}

// Appends a floating-point field of `len` bytes written by `write`.
long WriteFloatField(long len, ZQString& out, void (*write)(uint8_t*, int, double), double v) {
  if (len < 1) return 0;
  FieldBuf buf(len);
  write(buf.data(), static_cast<int>(len), v);
  AppendBytes(out, buf.data(), len);
  return len;
}

// Appends the `size` bytes of a fixed-size format as a field of `len` bytes:
// cut when shorter, zero-padded when longer.
long AppendFixed(ZQString& out, const uint8_t* b, long size, long len) {
  if (len < 1) return 0;
  AppendBytes(out, b, len < size ? len : size);
  if (len > size) out.Pad(0, len - size);
  return len;
}

}  // namespace

// ---- scaling ---------------------------------------------------------------

long ZQDType::_scale(long v, int n) {
  uint32_t u = static_cast<uint32_t>(v);
  int32_t s = static_cast<int32_t>(u);
  if (n >= 1) {
    for (int i = 0; i < n; ++i) u *= 10u;
    return static_cast<int32_t>(u);
  }
  for (int i = 0; i < -n && s != 0; ++i) s /= 10;
  return s;
}

unsigned long ZQDType::_scale(unsigned long v, int n) {
  uint32_t u = static_cast<uint32_t>(v);
  if (n >= 1) {
    for (int i = 0; i < n; ++i) u *= 10u;
    return u;
  }
  for (int i = 0; i < -n && u != 0; ++i) u /= 10u;
  return u;
}

double ZQDType::_scale(double v, int n) { return ScaleDouble(v, n); }

double ZQDType::InScale(double v) const { return Scale() == 0 ? v : _scale(v, -Scale()); }

long ZQDType::InScale(long v) const {
  return Scale() == 0 ? v : _scale(v, -static_cast<int>(Scale()));
}

void ZQDType::InScale(char* text) const {
  const int sc = Scale();
  if (text == nullptr || sc == 0) return;
  size_t len = std::strlen(text);
  if (sc < 0) {
    std::memset(text + len, '0', -sc);
    text[len - sc] = 0;
    return;
  }
  char* digits = text + ((text[0] == '-' || text[0] == '+') ? 1 : 0);
  size_t nd = std::strlen(digits);
  if (nd < static_cast<size_t>(sc) + 1) {
    // Leading zeros so that one digit stands before the point.
    const size_t pad = sc + 1 - nd;
    std::memmove(digits + pad, digits, nd + 1);
    std::memset(digits, '0', pad);
    nd += pad;
  }
  std::memmove(digits + nd - sc + 1, digits + nd - sc, sc + 1);
  digits[nd - sc] = '.';
}

void ZQDType::OutScale(char* text) const {
  const int sc = Scale();
  if (text == nullptr || sc == 0) return;
  char* point = std::strchr(text, '.');
  if (sc > 0) {
    char* at = point != nullptr ? point : text + std::strlen(text);
    const char* frac = point != nullptr ? point + 1 : at;
    int i = 0;
    for (; i < sc && frac[i] != 0; ++i) at[i] = frac[i];
    for (; i < sc; ++i) at[i] = '0';
    at[sc] = 0;
    return;
  }
  const size_t end = point != nullptr ? static_cast<size_t>(point - text) : std::strlen(text);
  const size_t first = (text[0] == '-' || text[0] == '+') ? 1 : 0;
  const size_t cut = static_cast<size_t>(-sc);
  if (end < cut || end - cut <= first) {
    text[0] = 0;
  } else {
    text[end - cut] = 0;
  }
}

// ---- binary codecs ---------------------------------------------------------

long ZQDType::GetBinary(const ZQString& rec, long offset, ZQQuadWord& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr || len < 1 || len > 8) return 0;
  v = ZQQuadWord(static_cast<long long>(codec::GetBinary(p, len, MSBFirst(), Signed())));
  return len;
}

long ZQDType::GetBinary(const ZQString& rec, long offset, void* dst, int n) const {
  const uint8_t* p = FieldAt(rec, offset, n);
  if (p == nullptr || dst == nullptr) return 0;
  codec::GetRaw(p, n, MSBFirst(), dst);
  return n;
}

long ZQDType::PutBinary(ZQString& out, const ZQQuadWord& v) const {
  const long len = Length();
  if (len < 1) return 0;
  uint8_t b[8];
  const int n = len > 8 ? 8 : static_cast<int>(len);
  codec::PutBinary(b, v.Value(), n, MSBFirst());
  AppendBytes(out, b, n);
  return n;
}

long ZQDType::PutBinary(ZQString& out, const void* src, int n) const {
  if (src == nullptr || n < 1) return 0;
  TextBuf buf;
  uint8_t* b = Room(buf, n);
  codec::PutRaw(b, src, n, MSBFirst());
  AppendBytes(out, b, n);
  return n;
}

long ZQDType::Get3Byte(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, 3);
  if (p == nullptr) return 0;
  v = codec::Get3Byte(p, MSBFirst(), Signed());
  return 3;
}

long ZQDType::Put3Byte(ZQString& out, long v) const {
  uint8_t b[3];
  codec::Put3Byte(b, Wrap32(v), MSBFirst());
  AppendBytes(out, b, 3);
  return 3;
}

long ZQDType::Get4FuBin(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, 4);
  if (p == nullptr) return 0;
  v = codec::Get4FuBin(p, MSBFirst());
  return 4;
}

long ZQDType::Put4FuBin(ZQString& out, long v) const {
  uint8_t b[4];
  codec::Put4FuBin(b, Wrap32(v), MSBFirst());
  AppendBytes(out, b, 4);
  return 4;
}

long ZQDType::GetAccPac(const ZQString& rec, long offset, double& v) const {
  const uint8_t* p = FieldAt(rec, offset, 6);
  if (p == nullptr) return 0;
  // The byte count is trusted as far as the record reaches.
  v = codec::GetAccPac(p, static_cast<size_t>(rec.length() - offset));
  return 6;
}

long ZQDType::PutAccPac(ZQString& out, double v) const {
  uint8_t b[6];
  codec::PutAccPac(b, v);
  AppendBytes(out, b, 6);
  return 6;
}

// ---- decimal digit codecs --------------------------------------------------

long ZQDType::GetPack(const ZQString& rec, long offset, double& v) const {
  return DecodePack(*this, rec, offset, v);
}

long ZQDType::PutPack(ZQString& out, double v) const { return EncodeDigits(*this, out, v, false); }

long ZQDType::GetBCD(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  NumberText t;
  if (p == nullptr || !codec::GetBCD(p, FormatOf(*this), &t)) return 0;
  v = codec::Unscale(codec::NumberTextToDouble(t), Scale());
  return len;
}

long ZQDType::PutBCD(ZQString& out, double v) const {
  const long len = Length();
  if (len < 1) return 0;
  v = _scale(v, Scale());
  TextBuf digits;
  codec::FormatWhole(std::fabs(v), &digits);
  FieldBuf buf(len);
  uint8_t* b = buf.data();
  codec::PutBCD(b, FormatOf(*this), digits.data(), digits.size(), v < 0);
  AppendBytes(out, b, len);
  return len;
}

long ZQDType::GetZone(const ZQString& rec, long offset, double& v) const {
  return DecodeZone(*this, rec, offset, v);
}

long ZQDType::PutZone(ZQString& out, double v) const { return EncodeDigits(*this, out, v, true); }

long ZQDType::GetZone(const ZQWString& rec, long offset, double& v) const {
  TextBuf bytes;
  if (!Narrow(rec, offset, Length(), &bytes)) return 0;
  ZQString tmp(bytes.data(), static_cast<int>(bytes.size()));
  return GetZone(tmp, 0, v);
}

long ZQDType::PutZone(ZQWString& out, double v) const {
  ZQString tmp;
  const long n = PutZone(tmp, v);
  Widen(tmp.c_str(), tmp.length(), out);
  static const char kFmt[] = "PutZone Convert %f to (%S)";
  unsigned short wfmt[sizeof(kFmt)];
  for (size_t i = 0; i < sizeof(kFmt); ++i) wfmt[i] = static_cast<unsigned char>(kFmt[i]);
  ZQGlob::LogMessage(512, BATCH_OK, wfmt, v, tmp.c_str());
  return n;
}

long ZQDType::GetDBNumber(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr) return 0;
  NumberText t;
  v = codec::GetDBNumber(p, static_cast<int>(len), &t) ? codec::NumberTextToDouble(t) : 0.0;
  return len;
}

long ZQDType::PutDBNumber(ZQString& out, double v) const {
  const long len = Length();
  if (len < 1) return 0;
  FieldBuf buf(len);
  uint8_t* b = buf.data();
  codec::PutDBNumber(b, static_cast<int>(len), DecimalPlaces(), v);
  AppendBytes(out, b, len);
  return len;
}

long ZQDType::GetDBNumber(const ZQWString& rec, long offset, double& v) const {
  TextBuf bytes;
  if (!Narrow(rec, offset, Length(), &bytes)) return 0;
  ZQString tmp(bytes.data(), static_cast<int>(bytes.size()));
  return GetDBNumber(tmp, 0, v);
}

long ZQDType::PutDBNumber(ZQWString& out, double v) const {
  ZQString tmp;
  const long n = PutDBNumber(tmp, v);
  Widen(tmp.c_str(), tmp.length(), out);
  return n;
}

// ---- floating-point codecs -------------------------------------------------

long ZQDType::GetIBMmfflt(const ZQString& rec, long offset, double& v) const {
  return ReadFloatField(rec, offset, Length(), 1, codec::GetIBMmfflt, v);
}

long ZQDType::PutIBMmfflt(ZQString& out, double v) const {
  return WriteFloatField(Length(), out, codec::PutIBMmfflt, v);
}

long ZQDType::GetVaxFloat(const ZQString& rec, long offset, double& v) const {
  return ReadFloatField(rec, offset, Length(), 4, codec::GetVaxFloat, v);
}

long ZQDType::PutVaxFloat(ZQString& out, double v) const {
  return WriteFloatField(Length(), out, codec::PutVaxFloat, v);
}

long ZQDType::GetmscbFloat(const ZQString& rec, long offset, float& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len < 4 ? 4 : len);
  if (p == nullptr) return 0;
  v = codec::GetmscbFloat(p);
  return len;
}

long ZQDType::PutmscbFloat(ZQString& out, float v) const {
  const long len = Length();
  uint8_t b[4];
  if (len < 1 || !codec::PutmscbFloat(b, v)) return 0;
  AppendBytes(out, b, len < 4 ? len : 4);
  if (len > 4) out.Pad(0, len - 4);
  return len;
}

long ZQDType::GetmscbDouble(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len < 8 ? 8 : len);
  if (p == nullptr) return 0;
  v = codec::GetmscbDouble(p);
  return len;
}

long ZQDType::PutmscbDouble(ZQString& out, double v) const {
  const long len = Length();
  uint8_t b[8];
  if (len < 1 || !codec::PutmscbDouble(b, v)) return 0;
  AppendBytes(out, b, len < 8 ? len : 8);
  if (len > 8) out.Pad(0, len - 8);
  return len;
}

long ZQDType::GetPasReal(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len < 6 ? 6 : len);
  if (p == nullptr) return 0;
  v = codec::GetPasReal(p, MSBFirst());
  return len;
}

long ZQDType::PutPasReal(ZQString& out, double v) const {
  uint8_t b[6];
  codec::PutPasReal(b, v);
  return AppendFixed(out, b, sizeof(b), Length());
}

long ZQDType::GetCray(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len < 8 ? 8 : len);
  if (p == nullptr) return 0;
  v = codec::GetCray(p, MSBFirst());
  return len;
}

long ZQDType::PutCray(ZQString& out, double v) const {
  uint8_t b[8];
  codec::PutCray(b, v, MSBFirst());
  return AppendFixed(out, b, sizeof(b), Length());
}

long ZQDType::GetTReal(const ZQString& rec, long offset, double& v) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len < 10 ? 10 : len);
  if (p == nullptr) return 0;
  v = codec::GetTReal(p, MSBFirst());
  return len;
}

long ZQDType::PutTReal(ZQString& out, double v) const {
  uint8_t b[10];
  codec::PutTReal(b, v, MSBFirst());
  return AppendFixed(out, b, sizeof(b), Length());
}

long ZQDType::GetMAGNum(const ZQString& rec, long offset, double& v) const {
  return ReadFloatField(rec, offset, Length(), 1, codec::GetMAGNum, v);
}

long ZQDType::PutMAGNum(ZQString& out, double v) const {
  return WriteFloatField(Length(), out, codec::PutMAGNum, v);
}

long ZQDType::GetMAGReal(const ZQString& rec, long offset, double& v) const {
  return ReadFloatField(rec, offset, Length(), 1, codec::GetMAGReal, v);
}

long ZQDType::PutMAGReal(ZQString& out, double v) const {
  return WriteFloatField(Length(), out, codec::PutMAGReal, v);
}

// ---- column binary ---------------------------------------------------------

long ZQDType::GetCBMultiPunch(const ZQString& rec, long offset, ZQString& text) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr) return 0;
  TextBuf t;
  codec::GetCBMultiPunch(p, static_cast<int>(len), &t);
  text.clear();
  text.Append(t.data(), static_cast<long>(t.size()));
  return len;
}

long ZQDType::PutCBMultiPunch(ZQString& out, const char* text) const {
  const long len = Length();
  if (len < 1) return 0;
  FieldBuf buf(len);
  uint8_t* b = buf.data();
  codec::PutCBMultiPunch(b, static_cast<int>(len), text != nullptr ? text : "", -1);
  AppendBytes(out, b, len);
  return len;
}

long ZQDType::GetCBAlphaNumeric(const ZQString& rec, long offset, ZQString& text) const {
  const long len = Length();
  const uint8_t* p = FieldAt(rec, offset, len);
  if (p == nullptr) return 0;
  TextBuf t;
  codec::GetCBAlphaNumeric(p, static_cast<int>(len), &t);
  text.clear();
  text.Append(t.data(), static_cast<long>(t.size()));
  return len;
}

long ZQDType::PutCBAlphaNumeric(ZQString& out, const char* text) const {
  const long len = Length();
  if (len < 1) return 0;
  FieldBuf buf(len);
  uint8_t* b = buf.data();
  codec::PutCBAlphaNumeric(b, static_cast<int>(len), text != nullptr ? text : "", -1);
  AppendBytes(out, b, len);
  return len;
}

// ---- legacy dates and times ------------------------------------------------

long ZQDType::GetBTRDate(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 4) return 0;
  const int day = static_cast<int8_t>(p[0]);
  const int month = static_cast<int8_t>(p[1]);
  const int year = static_cast<int16_t>(codec::GetBinary(p + 2, 2, MSBFirst(), true));
  if (day != 0 || month != 0 || year != 0) v = ZQDateTime::cal_jul(month, day, year);
  return 4;
}

long ZQDType::PutBTRDate(ZQString& out, long v) const {
  uint8_t b[4] = {0, 0, 0, 0};
  if (Wrap32(v) != 0) {
    int month, day, year;
    ZQDateTime::jul_cal(Wrap32(v), month, day, year);
    const uint32_t w = static_cast<uint32_t>(year) * 65536u + static_cast<uint32_t>(month) * 256u +
                       static_cast<uint32_t>(day);
    codec::PutBinary(b, w, 4, MSBFirst());
  }
  AppendBytes(out, b, 4);
  return 4;
}

long ZQDType::GetBTRTime(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 4) return 0;
  const int h = static_cast<int8_t>(p[3]);
  const int m = static_cast<int8_t>(p[2]);
  const int s = static_cast<int8_t>(p[1]);
  if (h != 0 || m != 0 || s != 0) v = ZQTime(h, m, s).Seconds();
  return 4;
}

long ZQDType::PutBTRTime(ZQString& out, long v) const {
  const int32_t secs = Wrap32(v);
  const uint32_t h = static_cast<uint32_t>(secs / 3600);
  const uint32_t m = static_cast<uint32_t>((secs % 3600) / 60);
  const uint32_t s = static_cast<uint32_t>(secs % 60);
  uint8_t b[4];
  codec::PutBinary(b, ((h * 256u + m) * 65536u + s * 256u) & 0xFFFFFFFFu, 4, MSBFirst());
  AppendBytes(out, b, 4);
  return 4;
}

long ZQDType::GetSADate(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 2) return 0;
  const int64_t raw = codec::GetBinary(p, 2, false, false);
  if (raw != 0) v = raw + 685563;
  return 2;
}

long ZQDType::PutSADate(ZQString& out, long v) const {
  uint8_t b[2];
  codec::PutBinary(b, Wrap32(v) - 685563, 2, MSBFirst());
  AppendBytes(out, b, 2);
  return 2;
}

long ZQDType::GetSATime(const ZQString& rec, long offset, long& v, bool minutes) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 2) return 0;
  v = codec::GetBinary(p, 2, false, false) * (minutes ? 60 : 20);
  return 2;
}

long ZQDType::PutSATime(ZQString& out, long v, bool minutes) const {
  uint8_t b[2];
  codec::PutBinary(b, Wrap32(v) / (minutes ? 60 : 20), 2, MSBFirst());
  AppendBytes(out, b, 2);
  return 2;
}

long ZQDType::GetMAGDate(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 4) return 0;
  const int32_t raw = static_cast<int32_t>(codec::GetBinary(p, 4, false, true));
  if (raw != 0) v = Wrap32(static_cast<int64_t>(raw) + 693962);
  return 4;
}

long ZQDType::PutMAGDate(ZQString& out, long v) const {
  uint8_t b[4];
  codec::PutBinary(b, Wrap32(static_cast<int64_t>(Wrap32(v)) - 693962), 4, MSBFirst());
  AppendBytes(out, b, 4);
  return 4;
}

long ZQDType::GetMAGTime(const ZQString& rec, long offset, long& v) const {
  const uint8_t* p = FieldAt(rec, offset, Length());
  if (p == nullptr) return 0;
  v = 0;
  if (Length() != 4) return 0;
  v = static_cast<int32_t>(codec::GetBinary(p, 4, false, true));
  return 4;
}

long ZQDType::PutMAGTime(ZQString& out, long v) const {
  uint8_t b[4];
  codec::PutBinary(b, Wrap32(v), 4, MSBFirst());
  AppendBytes(out, b, 4);
  return 4;
}

// ---- text ------------------------------------------------------------------

long ZQDType::GetZQString(const ZQString& rec, long offset, ZQString& text) const {
  text.clear();
  if (offset < 0 || offset > rec.length()) return 0;
  const char* p = rec.c_str() + offset;
  const long avail = rec.length() - offset;
  const int t = Type();
  if (VariableLength()) {
    switch (t) {
      case ZQDT_CSTRING: {
        // Without a terminator inside the record the text runs to its end.
        const void* z = std::memchr(p, 0, avail);
        const long n = z != nullptr ? static_cast<const char*>(z) - p : avail;
        text.Append(p, n);
        return z != nullptr ? n + 1 : n;
      }
      case ZQDT_PASCAL_STRING1: {
        if (avail < 1) return 0;
        long n = static_cast<int8_t>(p[0]);
        if (n < 0) n = 0;
        if (n > avail - 1) n = avail - 1;
        text.Append(p + 1, n);
        return n + 1;
      }
      case ZQDT_PASCAL_STRING2: {
        if (avail < 2) return 0;
        long n = static_cast<int16_t>(
            codec::GetBinary(reinterpret_cast<const uint8_t*>(p), 2, MSBFirst(), true));
        if (n < 0) n = 0;
        if (n > avail - 2) n = avail - 2;
        text.Append(p + 2, n);
        return n + 2;
      }
      default:
        return 0;
    }
  }
  const long len = Length();
  if (len < 0 || len > avail) return 0;
  switch (t) {
    case ZQDT_CSTRING: {
      const void* z = std::memchr(p, 0, len);
      text.Append(p, z != nullptr ? static_cast<const char*>(z) - p : len);
      break;
    }
    case ZQDT_PASCAL_STRING1: {
      if (len < 1) break;
      // The prefix is trusted, as far as the record reaches.
      long n = static_cast<uint8_t>(p[0]);
      if (n > avail - 1) n = avail - 1;
      text.Append(p + 1, n);
      break;
    }
    case ZQDT_PASCAL_STRING2:
      if (len >= 2) text.Append(p + 2, len - 2);
      break;
    default:
      text.Append(p, len);
      break;
  }
  return len;
}

long ZQDType::PutZQString(ZQString& out, const ZQString& text) const {
  const int t = Type();
  const long tlen = text.length();
  if (VariableLength()) {
    switch (t) {
      case ZQDT_CSTRING:
        out.Append(text.c_str(), tlen);
        out += '\0';
        return tlen + 1;
      case ZQDT_PASCAL_STRING1: {
        // The prefix cannot say more than 255.
        const long n = tlen > 255 ? 255 : tlen;
        out += static_cast<char>(n);
        out.Append(text.c_str(), n);
        return n + 1;
      }
      case ZQDT_PASCAL_STRING2: {
        const long n = tlen > 65535 ? 65535 : tlen;
        uint8_t b[2];
        codec::PutBinary(b, n, 2, MSBFirst());
        AppendBytes(out, b, 2);
        out.Append(text.c_str(), n);
        return n + 2;
      }
      default:
        // Other variable-length types carry the text as it stands.
        out.Append(text.c_str(), tlen);
        return tlen;
    }
  }
  const long len = Length();
  if (len < 1) return 0;
  long room = len;
  if (t == ZQDT_CSTRING || t == ZQDT_PASCAL_STRING1) room -= 1;
  if (t == ZQDT_PASCAL_STRING2) room -= 2;
  if (room < 0) room = 0;
  if (t == ZQDT_PASCAL_STRING1) {
    out += static_cast<char>(room);
  } else if (t == ZQDT_PASCAL_STRING2) {
    uint8_t b[2];
    codec::PutBinary(b, room, 2, MSBFirst());
    AppendBytes(out, b, 2);
  }
  const long n = tlen < room ? tlen : room;
  out.Append(text.c_str(), n);
  out.Pad(static_cast<char>(PadChar()), room - n);
  if (t == ZQDT_CSTRING) out += '\0';
  return len;
}

// ---- Input -----------------------------------------------------------------

long ZQDType::Input(const ZQString& rec, long offset, ZQString& out) const {
  const int t = Type();
  if (IsTextType(t) || IsSignedDisplay(t)) return GetZQString(rec, offset, out);
  if (t == ZQDT_CB_MULTIPUNCH) return GetCBMultiPunch(rec, offset, out);
  if (t == ZQDT_CB_ALPHANUMERIC || t == ZQDT_CB_NUMERIC) {
    return GetCBAlphaNumeric(rec, offset, out);
  }
  return 0;
}

long ZQDType::Input(const ZQString& rec, long offset, double& out) const {
  const long len = Length();
  const int t = Type();
  if (IsBinaryInteger(t)) {
    const uint8_t* p = FieldAt(rec, offset, len);
    int64_t raw;
    if (p == nullptr || len < 1 || !ReadRawInteger(*this, p, &raw)) return 0;
    out = InScale(static_cast<double>(raw));
    return len;
  }
  switch (t) {
    case ZQDT_FLOAT:
    case ZQDT_COMP2: {
      const uint8_t* p = FieldAt(rec, offset, len);
      if (p == nullptr) return 0;
      double d = 0.0;
      std::memcpy(&d, p, len < 8 ? len : 8);
      out = d;
      return len;
    }
    case ZQDT_IEEE_FLOAT32:
    case ZQDT_COMP1: {
      const uint8_t* p = FieldAt(rec, offset, len);
      if (p == nullptr) return 0;
      uint8_t b[4] = {0, 0, 0, 0};
      const int n = len < 4 ? static_cast<int>(len) : 4;
      codec::GetRaw(p, n, MSBFirst(), b);
      float f;
      std::memcpy(&f, b, 4);
      out = f;
      return len;
    }
    case ZQDT_BINARY64: {
      ZQDecimal d;
      if (FieldAt(rec, offset, 8) == nullptr ||
          d.GetBinary(rec, static_cast<int>(offset), 8, MSBFirst(), Signed()) == 0) {
        return 0;
      }
      d.Scale(-Scale());
      out = static_cast<double>(d);
      return len;
    }
    case ZQDT_DECIMAL:
    case ZQDT_NUMBER:
    case ZQDT_PACKED:
    case ZQDT_COMP3:
      return DecodePack(*this, rec, offset, out);
    case ZQDT_DBASE_NUMERIC:
      return GetDBNumber(rec, offset, out);
    case ZQDT_IBM_FLOAT:
      return GetIBMmfflt(rec, offset, out);
    case ZQDT_VAX_FLOAT32:
    case ZQDT_VAX_FLOAT64:
      return GetVaxFloat(rec, offset, out);
    case ZQDT_MSBASIC_FLOAT: {
      float f;
      const long n = GetmscbFloat(rec, offset, f);
      if (n != 0) out = f;
      return n;
    }
    case ZQDT_MSBASIC_DOUBLE:
      return GetmscbDouble(rec, offset, out);
    case ZQDT_ZONED:
    case ZQDT_DISPLAY_SIGN_TRAILING:
    case ZQDT_DISPLAY_SIGN_LEADING:
    case ZQDT_DISPLAY_SIGN_TRAILING_SEP:
    case ZQDT_DISPLAY_SIGN_LEADING_SEP:
      return DecodeZone(*this, rec, offset, out);
    case ZQDT_CRAY_FLOAT:
      return GetCray(rec, offset, out);
    case ZQDT_ACCPAC:
      return GetAccPac(rec, offset, out);
    case ZQDT_CB_MULTIPUNCH:
    case ZQDT_CB_ALPHANUMERIC:
    case ZQDT_CB_NUMERIC: {
      ZQString text;
      const long n = t == ZQDT_CB_MULTIPUNCH ? GetCBMultiPunch(rec, offset, text)
                                             : GetCBAlphaNumeric(rec, offset, text);
      if (n != 0) out = codec::ParseDouble(text.c_str(), nullptr);
      return n;
    }
    case ZQDT_MAGIC_NUMBER:
      return GetMAGNum(rec, offset, out);
    case ZQDT_PASCAL_REAL48:
      return GetPasReal(rec, offset, out);
    case ZQDT_INTEL_FLOAT80:
      return GetTReal(rec, offset, out);
    case ZQDT_BCD:
      return GetBCD(rec, offset, out);
    case ZQDT_MAGIC_REAL:
    case ZQDT_MAGIC_EXTENDED:
      return GetMAGReal(rec, offset, out);
    default:
      return 0;
  }
}

long ZQDType::Input(const ZQString& rec, long offset, long& out) const {
  const int t = Type();
  const long len = Length();
  if (IsBinaryInteger(t)) {
    const uint8_t* p = FieldAt(rec, offset, len);
    int64_t raw;
    if (p == nullptr || len < 1 || !ReadRawInteger(*this, p, &raw)) return 0;
    out = InScale(static_cast<long>(Wrap32(raw)));
    return len;
  }
  switch (t) {
    case ZQDT_BTRIEVE_DATE:
      return GetBTRDate(rec, offset, out);
    case ZQDT_BTRIEVE_TIME:
      return GetBTRTime(rec, offset, out);
    case ZQDT_MAGIC_DATE:
      return GetMAGDate(rec, offset, out);
    case ZQDT_MAGIC_TIME:
      return GetMAGTime(rec, offset, out);
    case ZQDT_SALESALLY_DATE:
      return GetSADate(rec, offset, out);
    case ZQDT_SALESALLY_TIME:
      return GetSATime(rec, offset, out, false);
    case ZQDT_TIME_MINUTES:
      return GetSATime(rec, offset, out, true);
    default:
      break;
  }
  if (t == ZQDT_BINARY64) {
    ZQQuadWord q;
    const long n = Input(rec, offset, q);
    if (n != 0) out = Wrap32(q.Value());
    return n;
  }
  double d;
  const long n = Input(rec, offset, d);
  if (n != 0) out = Clamp32(d);
  return n;
}

long ZQDType::Input(const ZQString& rec, long offset, short& out) const {
  long v;
  const long n = Input(rec, offset, v);
  if (n != 0) out = static_cast<short>(static_cast<uint16_t>(v));
  return n;
}

long ZQDType::Input(const ZQString& rec, long offset, ZQQuadWord& out) const {
  const int t = Type();
  const long len = Length();
  if (IsLegacyDate(t)) {
    long v;
    const long n = Input(rec, offset, v);
    if (n != 0) out = ZQQuadWord(v);
    return n;
  }
  if (IsBinaryInteger(t) || t == ZQDT_BINARY64) {
    const uint8_t* p = FieldAt(rec, offset, len);
    int64_t raw;
    if (p == nullptr || len < 1) return 0;
    if (t == ZQDT_BINARY64) {
      raw = codec::GetBinary(p, len > 8 ? 8 : static_cast<int>(len), MSBFirst(), Signed());
    } else if (!ReadRawInteger(*this, p, &raw)) {
      return 0;
    }
    uint64_t u = static_cast<uint64_t>(raw);
    for (int i = 0; i < -Scale(); ++i) u *= 10u;
    int64_t s = static_cast<int64_t>(u);
    for (int i = 0; i < Scale() && s != 0; ++i) s /= 10;
    out = ZQQuadWord(static_cast<long long>(s));
    return len;
  }
  double d;
  const long n = Input(rec, offset, d);
  if (n != 0) out = ZQQuadWord(d);
  return n;
}

namespace {

// Input into an exact decimal for every type: the zoned fields that the
// fast form leaves, and the rest. Out of line, so that the zoned form stays
// a small function.
__attribute__((noinline)) long InputDecimal(const ZQDType& dt, const ZQString& rec, long offset,
                                            ZQDecimal& out) {
  const int t = dt.Type();
  const long len = dt.Length();
  if (IsBinaryInteger(t)) {
    const uint8_t* p = FieldAt(rec, offset, len);
    int64_t raw;
    if (p == nullptr || len < 1 || !ReadRawInteger(dt, p, &raw)) return 0;
    ScaledDecimal(raw, dt.Scale(), &out);
    return len;
  }
  if (t == ZQDT_BINARY64) {
    if (FieldAt(rec, offset, 8) == nullptr) return 0;
    ZQDecimal d;
    if (d.GetBinary(rec, static_cast<int>(offset), 8, dt.MSBFirst(), dt.Signed()) == 0) return 0;
    d.Scale(-dt.Scale());
    out = d;
    return len;
  }
  if (IsPacked(t) || IsZoned(t) || t == ZQDT_BCD) {
    const uint8_t* p = FieldAt(rec, offset, len);
    if (p == nullptr) return 0;
    const codec::DecimalFormat f = FormatOf(dt);
    int64_t whole;
    if ((IsPacked(t) && codec::GetPackWhole(p, f, &whole)) ||
        (IsZoned(t) && codec::GetZoneWhole(p, f, &whole))) {
      ScaledDecimal(whole, dt.Scale(), &out);
      return len;
    }
    NumberText text;
    bool ok;
    if (IsPacked(t)) {
      ok = codec::GetPack(p, FormatOf(dt), &text);
      if (!ok) return 0;
    } else if (t == ZQDT_BCD) {
      ok = codec::GetBCD(p, FormatOf(dt), &text);
      if (!ok) return 0;
    } else {
      bool unknown = false;
      ok = codec::GetZone(p, FormatOf(dt), &text, &unknown);
      if (unknown) {
        ZQGlob::LogMessage(4, BATCH_INVALID, "Unknown signstyle %d",
                           static_cast<int>(dt.SignStyle()));
      }
    }
    ZQDecimal d = ok ? DecimalFromText(text) : ZQDecimal();
    d.Scale(-dt.Scale());
    out = d;
    return len;
  }
  double v;
  const long n = dt.Input(rec, offset, v);
  if (n != 0) out = ZQDecimal(v);
  return n;
}

}  // namespace

long ZQDType::Input(const ZQString& rec, long offset, ZQDecimal& out) const {
  if (IsZoned(Type())) {
    // The common zoned field goes from its digit characters to the decimal.
    const long len = Length();
    const uint8_t* p = FieldAt(rec, offset, len);
    if (p == nullptr) return 0;
    if (codec::GetZoneDecimal(p, ZoneFormatOf(*this), offset, rec.length() - offset, &out)) {
      return len;
    }
  }
  return InputDecimal(*this, rec, offset, out);
}

// ---- Output ----------------------------------------------------------------

long ZQDType::Output(ZQString& out, const ZQString& text) const {
  const int t = Type();
  if (IsTextType(t)) return PutZQString(out, text);
  if (t == ZQDT_CB_MULTIPUNCH) return PutCBMultiPunch(out, text.c_str());
  if (t == ZQDT_CB_ALPHANUMERIC || t == ZQDT_CB_NUMERIC) {
    return PutCBAlphaNumeric(out, text.c_str());
  }
  // Numbers (the signed display types included) are parsed and written as
  // numbers, so that their sign conventions apply.
  return Output(out, codec::ParseDouble(text.c_str(), nullptr));
}

long ZQDType::Output(ZQString& out, double v) const {
  const int t = Type();
  const long len = Length();
  if (!Signed() && v < 0) v = -v;
  if (IsBinaryInteger(t)) {
    if (len < 1) return 0;
    const double scaled = ScaleDouble(v, Scale());
    const int64_t whole = len > 4 && t != ZQDT_TEC_BINARY ? Trunc64(scaled) : Trunc32(scaled);
    AppendRawInteger(*this, out, whole, false);
    return len;
  }
  switch (t) {
    case ZQDT_FLOAT:
    case ZQDT_COMP2: {
      if (len < 1) return 0;
      AppendBytes(out, &v, len < 8 ? len : 8);
      if (len > 8) out.Pad(0, len - 8);
      return len;
    }
    case ZQDT_IEEE_FLOAT32:
    case ZQDT_COMP1: {
      if (len < 1) return 0;
      const float f = static_cast<float>(v);
      uint8_t b[4];
      codec::PutRaw(b, &f, 4, MSBFirst());
      if (MSBFirst() && len < 4) {
        AppendBytes(out, b + 4 - len, len);
      } else {
        AppendBytes(out, b, len < 4 ? len : 4);
      }
      if (len > 4) out.Pad(0, len - 4);
      return len;
    }
    case ZQDT_BINARY64: {
      uint8_t b[8];
      codec::PutBinary(b, Trunc64(_scale(v, Scale())), 8, MSBFirst());
      AppendBytes(out, b, 8);
      return 8;
    }
    case ZQDT_DECIMAL:
    case ZQDT_NUMBER:
    case ZQDT_PACKED:
    case ZQDT_COMP3:
      return EncodeDigits(*this, out, v, false);
    case ZQDT_DBASE_NUMERIC:
      return PutDBNumber(out, v);
    case ZQDT_IBM_FLOAT:
      return PutIBMmfflt(out, v);
    case ZQDT_VAX_FLOAT32:
    case ZQDT_VAX_FLOAT64:
      return PutVaxFloat(out, v);
    case ZQDT_MSBASIC_FLOAT:
      // A value outside the format's range appends nothing: the field is
      // then missing from the record, but the type is still supported.
      PutmscbFloat(out, static_cast<float>(v));
      return len;
    case ZQDT_MSBASIC_DOUBLE:
      PutmscbDouble(out, v);
      return len;
    case ZQDT_ZONED:
    case ZQDT_DISPLAY_SIGN_TRAILING:
    case ZQDT_DISPLAY_SIGN_LEADING:
    case ZQDT_DISPLAY_SIGN_TRAILING_SEP:
    case ZQDT_DISPLAY_SIGN_LEADING_SEP:
      return EncodeDigits(*this, out, v, true);
    case ZQDT_CRAY_FLOAT:
      return PutCray(out, v);
    case ZQDT_ACCPAC:
      return PutAccPac(out, v);
    case ZQDT_CB_MULTIPUNCH:
    case ZQDT_CB_ALPHANUMERIC:
    case ZQDT_CB_NUMERIC: {
      TextBuf text;
      codec::FormatFixed(v, 0, &text);
      return t == ZQDT_CB_MULTIPUNCH ? PutCBMultiPunch(out, text.data())
                                     : PutCBAlphaNumeric(out, text.data());
    }
    case ZQDT_MAGIC_NUMBER:
      return PutMAGNum(out, v);
    case ZQDT_PASCAL_REAL48:
      return PutPasReal(out, v);
    case ZQDT_INTEL_FLOAT80:
      return PutTReal(out, v);
    case ZQDT_BCD:
      return PutBCD(out, v);
    case ZQDT_MAGIC_REAL:
    case ZQDT_MAGIC_EXTENDED:
      return PutMAGReal(out, v);
    default:
      return 0;
  }
}

long ZQDType::Output(ZQString& out, long v) const {
  const int t = Type();
  const long len = Length();
  if (IsBinaryInteger(t)) {
    if (len < 1) return 0;
    const long scaled = _scale(static_cast<long>(Wrap32(v)), Scale());
    AppendRawInteger(*this, out, Wrap32(scaled), true);
    return len;
  }
  switch (t) {
    case ZQDT_BTRIEVE_DATE:
      return PutBTRDate(out, v);
    case ZQDT_BTRIEVE_TIME:
      return PutBTRTime(out, v);
    case ZQDT_MAGIC_DATE:
      return PutMAGDate(out, v);
    case ZQDT_MAGIC_TIME:
      return PutMAGTime(out, v);
    case ZQDT_SALESALLY_DATE:
      return PutSADate(out, v);
    case ZQDT_SALESALLY_TIME:
      return PutSATime(out, v, false);
    case ZQDT_TIME_MINUTES:
      return PutSATime(out, v, true);
    case ZQDT_BINARY64: {
      const long scaled = _scale(static_cast<long>(Wrap32(v)), Scale());
      uint8_t b[8];
      codec::PutBinary(b, Wrap32(scaled), 8, MSBFirst());
      AppendBytes(out, b, 8);
      return 8;
    }
    default:
      return Output(out, static_cast<double>(Wrap32(v)));
  }
}

long ZQDType::Output(ZQString& out, int v) const { return Output(out, static_cast<long>(v)); }

long ZQDType::Output(ZQString& out, short v) const { return Output(out, static_cast<long>(v)); }

long ZQDType::Output(ZQString& out, bool v) const {
  return Output(out, static_cast<long>(v ? 1 : 0));
}

long ZQDType::Output(std::string& out, long v) const {
  ZQString tmp;
  const long n = Output(tmp, v);
  if (tmp.length() > 0) out.append(tmp.c_str(), tmp.length());
  return n;
}

long ZQDType::Output(ZQString& out, ZQQuadWord v) const {
  const int t = Type();
  const long len = Length();
  if (IsBinaryInteger(t) || t == ZQDT_BINARY64) {
    if (len < 1) return 0;
    uint64_t u = static_cast<uint64_t>(v.Value());
    for (int i = 0; i < Scale(); ++i) u *= 10u;
    int64_t s = static_cast<int64_t>(u);
    for (int i = 0; i < -Scale() && s != 0; ++i) s /= 10;
    if (t == ZQDT_BINARY64) {
      uint8_t b[8];
      codec::PutBinary(b, s, 8, MSBFirst());
      AppendBytes(out, b, 8);
      return 8;
    }
    AppendRawInteger(*this, out, s, false);
    return len;
  }
  if (IsLegacyDate(t)) return Output(out, static_cast<long>(Wrap32(v.Value())));
  return Output(out, static_cast<double>(v.Value()));
}

namespace {

// Output of an exact decimal for every type: the zoned fields that the fast
// form leaves, and the rest. Out of line, so that the zoned form stays a
// small function.
__attribute__((noinline)) long OutputDecimal(const ZQDType& dt, ZQString& out,
                                             const ZQDecimal& value) {
  const int t = dt.Type();
  const long len = dt.Length();
  const bool binary = IsBinaryInteger(t) || t == ZQDT_BINARY64;
  const bool digits = IsPacked(t) || IsZoned(t) || t == ZQDT_BCD;
  if ((binary || digits) && len < 1) return 0;
  // The usual values are scaled and made whole on their base-100 digits:
  // truncated for binary, rounded half to even for packed and zoned. An
  // unsigned field takes the magnitude.
  codec::DecimalParts parts;
  uint64_t mag = 0;
  bool fast = false;
  if (binary || (digits && t != ZQDT_BCD)) {
    codec::ScaledParts(value, dt.Scale(), !dt.Signed(), &parts);
    fast = binary ? codec::TruncatedMagnitude(parts, &mag) : codec::RoundedMagnitude(parts, &mag);
  }
  if (binary) {
    int64_t whole;
    if (fast) {
      whole = static_cast<int64_t>(parts.neg ? 0 - mag : mag);
    } else {
      ZQDecimal v = value;
      if (!dt.Signed() && v.IsNeg()) v = -v;
      v.Scale(dt.Scale());
      whole = DecimalToInt64(v);
    }
    if (t == ZQDT_BINARY64) {
      uint8_t b[8];
      codec::PutBinary(b, whole, 8, dt.MSBFirst());
      AppendBytes(out, b, 8);
      return 8;
    }
    AppendRawInteger(dt, out, whole, false);
    return len;
  }
  ZQDecimal v = value;
  if (!dt.Signed() && v.IsNeg()) v = -v;
  if (digits) {
    const codec::DecimalFormat f = FormatOf(dt);
    if (fast) {
      uint8_t* b = AppendRoom(out, len);
      if (b == nullptr) return len;
      if (IsPacked(t)) {
        codec::PutPack(b, f, mag, parts.neg);
      } else {
        codec::PutZone(b, f, mag, parts.neg);
      }
      TakeRoom(out, len);
      return len;
    }
    FieldBuf buf(len);
    uint8_t* b = buf.data();
    v.Scale(dt.Scale());
    bool neg;
    if (t != ZQDT_BCD && DecimalWhole(v, &mag, &neg)) {
      if (IsPacked(t)) {
        codec::PutPack(b, f, mag, neg);
      } else {
        codec::PutZone(b, f, mag, neg);
      }
      AppendBytes(out, b, len);
      return len;
    }
    TextBuf text;
    WholeDigits(v, &text, &neg);
    if (IsPacked(t)) {
      codec::PutPack(b, f, text.data(), text.size(), neg);
    } else if (t == ZQDT_BCD) {
      codec::PutBCD(b, f, text.data(), text.size(), neg);
    } else {
      codec::PutZone(b, f, text.data(), text.size(), neg);
    }
    AppendBytes(out, b, len);
    return len;
  }
  return dt.Output(out, static_cast<double>(v));
}

}  // namespace

long ZQDType::Output(ZQString& out, const ZQDecimal& value) const {
  const long len = Length();
  if (IsZoned(Type()) && len >= 1) {
    // A value whose scaled form is whole within its digits is written from
    // its digit characters.
    uint8_t* b = AppendRoom(out, len);
    if (b == nullptr) return len;
    if (codec::PutZoneDecimal(b, ZoneFormatOf(*this), value)) {
      TakeRoom(out, len);
      return len;
    }
  }
  return OutputDecimal(*this, out, value);
}
