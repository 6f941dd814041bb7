// Field values: checks the stored bytes, then converts through ZQDType.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "zq/datetime.h"
#include "zq/decimal.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zqrec.h"

namespace zqrec {
namespace {

const char kHexDigits[] = "0123456789ABCDEF";

// Sign positions and styles (bit values of the descriptor's codes).
constexpr long kLeadingOverpunch = 1, kTrailingOverpunch = 2, kLeadingSeparate = 4,
               kTrailingSeparate = 8, kNoSign = 16;
constexpr long kIbm = 1, kMfCobol = 2, kWang = 4, kAcuCobol = 1024;

bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// Packed: two digits a byte; where the sign nibble is depends on the sign
// position, as the engine reads it.
const char* CheckPacked(const Field& f, const unsigned char* p) {
  const long pos = f.type.SignPos();
  const int nibbles = 2 * f.length;
  int sign_at = -1;  // nibble index of the sign, -1 for none
  if (pos == kTrailingOverpunch || pos == kTrailingSeparate) {
    sign_at = nibbles - 1;
  } else if (!(pos == kNoSign && f.type.SignStyle() == kAcuCobol)) {
    sign_at = 0;
  }
  for (int i = 0; i < nibbles; ++i) {
    const int n = (i & 1) ? (p[i / 2] & 0x0F) : (p[i / 2] >> 4);
    if (i == sign_at) {
      if (sign_at == 0) {
        if (n != 0x3 && n != 0x5 && n < 0xA) return "invalid sign nibble in packed decimal";
      } else if (f.type.Signed() ? n < 0xA : (n != 0xF && n > 9)) {
        return "invalid sign nibble in packed decimal";
      }
    } else if (n > 9) {
      return "invalid digit nibble in packed decimal";
    }
  }
  return nullptr;
}

const char* CheckBcd(const Field& f, const unsigned char* p) {
  const int digits = f.type.Signed() ? f.length - 1 : f.length;
  for (int i = 0; i < digits; ++i) {
    if (p[i] > 9) return "invalid digit byte in BCD";
  }
  if (f.type.Signed() && p[f.length - 1] < 0x0A) return "invalid sign byte in BCD";
  if (f.type.Signed() && p[f.length - 1] > 0x0F) return "invalid sign byte in BCD";
  return nullptr;
}

// An overpunched digit of the sign style.
bool IsOverpunch(unsigned char c, long style) {
  if (IsDigit(c)) return style != kWang;
  switch (style) {
    case kIbm: return c == '{' || c == '}' || (c >= 'A' && c <= 'R');
    case kMfCobol: return (c >= 'p' && c <= 'y') || (c >= 'P' && c <= 'Y');
    case kWang: return (c >= 0xF0 && c <= 0xF9) || (c >= 0xD0 && c <= 0xD9);
    case kAcuCobol: return c == '}' || (c >= 'J' && c <= 'R');
    default: return false;
  }
}

// Zoned: digit characters, spaces on either side, a sign where the sign
// position and style put it.
const char* CheckZoned(const Field& f, const unsigned char* p) {
  int b = 0, e = f.length;
  while (b < e && p[b] == ' ') ++b;
  while (e > b && p[e - 1] == ' ') --e;
  if (b == e) return "blank numeric field";
  const long pos = f.type.Signed() ? f.type.SignPos() : kNoSign;
  const long style = f.type.SignStyle();
  if (pos == kLeadingOverpunch) {
    if (!IsOverpunch(p[b], style)) return "invalid sign overpunch on the first digit";
    ++b;
  } else if (pos == kTrailingOverpunch) {
    if (!IsOverpunch(p[e - 1], style)) return "invalid sign overpunch on the last digit";
    --e;
  } else if (pos == kLeadingSeparate) {
    if (p[b] == '+' || p[b] == '-') ++b;
  } else if (pos == kTrailingSeparate) {
    if (p[e - 1] != '+' && p[e - 1] != '-') return "missing trailing sign (+ or -)";
    --e;
  } else if (p[b] == '+' || p[b] == '-') {
    ++b;
  }
  for (int i = b; i < e; ++i) {
    if (!IsDigit(p[i])) return "non-digit byte in zoned decimal";
  }
  if (b == e && pos != kLeadingOverpunch && pos != kTrailingOverpunch) {
    return "no digits in zoned decimal";
  }
  return nullptr;
}

// Appends the stored integer `digits` (optional "-") with `scale` implied
// decimal places.
void AppendScaled(const char* digits, int scale, std::string* out) {
  if (*digits == '-') {
    if (std::strcmp(digits, "-0") != 0) out->push_back('-');
    ++digits;
  }
  const int n = static_cast<int>(std::strlen(digits));
  if (scale <= 0) {
    out->append(digits, n);
    if (!(n == 1 && digits[0] == '0')) out->append(static_cast<size_t>(-scale), '0');
    return;
  }
  if (n <= scale) {
    out->append("0.");
    out->append(static_cast<size_t>(scale - n), '0');
    out->append(digits, n);
  } else {
    out->append(digits, n - scale);
    out->push_back('.');
    out->append(digits + n - scale, scale);
  }
}

// Shortest text that reads back as the same double (or float).
void AppendShortest(double v, bool single, std::string* out) {
  char buf[40];
  for (int prec = 1; prec <= 17; ++prec) {
    std::snprintf(buf, sizeof buf, "%.*g", prec, v);
    const double back = std::strtod(buf, nullptr);
    if (single ? static_cast<float>(back) == static_cast<float>(v) : back == v) {
      break;
    }
  }
  // The same digits without an exponent while the magnitude is moderate.
  const char* e = std::strchr(buf, 'e');
  const int e10 = e != nullptr ? std::atoi(e + 1) : 0;
  if (e == nullptr || e10 < -7 || e10 > 20) {
    out->append(buf);
    return;
  }
  const char* p = buf;
  if (*p == '-') out->push_back(*p++);
  std::string digits;
  for (; p < e; ++p) {
    if (*p != '.') digits.push_back(*p);
  }
  const int point = e10 + 1;  // digits before the decimal point
  const int n = static_cast<int>(digits.size());
  if (point <= 0) {
    out->append("0.");
    out->append(static_cast<size_t>(-point), '0');
    out->append(digits);
  } else if (point >= n) {
    out->append(digits);
    out->append(static_cast<size_t>(point - n), '0');
  } else {
    out->append(digits, 0, point);
    out->push_back('.');
    out->append(digits, point, std::string::npos);
  }
}

bool IsSingle(DATATYPE t) {
  const int v = static_cast<int>(t);
  return v == 105 || v == 108 || v == 133 || v == 143 || v == 175;
}

void AppendUtf8(unsigned u, std::string* out) {
  unsigned char b[4];
  const int n = ZQGlob::UnicodeToUTF8(static_cast<unsigned short>(u), b);
  out->append(reinterpret_cast<const char*>(b), n);
}

bool DecodeText(const Field& f, const unsigned char* p, int n, std::string* out,
                std::string* error) {
  const CodePage& cp = f.cp;
  if (cp.ebcdic != 0) {
    for (int i = 0; i < n; ++i) {
      const unsigned char c = cp.to_iso[p[i]];
      if (c < 0x80) {
        out->push_back(static_cast<char>(c));
      } else {
        AppendUtf8(c, out);
      }
    }
    return true;
  }
  if (cp.cset == ZQ_CSET_ISO8859_1) {
    for (int i = 0; i < n; ++i) {
      if (p[i] < 0x80) {
        out->push_back(static_cast<char>(p[i]));
      } else {
        AppendUtf8(p[i], out);
      }
    }
    return true;
  }
  const ZQ_CSET cs = static_cast<ZQ_CSET>(cp.cset);
  int i = 0;
  while (i < n) {
    if (p[i] == 0) {
      out->push_back('\0');
      ++i;
      continue;
    }
    unsigned short u = 0;
    const int used = ZQGlob::MBtoWC(&u, reinterpret_cast<const char*>(p + i), n - i, cs);
    if (used <= 0) {
      *error = "byte sequence not valid in " + cp.name + " at field byte " + std::to_string(i);
      return false;
    }
    if (u < 0x80) {
      out->push_back(static_cast<char>(u));
    } else {
      AppendUtf8(u, out);
    }
    i += used;
  }
  return true;
}

bool EncodeText(const Field& f, const std::string& text, std::string* bytes, std::string* error) {
  const CodePage& cp = f.cp;
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text.data());
  size_t i = 0;
  while (i < text.size()) {
    unsigned short u = 0;
    int used = 1;
    if (in[i] < 0x80) {
      u = in[i];
    } else {
      used = ZQGlob::BytesInUTF8(in[i]);
      bool valid = used >= 2 && used <= 3 && i + used <= text.size();
      for (int k = 1; valid && k < used; ++k) valid = (in[i + k] & 0xC0) == 0x80;
      unsigned short units[2];
      if (!valid || ZQGlob::UTF8ToUnicode(in + i, used, units, 2) != 1) {
        *error = "the text is not valid UTF-8 (or holds a character beyond U+FFFF)";
        return false;
      }
      u = units[0];
    }
    i += used;
    if (cp.ebcdic != 0 || cp.cset == ZQ_CSET_ISO8859_1) {
      if (u > 0xFF) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "U+%04X", u);
        *error = std::string("the character ") + hex + " has no form in " + cp.name;
        return false;
      }
      bytes->push_back(static_cast<char>(cp.ebcdic != 0 ? cp.from_iso[u] : u));
      continue;
    }
    char mb[8];
    const int n = ZQGlob::WCtoMB(mb, u, static_cast<ZQ_CSET>(cp.cset));
    if (n < 0) {
      char hex[16];
      std::snprintf(hex, sizeof hex, "U+%04X", u);
      *error = std::string("the character ") + hex + " has no form in " + cp.name;
      return false;
    }
    bytes->append(mb, n);
  }
  return true;
}

