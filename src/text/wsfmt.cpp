// The 16-bit printf-style formatter.
//
// Numbers are formatted by the C library's snprintf on the same flags,
// width and precision (so the digits are exactly the C library's) and
// widened; text and character conversions are done here, padded the way
// the C library pads them (spaces, also under the "0" flag). Narrow text
// (%S, %hs, %C, %hc) is widened byte for byte, as ISO-8859-1.
#include "zq/wsfmt.h"

#include <cinttypes>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Collects output units, keeping those that fit below `limit` and counting
// all of them.
class Sink {
 public:
  Sink(unsigned short* out, int64_t limit) : out_(out), limit_(limit) {}

  void Put(unsigned short u) {
    if (total_ < limit_) out_[total_] = u;
    ++total_;
  }
  void Repeat(unsigned short u, int64_t n) {
    for (int64_t i = 0; i < n; ++i) Put(u);
  }
  void PutNarrow(const char* s, int64_t n) {
    for (int64_t i = 0; i < n; ++i) Put(static_cast<unsigned char>(s[i]));
  }
  // Writes the terminator after the units that fit.
  void Finish() {
    if (out_ != nullptr && limit_ >= 0) out_[total_ < limit_ ? total_ : limit_] = 0;
  }
  int64_t total() const { return total_; }

 private:
  unsigned short* out_;
  int64_t limit_;
  int64_t total_ = 0;
};

enum class Size { kDefault, kShort, kChar, kLong, kLongLong, kSizeT, kLongDouble, kWide };

// One conversion as written, with `*` arguments already read.
struct Conversion {
  std::string flags;  // the flag characters as written
  bool left = false;
  int width = -1;
  int precision = -1;
  Size size = Size::kDefault;
};

// The narrow format "%<flags><width>.<precision><length><conv>" for snprintf.
std::string NarrowFormat(const Conversion& s, const char* length, char conv) {
  std::string f = "%" + s.flags;
  if (s.left && s.flags.find('-') == std::string::npos) f += '-';
  if (s.width >= 0) f += std::to_string(s.width);
  if (s.precision >= 0) f += "." + std::to_string(s.precision);
  f += length;
  f += conv;
  return f;
}

// The length modifier of 64-bit integers ("l" here): PRId64 less its letter.
const char* Length64() {
  static const std::string length(PRId64, sizeof(PRId64) - 2);
  return length.c_str();
}

// Runs snprintf on one argument and widens its output into the sink.
template <typename T>
void Snprintf(Sink& sink, const std::string& fmt, T value) {
  char small[128];
  int n = std::snprintf(small, sizeof small, fmt.c_str(), value);
  if (n < 0) return;
  if (n < static_cast<int>(sizeof small)) {
    sink.PutNarrow(small, n);
    return;
  }
  std::vector<char> big(static_cast<size_t>(n) + 1);
  std::snprintf(big.data(), big.size(), fmt.c_str(), value);
  sink.PutNarrow(big.data(), n);
}

// Pads `len` units of text to the width of `s` with spaces, on the side
// the "-" flag chooses; `emit` writes the text itself.
template <typename Emit>
void Padded(Sink& sink, const Conversion& s, int64_t len, Emit emit) {
  int64_t pad = s.width > len ? s.width - len : 0;
  if (!s.left) sink.Repeat(' ', pad);
  emit();
  if (s.left) sink.Repeat(' ', pad);
}

bool IsFlag(unsigned short u) {
  return u == '#' || u == '0' || u == '-' || u == ' ' || u == '+';
}

bool IsDigit(unsigned short u) { return u >= '0' && u <= '9'; }

// Widths and precisions are capped so that one conversion never needs more
// than a few megabytes of scratch space.
constexpr int kMaxField = 1 << 20;

int CapField(int64_t v) { return v > kMaxField ? kMaxField : static_cast<int>(v); }

// Reads a run of decimal digits, capped at kMaxField.
int ReadNumber(const unsigned short*& f) {
  int64_t v = 0;
  while (IsDigit(*f)) {
    v = v * 10 + (*f++ - '0');
    if (v > kMaxField) v = kMaxField + 1;
  }
  return CapField(v);
}

