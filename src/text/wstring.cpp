// ZQWString: growable string of 16-bit units.
#include "zq/zqwstring.h"

#include <cstring>
#include <cwctype>
#include <string>
#include <vector>

#include "text/textbuf.h"
#include "zq/zqglob.h"
#include "zq/wsfmt.h"
#include "zq/zqstring.h"

using zq::text::TextBuf;
using zq::text::ZLength;

#define ZQ_TB TextBuf<unsigned short>(buf_, inline_, cap_, len_, owns_)

namespace {

// Offset `off` into a zero-terminated text and the count to take from there;
// a negative `n` means the rest of the text. False when nothing is to be done.
bool ResolveRaw(const unsigned short* s, long n, long off, int64_t* count) {
  if (s == nullptr || off < 0) return false;
  if (n < 0) {
    int64_t rest = ZLength(s) - off;
    if (rest < 0) return false;
    *count = rest;
  } else {
    *count = n;
  }
  return true;
}

// The same for a ZQWString source, whose length bounds the count.
bool ResolveStr(const ZQWString& s, long n, long off, int64_t* count) {
  if (off < 0 || off > s.length()) return false;
  int64_t rest = s.length() - off;
  *count = (n < 0 || n > rest) ? rest : n;
  return true;
}

}  // namespace

ZQWString::ZQWString() : cursor_(0) { ZQ_TB.Init(); }

ZQWString::ZQWString(const unsigned short* s, int n) : cursor_(0) {
  ZQ_TB.Init();
  int64_t count = (s == nullptr) ? 0 : (n < 0 ? ZLength(s) : n);
  ZQ_TB.Assign(s, count);
}

ZQWString::ZQWString(long n) : cursor_(0) {
  ZQ_TB.Init();
  allocmem(n);
}

ZQWString::ZQWString(const ZQWString& other) : cursor_(0) {
  ZQ_TB.Init();
  ZQ_TB.Assign(other.buf_, other.len_);
}

ZQWString::~ZQWString() { ZQ_TB.Release(); }

long ZQWString::capacity() const { return cap_; }

void ZQWString::Init() {
  ZQ_TB.Init();
  cursor_ = 0;
}

void ZQWString::allocmem(long n) { ZQ_TB.Reserve(n); }

void ZQWString::internal_allocmem(long n) { ZQ_TB.Grow(n); }

// Also false for a size the string can never reach, so that callers never
// write past the buffer.
bool ZQWString::Allocate(long n) {
  return ZQ_TB.Reserve(static_cast<int64_t>(n) + 1);
}

void ZQWString::SetLength(long n) {
  if (buf_ == nullptr || n < 0 || n > cap_) return;
  ZQ_TB.SetLen(n);
}

bool ZQWString::Truncate(long n) {
  if (buf_ == nullptr || n < 0 || n > len_) return false;
  ZQ_TB.SetLen(n);
  return true;
}

void ZQWString::clear() {
  if (buf_ != nullptr) ZQ_TB.SetLen(0);
}

ZQWString& ZQWString::operator=(const ZQWString& other) {
  if (this == &other) return *this;
  cursor_ = 0;
  ZQ_TB.Assign(other.buf_, other.len_);
  return *this;
}

ZQWString& ZQWString::operator=(const unsigned short* s) {
  if (s == buf_) return *this;
  cursor_ = 0;
  ZQ_TB.Assign(s, ZLength(s));
  return *this;
}

ZQWString& ZQWString::operator=(const std::basic_string<unsigned short>& s) {
  cursor_ = 0;
  ZQ_TB.Assign(s.data(), static_cast<int64_t>(s.size()));
  return *this;
}

ZQWString& ZQWString::operator=(unsigned short u) {
  cursor_ = 0;
  ZQ_TB.Assign(&u, 1);
  return *this;
}

void ZQWString::AssignToStd(std::basic_string<unsigned short>& out) const {
  if (buf_ == nullptr) {
    out.clear();
  } else {
    out.assign(buf_, static_cast<size_t>(len_));
  }
}

bool ZQWString::Set(unsigned short u, long n) {
  clear();
  return Pad(u, n);
}

bool ZQWString::CopyN(const unsigned short* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Assign(s + off, count);
}

bool ZQWString::CopyN(const ZQWString& s, long n, long off) {
  int64_t count;
  if (&s == this || off >= s.len_ || !ResolveStr(s, n, off, &count)) {
    return false;
  }
  return ZQ_TB.Assign(s.buf_ + off, count);
}

bool ZQWString::CopyTo(const ZQWString& s, long from, unsigned short stop) {
  if (&s == this) {
    ZQWString copy(s);
    return CopyTo(copy, from, stop);
  }
  clear();
  return AppendTo(s, from, stop);
}

ZQWString& ZQWString::operator+=(const ZQWString& s) {
  ZQ_TB.Append(s.buf_, s.len_);
  return *this;
}