// Parses decimal text into its sign and the digits of the stored integer
// (value times 10^scale); false with `error` when it is not such a number.
bool ParseDecimal(const std::string& text, int scale, bool* neg, std::string* digits,
                  std::string* error) {
  size_t i = 0, n = text.size();
  while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
  while (n > i && (text[n - 1] == ' ' || text[n - 1] == '\t')) --n;
  *neg = false;
  if (i < n && (text[i] == '+' || text[i] == '-')) *neg = text[i++] == '-';
  std::string whole, frac;
  while (i < n && IsDigit(text[i])) whole += text[i++];
  if (i < n && text[i] == '.') {
    ++i;
    while (i < n && IsDigit(text[i])) frac += text[i++];
  }
  if (i != n || (whole.empty() && frac.empty())) {
    *error = "\"" + text + "\" is not a decimal number";
    return false;
  }
  if (scale >= 0) {
    while (static_cast<int>(frac.size()) > scale && frac.back() == '0') frac.pop_back();
    if (static_cast<int>(frac.size()) > scale) {
      *error = "\"" + text + "\" has more decimal places than the field's " +
               std::to_string(scale);
      return false;
    }
    frac.append(static_cast<size_t>(scale) - frac.size(), '0');
    *digits = whole + frac;
  } else {
    while (!frac.empty() && frac.back() == '0') frac.pop_back();
    const size_t drop = static_cast<size_t>(-scale);
    if (!frac.empty() || whole.size() < drop ||
        whole.find_first_not_of('0', whole.size() - drop) != std::string::npos) {
      if (whole.find_first_not_of('0') != std::string::npos || !frac.empty()) {
        *error = "\"" + text + "\" is not a multiple of 10^" + std::to_string(-scale) +
                 ", which the field's scale requires";
        return false;
      }
    }
    *digits = whole.size() > drop ? whole.substr(0, whole.size() - drop) : "0";
  }
  const size_t nz = digits->find_first_not_of('0');
  *digits = nz == std::string::npos ? "0" : digits->substr(nz);
  if (*digits == "0") *neg = false;
  return true;
}