int64_t Format(Sink& sink, const unsigned short* f, va_list* ap) {
  static const char kNull[] = "(null)";
  while (*f != 0) {
    if (*f != '%') {
      sink.Put(*f++);
      continue;
    }
    const unsigned short* start = f++;
    Conversion s;
    for (; IsFlag(*f); ++f) {
      if (*f == '-') s.left = true;
      s.flags += static_cast<char>(*f);
    }
    if (*f == '*') {
      ++f;
      int w = va_arg(*ap, int);
      int64_t wide_w = w;
      if (wide_w < 0) {
        s.left = true;
        wide_w = -wide_w;
      }
      s.width = CapField(wide_w);
    } else if (IsDigit(*f)) {
      s.width = ReadNumber(f);
    }
    if (*f == '.') {
      ++f;
      if (*f == '*') {
        ++f;
        int p = va_arg(*ap, int);
        s.precision = p < 0 ? -1 : CapField(p);
      } else {
        s.precision = ReadNumber(f);
      }
    }
    // Size prefixes: h, hh, l (the 32-bit long), ll, q, L, I64, I32, I, w;
    // the first match in this order, longer prefixes first.
    static const struct {
      const char* text;
      Size size;
    } kPrefixes[] = {{"hh", Size::kChar},     {"h", Size::kShort},       {"ll", Size::kLongLong},
                     {"l", Size::kLong},      {"q", Size::kLongLong},    {"L", Size::kLongDouble},
                     {"w", Size::kWide},      {"I64", Size::kLongLong},  {"I32", Size::kDefault},
                     {"I", Size::kSizeT}};
    for (const auto& prefix : kPrefixes) {
      // A mismatch, at the latest the format's terminating 0, ends the
      // comparison, so nothing past the format is read.
      size_t n = 0;
      while (prefix.text[n] != 0 && f[n] == static_cast<unsigned char>(prefix.text[n])) ++n;
      if (prefix.text[n] == 0) {
        f += n;
        s.size = prefix.size;
        break;
      }
    }
    unsigned short conv = *f;
    if (conv == 0) {
      // A conversion cut short by the end of the format is copied.
      for (const unsigned short* p = start; p < f; ++p) sink.Put(*p);
      break;
    }
    ++f;
    switch (conv) {
      case 'd':
      case 'i': {
        int64_t v;
        switch (s.size) {
          case Size::kShort: v = static_cast<short>(va_arg(*ap, int)); break;
          case Size::kChar: v = static_cast<signed char>(va_arg(*ap, int)); break;
          case Size::kLong: v = static_cast<int32_t>(va_arg(*ap, long)); break;
          case Size::kLongLong:
          case Size::kLongDouble: v = va_arg(*ap, long long); break;
          case Size::kSizeT: v = va_arg(*ap, ptrdiff_t); break;
          default: v = va_arg(*ap, int); break;
        }
        Snprintf(sink, NarrowFormat(s, Length64(), 'd'), v);
        break;
      }
      case 'o':
      case 'u':
      case 'x':
      case 'X': {
        uint64_t v;
        switch (s.size) {
          case Size::kShort: v = static_cast<unsigned short>(va_arg(*ap, int)); break;
          case Size::kChar: v = static_cast<unsigned char>(va_arg(*ap, int)); break;
          case Size::kLong: v = static_cast<uint32_t>(va_arg(*ap, unsigned long)); break;
          case Size::kLongLong:
          case Size::kLongDouble: v = va_arg(*ap, unsigned long long); break;
          case Size::kSizeT: v = va_arg(*ap, size_t); break;
          default: v = va_arg(*ap, unsigned int); break;
        }
        Snprintf(sink, NarrowFormat(s, Length64(), static_cast<char>(conv)), v);
        break;
      }
      case 'e':
      case 'E':
      case 'f':
      case 'g':
      case 'G':
        if (s.size == Size::kLongDouble) {
          long double v = va_arg(*ap, long double);
          Snprintf(sink, NarrowFormat(s, "L", static_cast<char>(conv)), v);
        } else {
          double v = va_arg(*ap, double);
          Snprintf(sink, NarrowFormat(s, "", static_cast<char>(conv)), v);
        }
        break;
      case 'p': {
        void* v = va_arg(*ap, void*);
        Snprintf(sink, NarrowFormat(s, "", 'p'), v);
        break;
      }
      case 'c':
      case 'C': {
        bool wide = conv == 'c' ? (s.size != Size::kShort && s.size != Size::kChar)
                                : (s.size == Size::kLong || s.size == Size::kWide);
        int v = va_arg(*ap, int);
        unsigned short u = wide ? static_cast<unsigned short>(v)
                                : static_cast<unsigned char>(v);
        Padded(sink, s, 1, [&] { sink.Put(u); });
        break;
      }
      case 's':
      case 'S': {
        bool wide = conv == 's' ? (s.size != Size::kShort && s.size != Size::kChar)
                                : (s.size == Size::kLong || s.size == Size::kWide);
        int64_t limit = s.precision < 0 ? INT64_MAX : s.precision;
        if (wide) {
          const unsigned short* v = va_arg(*ap, const unsigned short*);
          if (v == nullptr) {
            // As the C library: "(null)", or nothing when a precision cuts it.
            int64_t len = limit < 6 ? 0 : 6;
            Padded(sink, s, len, [&] { sink.PutNarrow(kNull, len); });
            break;
          }
          int64_t len = 0;
          while (len < limit && v[len] != 0) ++len;
          Padded(sink, s, len, [&] {
            for (int64_t i = 0; i < len; ++i) sink.Put(v[i]);
          });
        } else {
          const char* v = va_arg(*ap, const char*);
          if (v == nullptr) {
            int64_t len = limit < 6 ? 0 : 6;
            Padded(sink, s, len, [&] { sink.PutNarrow(kNull, len); });
            break;
          }
          int64_t len = 0;
          while (len < limit && v[len] != 0) ++len;
          Padded(sink, s, len, [&] { sink.PutNarrow(v, len); });
        }
        break;
      }
      case 'n': {
        int64_t t = sink.total();
        switch (s.size) {
          case Size::kShort: *va_arg(*ap, short*) = static_cast<short>(t); break;
          case Size::kChar: *va_arg(*ap, signed char*) = static_cast<signed char>(t); break;
          case Size::kLong: *va_arg(*ap, long*) = static_cast<int32_t>(t); break;
          case Size::kLongLong: *va_arg(*ap, long long*) = t; break;
          case Size::kSizeT: *va_arg(*ap, size_t*) = static_cast<size_t>(t); break;
          default: *va_arg(*ap, int*) = static_cast<int>(t); break;
        }
        break;
      }
      case '%':
        sink.Put('%');
        break;
      default:
        // Unknown conversions are copied as written.
        for (const unsigned short* p = start; p < f; ++p) sink.Put(*p);
        break;
    }
  }
  return sink.total();
}