ZQWString& ZQWString::operator+=(const unsigned short* s) {
  ZQ_TB.Append(s, ZLength(s));
  return *this;
}

ZQWString& ZQWString::operator+=(unsigned short u) {
  // A single unit reserves its terminator too (new length plus one).
  if (buf_ != nullptr && len_ + 2 < cap_) {
    buf_[len_++] = u;
    buf_[len_] = 0;
    return *this;
  }
  if (ZQ_TB.Reserve(static_cast<int64_t>(len_) + 2)) {
    buf_[len_] = u;
    ZQ_TB.SetLen(len_ + 1);
  }
  return *this;
}

ZQWString ZQWString::operator+(const ZQWString& s) const {
  ZQWString r(static_cast<long>(len_ + s.len_));
  r += *this;
  r += s;
  return r;
}

ZQWString ZQWString::operator+(const unsigned short* s) const {
  int64_t n = ZLength(s);
  ZQWString r(static_cast<long>(len_ + n));
  r += *this;
  r.Append(s, static_cast<long>(n), 0);
  return r;
}

bool ZQWString::Append(const unsigned short* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Append(s + off, count);
}

bool ZQWString::Append(const ZQWString& s, long n, long off) {
  int64_t count;
  if (!ResolveStr(s, n, off, &count)) return false;
  return ZQ_TB.Append(s.buf_ + off, count);
}

bool ZQWString::Insert(long pos, const unsigned short* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Insert(pos, s + off, count);
}

bool ZQWString::Insert(long pos, const ZQWString& s, long n, long off) {
  int64_t count;
  if (!ResolveStr(s, n, off, &count)) return false;
  return ZQ_TB.Insert(pos, s.buf_ + off, count);
}

void ZQWString::Remove(long count, long start) { ZQ_TB.Remove(count, start); }

void ZQWString::Replace(long pos, unsigned short u) {
  if (pos >= 0 && pos < len_) buf_[pos] = u;
}

bool ZQWString::Pad(unsigned short u, long n) { return ZQ_TB.Pad(u, n); }

bool ZQWString::AppendTo(const ZQWString& s, long from, unsigned short stop) {
  if (from < 0) from = 0;
  if (from >= s.len_) return buf_ != nullptr;
  long end = from;
  while (end < s.len_ && s.buf_[end] != stop) ++end;
  if (end < s.len_) ++end;  // the stop unit itself is taken
  return ZQ_TB.Append(s.buf_ + from, end - from);
}

void ZQWString::StripChars(bool leading, bool trailing, unsigned short u) {
  ZQ_TB.Strip(leading, trailing, u);
}

int ZQWString::mycompare(const ZQWString& s) const {
  return zq::text::CompareUnits(buf_, len_, s.buf_, s.len_);
}

int ZQWString::mycompare(const unsigned short* s) const { return zq::text::CompareToZ(c_str(), s); }

bool ZQWString::operator==(const ZQWString& s) const {
  return len_ == s.len_ && mycompare(s) == 0;
}

bool ZQWString::operator==(const unsigned short* s) const { return mycompare(s) == 0; }

unsigned short ZQWString::operator[](long i) const {
  return (i >= 0 && i < len_) ? buf_[i] : 0;
}

unsigned short ZQWString::operator[](int i) const { return (*this)[static_cast<long>(i)]; }

int ZQWString::Peek() const {
  if (cursor_ < 0 || cursor_ >= len_) return -1;
  return buf_[cursor_];
}

int ZQWString::operator()() const {
  int c = Peek();
  if (c >= 0) ++cursor_;
  return c;
}

void ZQWString::Seek(long p) const {
  if (p < 0) p = 0;
  cursor_ = p < len_ ? static_cast<int32_t>(p) : len_;
}

void ZQWString::Previous() const {
  if (cursor_ > 0) --cursor_;
}


void ZQWString::ToLower() {
  for (int32_t i = 0; i < len_; ++i) {
    buf_[i] = static_cast<unsigned short>(std::towlower(buf_[i]));
  }
}

void ZQWString::ToUpper() {
  for (int32_t i = 0; i < len_; ++i) {
    buf_[i] = static_cast<unsigned short>(std::towupper(buf_[i]));
  }
}

void ZQWString::Print(ZQWString& out, bool quote) const {
  if (&out == this) {
    ZQWString copy(*this);
    copy.Print(out, quote);
    return;
  }
  static const unsigned short kHexFormat[] = {'\\', 'x', '%', '0', '4', 'x', 0};
  if (quote) out += static_cast<unsigned short>('\'');
  for (int32_t i = 0; i < len_; ++i) {
    unsigned short u = buf_[i];
    unsigned short esc[8] = {'\\', 0};
    long n = 2;
    if (u == 0) {
      esc[1] = '0';
    } else if (u == '\t') {
      esc[1] = 't';
    } else if (u == '\'' || u == '\\') {
      esc[1] = u;
    } else if (u < 32) {
      n = wsnfmt(esc, 8, kHexFormat, static_cast<unsigned>(u));
    } else {
      esc[0] = u;
      n = 1;
    }
    out.Append(esc, n, 0);
  }
  if (quote) out += static_cast<unsigned short>('\'');
}