// True when the stored form reads back as a signed number: "Comp", "Comp-5"
// and "Comp-X" are always sign-extended except at 3 bytes.
bool ReadsSigned(const Field& f) {
  const int t = static_cast<int>(f.type.Type());
  if (f.kind == Kind::kInteger && (t == 142 || t == 146 || t == 147) && f.length != 3) {
    return true;
  }
  return f.type.Signed();
}

// False when the integer `digits` (with its sign) exceeds the binary field.
bool FitsBinary(const Field& f, bool neg, const std::string& digits) {
  if (digits.size() > 20) return false;
  unsigned __int128 v = 0;
  for (char c : digits) v = v * 10 + static_cast<unsigned>(c - '0');
  const unsigned __int128 one = 1;
  if (static_cast<int>(f.type.Type()) == 117) return v <= (one << 31) - 1;  // sign-magnitude
  const int bits = 8 * (f.length > 8 ? 8 : f.length);
  if (!ReadsSigned(f)) return !neg && v <= (one << bits) - 1;
  return neg ? v <= (one << (bits - 1)) : v < (one << (bits - 1));
}

}  // namespace

std::string HexBytes(const unsigned char* p, size_t n) {
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    if (i) s.push_back(' ');
    s.push_back(kHexDigits[p[i] >> 4]);
    s.push_back(kHexDigits[p[i] & 15]);
  }
  return s;
}