int Clamp(int64_t n) { return n > INT_MAX ? INT_MAX : static_cast<int>(n); }

}  // namespace

int vwsnfmt(unsigned short* out, int n, const unsigned short* fmt, va_list ap) {
  if (out == nullptr || n < 0) n = 0;
  if (fmt == nullptr) {
    if (n > 0) out[0] = 0;
    return -1;
  }
  Sink sink(n > 0 ? out : nullptr, static_cast<int64_t>(n) - 1);
  va_list args;
  va_copy(args, ap);
  int64_t total = Format(sink, fmt, &args);
  va_end(args);
  sink.Finish();
  return Clamp(total);
}

int vwsfmt(unsigned short* out, const unsigned short* fmt, va_list ap) {
  if (out == nullptr || fmt == nullptr) return -1;
  Sink sink(out, INT64_MAX);
  va_list args;
  va_copy(args, ap);
  int64_t total = Format(sink, fmt, &args);
  va_end(args);
  sink.Finish();
  return Clamp(total);
}

int wsnfmt(unsigned short* out, int n, const unsigned short* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int r = vwsnfmt(out, n, fmt, ap);
  va_end(ap);
  return r;
}

int wsfmt(unsigned short* out, const unsigned short* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int r = vwsfmt(out, fmt, ap);
  va_end(ap);
  return r;
}