namespace {

int HexValue(int c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool ZQWString::Extract(const ZQWString& src) {
  if (&src == this) {
    // Reading what is being appended would never end: read from a copy.
    ZQWString copy(src);
    copy.cursor_ = cursor_;
    bool found = Extract(copy);
    cursor_ = copy.cursor_;
    return found;
  }
  ZQGlob::SetLocale();
  int c = src();
  while (c >= 0 && std::iswspace(c)) c = src();
  if (c < 0) return false;
  bool quoted = c == '\'';
  if (quoted) c = src();
  for (; c >= 0; c = src()) {
    if (quoted && c == '\'') break;
    if (!quoted && std::iswspace(c)) {
      src.Previous();
      break;
    }
    if (c == '\\') {
      int e = src();
      if (e < 0) break;
      unsigned short value = static_cast<unsigned short>(e);
      if (e == 'n') {
        value = 10;
      } else if (e == 'r') {
        value = 13;
      } else if (e == 't') {
        value = 9;
      } else if (e == 'x') {
        // Up to four hex digits gathered in one byte, so only the last two
        // count; a unit that ends the escape early is dropped.
        uint8_t acc = 0;
        for (int k = 0; k < 4; ++k) {
          int d = HexValue(src());
          if (d < 0) break;
          acc = static_cast<uint8_t>(acc * 16 + d);
        }
        value = acc;
      }
      *this += value;
      continue;
    }
    *this += static_cast<unsigned short>(c);
  }
  return true;
}

namespace {

// Widens `n` bytes of `s` into `out` from code set `cs`. `terminated` says
// that s[n] is a readable zero byte, which the whole-string routine needs.
void Widen(ZQWString& out, const char* s, int64_t n, ZQ_CSET cs, bool terminated) {
  out.clear();
  if (s == nullptr || n <= 0) return;
  const unsigned char* b = reinterpret_cast<const unsigned char*>(s);
  if (cs == ZQ_CSET_UTF8) {
    // Sequence by sequence; a sequence cut short by the end of the input or
    // one that cannot be decoded ends the text.
    int64_t i = 0;
    while (i < n) {
      if (ZQGlob::BytesInUTF8(b[i]) > n - i) break;
      unsigned short u = 0;
      int k = ZQGlob::UTF8ToUnicode(b + i, u);
      if (k < 1) break;
      out += u;
      i += k;
    }
    return;
  }
  if (!out.Allocate(static_cast<long>(n)) || out.capacity() < n) return;
  unsigned short* p = out.GetBuffer();
  if (cs == ZQ_CSET_ISO8859_1) {
    for (int64_t i = 0; i < n; ++i) p[i] = b[i];
    out.SetLength(static_cast<long>(n));
    return;
  }
  if (cs == ZQ_CSET_UCS2) {
    // Byte pairs in the machine's order; an odd last byte is a unit of its own.
    int64_t len = 0;
    for (int64_t i = 0; i < n; i += 2) {
      p[len++] = i + 1 < n ? static_cast<unsigned short>(b[i] | b[i + 1] << 8) : b[i];
    }
    out.SetLength(static_cast<long>(len));
    return;
  }
  bool whole = terminated;
  for (int64_t i = 0; i < n && whole; ++i) whole = b[i] != 0;
  if (whole) {
    int got = ZQGlob::MBStoWCS(p, s, static_cast<int>(n), cs);
    if (got >= 0 && got <= n) {
      out.SetLength(got);
      return;
    }
  }
  int64_t len = 0;
  for (int64_t i = 0; i < n;) {
    unsigned char c = b[i];
    if (c < 0x80) {
      p[len++] = c;
      ++i;
      continue;
    }
    unsigned short u = 0;
    int k = ZQGlob::MBtoWC(&u, s + i, static_cast<int>(n - i), cs);
    if (k < 1 || k > n - i) {
      p[len++] = c;
      ++i;
    } else {
      p[len++] = u;
      i += k;
    }
  }
  out.SetLength(static_cast<long>(len));
}

}  // namespace

bool ZQWString::Assign(const ZQString& s, ZQ_CSET cs) {
  cursor_ = 0;
  Widen(*this, s.c_str(), s.length(), cs, true);
  return true;
}

bool ZQWString::Assign(const std::string& s) {
  cursor_ = 0;
  Widen(*this, s.c_str(), static_cast<int64_t>(s.size()), ZQ_CSET_OEM, true);
  return true;
}

bool ZQWString::Assign(const char* s, ZQ_CSET cs, int n) {
  cursor_ = 0;
  Widen(*this, s, n < 0 ? ZLength(s) : n, cs, n < 0);
  return true;
}