// Zoned digits in EBCDIC become the same digits in ASCII through the code
// page's table; the zone of an overpunched sign turns into the "ibm" letters
// ({, A-I, }, J-R). The field is then read from a record of its own.
bool DecodeEbcdicZoned(const Field& f, const ZQString& rec, std::string* out, bool* is_null,
                       std::string* error) {
  Field ascii = f;
  ascii.cp = CodePage();
  ascii.offset = 0;
  ZQString field(rec.c_str() + f.offset, f.length);
  char* b = field.GetBuffer();
  for (int i = 0; i < f.length; ++i) {
    b[i] = static_cast<char>(f.cp.to_iso[static_cast<unsigned char>(b[i])]);
  }
  if (DecodeField(ascii, field, out, is_null, error)) return true;
  if (f.type.SignStyle() != kIbm) *error += " (EBCDIC zoned fields usually need signstyle=ibm)";
  return false;
}

bool DecodeField(const Field& f, const ZQString& rec, std::string* out, bool* is_null,
                 std::string* error) {
  *is_null = false;
  if (f.kind == Kind::kZoned && f.cp.ebcdic != 0) {
    return DecodeEbcdicZoned(f, rec, out, is_null, error);
  }
  const unsigned char* p = reinterpret_cast<const unsigned char*>(rec.c_str()) + f.offset;
  const char* bad = nullptr;
  switch (f.kind) {
    case Kind::kPacked: bad = CheckPacked(f, p); break;
    case Kind::kZoned: bad = CheckZoned(f, p); break;
    case Kind::kBcd: bad = CheckBcd(f, p); break;
    default: break;
  }
  if (bad != nullptr) {
    *error = bad;
    return false;
  }
  switch (f.kind) {
    case Kind::kPacked:
    case Kind::kZoned:
    case Kind::kBcd:
    case Kind::kInteger: {
      ZQDecimal d;
      if (f.raw.Input(rec, f.offset, d) != f.length) {
        *error = "the field cannot be read as a number";
        return false;
      }
      char buf[ZQDecimal::kUnboundedPrintSize];
      d.Print(buf);
      AppendScaled(buf, f.scale, out);
      return true;
    }
    case Kind::kFloat: {
      double v = 0;
      if (f.type.Input(rec, f.offset, v) != f.length) {
        *error = "the field cannot be read as a number";
        return false;
      }
      if (!std::isfinite(v)) {
        *error = "not a finite number";
        return false;
      }
      AppendShortest(v, IsSingle(f.type.Type()), out);
      return true;
    }
    case Kind::kDate:
    case Kind::kTime: {
      long v = 0;
      if (f.type.Input(rec, f.offset, v) != f.length) {
        *error = "the field cannot be read as a date or time";
        return false;
      }
      if (v == 0) {
        *is_null = true;
        return true;
      }
      ZQString text;
      if (f.kind == Kind::kDate) {
        ZQDate date(v);
        if (v < 0 || !date.OK()) {
          *error = "not a valid date";
          return false;
        }
        date.Print(text, f.picture.c_str());
      } else {
        ZQTime time(v);
        if (v < 0 || v >= 86400 || !time.OK()) {
          *error = "not a valid time of day";
          return false;
        }
        time.Print(text, f.picture.c_str());
      }
      out->append(text.c_str(), text.length());
      return true;
    }
    case Kind::kText: {
      ZQString text;
      if (f.type.Input(rec, f.offset, text) != f.length) {
        *error = "the field cannot be read as text";
        return false;
      }
      const unsigned char* t = reinterpret_cast<const unsigned char*>(text.c_str());
      int n = static_cast<int>(text.length());
      // Trailing pad characters are not part of the value; encoding puts
      // them back.
      const unsigned char pad = f.type.PadChar() == ' ' ? f.cp.space
                                                         : static_cast<unsigned char>(f.type.PadChar());
      while (n > 0 && t[n - 1] == pad) --n;
      return DecodeText(f, t, n, out, error);
    }
    case Kind::kHex:
      for (int i = 0; i < f.length; ++i) {
        out->push_back(kHexDigits[p[i] >> 4]);
        out->push_back(kHexDigits[p[i] & 15]);
      }
      return true;
  }
  return false;
}

bool EncodeField(const Field& f, const std::string& text, ZQString* out, std::string* error) {
  const long before = out->length();
  long wrote = 0;
  switch (f.kind) {
    case Kind::kPacked:
    case Kind::kZoned:
    case Kind::kBcd:
    case Kind::kInteger: {
      bool neg = false;
      std::string digits;
      if (!ParseDecimal(text, f.scale, &neg, &digits, error)) return false;
      const bool is_signed = ReadsSigned(f);
      if (neg && !is_signed) {
        *error = "\"" + text + "\" is negative, but the field is unsigned";
        return false;
      }
      size_t room = 0;
      const long pos = f.type.SignPos();
      if (f.kind == Kind::kPacked) {
        room = 2 * f.length - ((pos == kNoSign && f.type.SignStyle() == kAcuCobol) ? 0 : 1);
      } else if (f.kind == Kind::kBcd) {
        room = f.length - (f.type.Signed() ? 1 : 0);
      } else if (f.kind == Kind::kZoned) {
        room = f.length;
        if (f.type.Signed() && (pos == kTrailingSeparate || (pos == kLeadingSeparate && neg))) {
          --room;
        }
        if (neg && f.type.Signed() && pos == kLeadingOverpunch && f.type.SignStyle() == kAcuCobol) {
          *error = "this sign convention cannot store negative values";
          return false;
        }
      }
      if (f.kind == Kind::kInteger ? !FitsBinary(f, neg, digits) : digits.size() > room) {
        *error = "\"" + text + "\" does not fit in the field";
        return false;
      }
      const std::string literal = (neg ? "-" : "") + digits;
      ZQDecimal d(literal.c_str());
      if (f.kind == Kind::kInteger && static_cast<int>(f.type.Type()) != 117) {
        // Two's complement of the field's width: the value is known to fit,
        // and this also covers unsigned 64-bit values above 2^63.
        wrote = d.PutBinary(*out, f.length, f.type.MSBFirst());
      } else {
        wrote = f.raw.Output(*out, d);
      }
      break;
    }
    case Kind::kFloat: {
      char* end = nullptr;
      const double v = std::strtod(text.c_str(), &end);
      if (text.empty() || *end != '\0' || !std::isfinite(v)) {
        *error = "\"" + text + "\" is not a finite number";
        return false;
      }
      wrote = f.type.Output(*out, v);
      break;
    }
    case Kind::kDate:
    case Kind::kTime: {
      // An empty value is "no date" (or time), stored as zero bytes: that is
      // what every legacy date and time codec reads as no value.
      if (text.empty()) {
        out->Pad('\0', f.length);
        return true;
      }
      long v = 0;
      {
        if (f.kind == Kind::kDate) {
          ZQDate date;
          if (!date.Convert(text.c_str(), f.picture.c_str()) || !date.OK()) {
            *error = "\"" + text + "\" is not a date in the form " + f.picture;
            return false;
          }
          v = date.DayNumber();
        } else {
          ZQTime time;
          if (!time.Convert(text.c_str(), f.picture.c_str()) || !time.OK()) {
            *error = "\"" + text + "\" is not a time in the form " + f.picture;
            return false;
          }
          v = time.Seconds();
        }
      }
      wrote = f.type.Output(*out, v);
      break;
    }
    case Kind::kText: {
      std::string bytes;
      if (!EncodeText(f, text, &bytes, error)) return false;
      const int t = static_cast<int>(f.type.Type());
      const size_t room = f.length - (t == 126 || t == 127 ? 1 : t == 128 ? 2 : 0);
      if (bytes.size() > room) {
        *error = "the text takes " + std::to_string(bytes.size()) + " bytes in " + f.cp.name +
                 ", more than the field's " + std::to_string(room);
        return false;
      }
      if (f.type.PadChar() == ' ') bytes.append(room - bytes.size(), static_cast<char>(f.cp.space));
      ZQString value(bytes.data(), static_cast<int>(bytes.size()));
      wrote = f.type.Output(*out, value);
      break;
    }
    case Kind::kHex: {
      if (text.size() != 2 * static_cast<size_t>(f.length)) {
        *error = "expected " + std::to_string(2 * f.length) + " hexadecimal digits";
        return false;
      }
      std::string bytes;
      for (size_t i = 0; i < text.size(); i += 2) {
        const char* h1 = std::strchr(kHexDigits, std::toupper(static_cast<unsigned char>(text[i])));
        const char* h2 = std::strchr(kHexDigits, std::toupper(static_cast<unsigned char>(text[i + 1])));
        if (text[i] == '\0' || text[i + 1] == '\0' || h1 == nullptr || h2 == nullptr) {
          *error = "\"" + text + "\" is not hexadecimal";
          return false;
        }
        bytes.push_back(static_cast<char>((h1 - kHexDigits) << 4 | (h2 - kHexDigits)));
      }
      out->Append(bytes.data(), static_cast<long>(bytes.size()));
      wrote = f.length;
      break;
    }
  }
  if (f.kind == Kind::kZoned && f.cp.ebcdic != 0 && wrote == f.length) {
    char* b = out->GetBuffer() + before;
    for (int i = 0; i < f.length; ++i) {
      b[i] = static_cast<char>(f.cp.from_iso[static_cast<unsigned char>(b[i])]);
    }
  }
  if (wrote != f.length || out->length() - before != f.length) {
    out->Truncate(before);
    *error = "\"" + text + "\" cannot be stored as " + f.type.TypeName();
    return false;
  }
  return true;
}

}  // namespace zqrec
