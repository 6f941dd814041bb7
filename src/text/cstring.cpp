// ZQString: growable narrow byte string.
#include "zq/zqstring.h"

#include <cctype>
#include <vector>

#include "text/textbuf.h"
#include "zq/zqglob.h"
#include "zq/zqwstring.h"

using zq::text::TextBuf;
using zq::text::ZLength;

#define ZQ_TB TextBuf<char>(buf_, inline_, cap_, len_, owns_)

namespace {

// Offset `off` into a zero-terminated text and the count to take from there;
// a negative `n` means the rest of the text. False when nothing is to be done.
bool ResolveRaw(const char* s, long n, long off, int64_t* count) {
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

// The same for a ZQString source, whose length bounds the count.
bool ResolveStr(const ZQString& s, long n, long off, int64_t* count) {
  if (off < 0 || off > s.length()) return false;
  int64_t rest = s.length() - off;
  *count = (n < 0 || n > rest) ? rest : n;
  return true;
}

}  // namespace

ZQString::ZQString() : cursor_(0) { ZQ_TB.Init(); }

ZQString::ZQString(const char* s, int n) : cursor_(0) {
  ZQ_TB.Init();
  int64_t count = (s == nullptr) ? 0 : (n < 0 ? ZLength(s) : n);
  ZQ_TB.Assign(s, count);
}

ZQString::ZQString(long n) : cursor_(0) {
  ZQ_TB.Init();
  allocmem(n);
}

ZQString::ZQString(const ZQString& other) : cursor_(0) {
  ZQ_TB.Init();
  ZQ_TB.Assign(other.buf_, other.len_);
}

ZQString::~ZQString() { ZQ_TB.Release(); }

long ZQString::capacity() const { return cap_; }

void ZQString::Init() {
  ZQ_TB.Init();
  cursor_ = 0;
}

void ZQString::allocmem(long n) { ZQ_TB.Reserve(n); }

void ZQString::internal_allocmem(long n) { ZQ_TB.Grow(n); }

// Also false for a size the string can never reach, so that callers never
// write past the buffer.
bool ZQString::Allocate(long n) {
  return ZQ_TB.Reserve(static_cast<int64_t>(n) + 1);
}

void ZQString::SetLength(long n) {
  if (buf_ == nullptr || n < 0 || n > cap_) return;
  ZQ_TB.SetLen(n);
}

bool ZQString::Truncate(long n) {
  if (buf_ == nullptr || n < 0 || n > len_) return false;
  ZQ_TB.SetLen(n);
  return true;
}

void ZQString::clear() {
  if (buf_ != nullptr) ZQ_TB.SetLen(0);
}

ZQString& ZQString::operator=(const ZQString& other) {
  if (this == &other) return *this;
  cursor_ = 0;
  ZQ_TB.Assign(other.buf_, other.len_);
  return *this;
}

ZQString& ZQString::operator=(const char* s) {
  if (s == buf_) return *this;
  cursor_ = 0;
  ZQ_TB.Assign(s, ZLength(s));
  return *this;
}

ZQString& ZQString::operator=(const std::string& s) {
  cursor_ = 0;
  ZQ_TB.Assign(s.data(), static_cast<int64_t>(s.size()));
  return *this;
}

ZQString& ZQString::operator=(char c) {
  cursor_ = 0;
  ZQ_TB.Assign(&c, 1);
  return *this;
}

void ZQString::AssignToStd(std::string& out) const {
  if (buf_ == nullptr) {
    out.clear();
  } else {
    out.assign(buf_, static_cast<size_t>(len_));
  }
}

bool ZQString::Set(char c, long n) {
  clear();
  return Pad(c, n);
}

bool ZQString::CopyN(const char* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Assign(s + off, count);
}

bool ZQString::CopyN(const ZQString& s, long n, long off) {
  int64_t count;
  if (&s == this || off >= s.len_ || !ResolveStr(s, n, off, &count)) {
    return false;
  }
  return ZQ_TB.Assign(s.buf_ + off, count);
}

bool ZQString::CopyTo(const ZQString& s, long from, char stop) {
  if (&s == this) {
    ZQString copy(s);
    return CopyTo(copy, from, stop);
  }
  clear();
  return AppendTo(s, from, stop);
}

ZQString& ZQString::operator+=(const ZQString& s) {
  ZQ_TB.Append(s.buf_, s.len_);
  return *this;
}

ZQString& ZQString::operator+=(const char* s) {
  ZQ_TB.Append(s, ZLength(s));
  return *this;
}

ZQString& ZQString::operator+=(char c) {
  // A single byte reserves its terminator too (new length plus one).
  if (buf_ != nullptr && len_ + 2 < cap_) {
    buf_[len_++] = c;
    buf_[len_] = 0;
    return *this;
  }
  if (ZQ_TB.Reserve(static_cast<int64_t>(len_) + 2)) {
    buf_[len_] = c;
    ZQ_TB.SetLen(len_ + 1);
  }
  return *this;
}

ZQString ZQString::operator+(const ZQString& s) const {
  ZQString r(static_cast<long>(len_ + s.len_));
  r += *this;
  r += s;
  return r;
}

ZQString ZQString::operator+(const char* s) const {
  int64_t n = ZLength(s);
  ZQString r(static_cast<long>(len_ + n));
  r += *this;
  r.Append(s, static_cast<long>(n), 0);
  return r;
}

bool ZQString::Append(const char* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Append(s + off, count);
}

bool ZQString::Append(const ZQString& s, long n, long off) {
  int64_t count;
  if (!ResolveStr(s, n, off, &count)) return false;
  return ZQ_TB.Append(s.buf_ + off, count);
}

bool ZQString::Insert(long pos, const char* s, long n, long off) {
  int64_t count;
  if (!ResolveRaw(s, n, off, &count)) return false;
  return ZQ_TB.Insert(pos, s + off, count);
}

bool ZQString::Insert(long pos, const ZQString& s, long n, long off) {
  int64_t count;
  if (!ResolveStr(s, n, off, &count)) return false;
  return ZQ_TB.Insert(pos, s.buf_ + off, count);
}

void ZQString::Remove(long count, long start) { ZQ_TB.Remove(count, start); }

void ZQString::Replace(long pos, char c) {
  if (pos >= 0 && pos < len_) buf_[pos] = c;
}

bool ZQString::Pad(char c, long n) { return ZQ_TB.Pad(c, n); }

bool ZQString::AppendTo(const ZQString& s, long from, char stop) {
  if (from < 0) from = 0;
  if (from >= s.len_) return buf_ != nullptr;
  long end = from;
  while (end < s.len_ && s.buf_[end] != stop) ++end;
  if (end < s.len_) ++end;  // the stop byte itself is taken
  return ZQ_TB.Append(s.buf_ + from, end - from);
}

void ZQString::StripChars(bool leading, bool trailing, char c) {
  ZQ_TB.Strip(leading, trailing, c);
}

void ZQString::ToLower() {
  for (int32_t i = 0; i < len_; ++i) {
    buf_[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(buf_[i])));
    if (ZQGlob::IsLeadByte(static_cast<unsigned char>(buf_[i]), ZQ_CSET_OEM)) ++i;
  }
}

void ZQString::ToUpper() {
  for (int32_t i = 0; i < len_; ++i) {
    buf_[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(buf_[i])));
    if (ZQGlob::IsLeadByte(static_cast<unsigned char>(buf_[i]), ZQ_CSET_OEM)) ++i;
  }
}

int ZQString::mycompare(const ZQString& s) const {
  return zq::text::CompareUnits(buf_, len_, s.buf_, s.len_);
}

int ZQString::mycompare(const char* s) const { return zq::text::CompareToZ(c_str(), s); }

bool ZQString::operator==(const ZQString& s) const {
  return len_ == s.len_ && mycompare(s) == 0;
}

bool ZQString::operator==(const char* s) const { return mycompare(s) == 0; }

char ZQString::operator[](long i) const {
  return (i >= 0 && i < len_) ? buf_[i] : 0;
}

char ZQString::operator[](int i) const { return (*this)[static_cast<long>(i)]; }

int ZQString::Peek() const {
  if (cursor_ < 0 || cursor_ >= len_) return -1;
  return static_cast<unsigned char>(buf_[cursor_]);
}

int ZQString::operator()() const {
  int c = Peek();
  if (c >= 0) ++cursor_;
  return c;
}

void ZQString::Seek(long p) const {
  if (p < 0) p = 0;
  cursor_ = p < len_ ? static_cast<int32_t>(p) : len_;
}

void ZQString::Previous() const {
  if (cursor_ > 0) --cursor_;
}

void ZQString::Print(ZQString& out, bool quote) const {
  if (&out == this) {
    ZQString copy(*this);
    copy.Print(out, quote);
    return;
  }
  static const char kHex[] = "0123456789abcdef";
  if (quote) out += '\'';
  for (int32_t i = 0; i < len_; ++i) {
    unsigned char b = static_cast<unsigned char>(buf_[i]);
    char esc[4] = {'\\', 0, 0, 0};
    long n = 2;
    if (b == 0) {
      esc[1] = '0';
    } else if (b == '\t') {
      esc[1] = 't';
    } else if (b == '\'' || b == '\\') {
      esc[1] = static_cast<char>(b);
    } else if (b >= 32 && b <= 126) {
      esc[0] = static_cast<char>(b);
      n = 1;
    } else {
      esc[1] = 'x';
      esc[2] = kHex[b >> 4];
      esc[3] = kHex[b & 15];
      n = 4;
    }
    out.Append(esc, n, 0);
  }
  if (quote) out += '\'';
}

namespace {

int HexValue(int c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool ZQString::Extract(const ZQString& src) {
  if (&src == this) {
    // Reading what is being appended would never end: read from a copy.
    ZQString copy(src);
    copy.cursor_ = cursor_;
    bool found = Extract(copy);
    cursor_ = copy.cursor_;
    return found;
  }
  ZQGlob::SetLocale();
  int c = src();
  while (c >= 0 && std::isspace(c)) c = src();
  if (c < 0) return false;
  bool quoted = c == '\'';
  if (quoted) c = src();
  bool after_lead = false;
  for (; c >= 0; c = src()) {
    if (quoted && c == '\'') break;
    if (!quoted && std::isspace(c)) {
      src.Previous();
      break;
    }
    if (c == '\\' && !after_lead) {
      int e = src();
      if (e < 0) break;
      int value = e;
      if (e == 'n') {
        value = 10;
      } else if (e == 'r') {
        value = 13;
      } else if (e == 't') {
        value = 9;
      } else if (e == 'x') {
        // Up to two hex digits; a byte that ends the escape early is dropped.
        value = 0;
        for (int k = 0; k < 2; ++k) {
          int d = HexValue(src());
          if (d < 0) break;
          value = value * 16 + d;
        }
      } else if (e >= '0' && e <= '9') {
        // Up to three decimal digits; the byte read after them is dropped.
        value = e - '0';
        for (int k = 0; k < 2; ++k) {
          int d = src();
          if (d < '0' || d > '9') {
            break;
          }
          value = value * 10 + (d - '0');
          if (k == 1) src();
        }
        value &= 0xFF;
      }
      *this += static_cast<char>(value);
      after_lead = false;
      continue;
    }
    *this += static_cast<char>(c);
    after_lead = ZQGlob::IsLeadByte(c, ZQ_CSET_OEM) != 0;
  }
  return true;
}

namespace {

// Narrows `n` units of `w` into `out` in code set `cs`. `terminated` says
// that w[n] is a readable zero unit, which the whole-string routine needs.
void Narrow(ZQString& out, const unsigned short* w, int64_t n, ZQ_CSET cs,
            bool terminated) {
  out.clear();
  if (w == nullptr || n <= 0) return;
  if (cs == ZQ_CSET_ISO8859_1) {
    if (!out.Allocate(static_cast<long>(n)) || out.capacity() < n) return;
    char* p = out.GetBuffer();
    for (int64_t i = 0; i < n; ++i) p[i] = static_cast<char>(w[i] & 0xFF);
    out.SetLength(static_cast<long>(n));
    return;
  }
  if (cs == ZQ_CSET_UCS2) {
    // Two bytes per unit in the machine's order (least significant first).
    if (!out.Allocate(static_cast<long>(2 * n)) || out.capacity() < 2 * n) return;
    char* p = out.GetBuffer();
    for (int64_t i = 0; i < n; ++i) {
      p[2 * i] = static_cast<char>(w[i] & 0xFF);
      p[2 * i + 1] = static_cast<char>(w[i] >> 8);
    }
    out.SetLength(static_cast<long>(2 * n));
    return;
  }
  if (cs == ZQ_CSET_UTF8) {
    unsigned char seq[8];
    for (int64_t i = 0; i < n; ++i) {
      int k = ZQGlob::UnicodeToUTF8(w[i], seq);
      if (k > 0) out.Append(reinterpret_cast<char*>(seq), k, 0);
    }
    return;
  }
  int max = ZQGlob::MBMaxChars(cs);
  if (max < 1) max = 1;
  int64_t room = n * max;
  if (room > zq::text::kMaxCapacity || !out.Allocate(static_cast<long>(room)) ||
      out.capacity() < room) {
    return;
  }
  char* p = out.GetBuffer();
  // The whole-string routine stops at a zero unit, so text holding one goes
  // unit by unit straight away, as does text it fails on.
  bool whole = terminated;
  for (int64_t i = 0; i < n && whole; ++i) whole = w[i] != 0;
  if (whole) {
    int got = ZQGlob::WCStoMBS(p, w, static_cast<int>(room), cs);
    if (got >= 0 && got <= room) {
      out.SetLength(got);
      return;
    }
  }
  int64_t len = 0;
  char mb[32];
  for (int64_t i = 0; i < n; ++i) {
    unsigned short u = w[i];
    if (u < 128) {
      p[len++] = static_cast<char>(u);
      continue;
    }
    int k = ZQGlob::WCtoMB(mb, u, cs);
    if (k < 1 || k > max) {
      p[len++] = static_cast<char>(u & 0xFF);
    } else {
      for (int j = 0; j < k; ++j) p[len++] = mb[j];
    }
  }
  out.SetLength(static_cast<long>(len));
}

}  // namespace

bool ZQString::Assign(const ZQWString& w, ZQ_CSET cs) {
  cursor_ = 0;
  Narrow(*this, w.c_str(), w.length(), cs, true);
  return true;
}

bool ZQString::Assign(const std::basic_string<unsigned short>& w) {
  cursor_ = 0;
  Narrow(*this, w.c_str(), static_cast<int64_t>(w.size()), ZQ_CSET_OEM, true);
  return true;
}

bool ZQString::Assign(const unsigned short* w, ZQ_CSET cs, int n) {
  cursor_ = 0;
  bool terminated = n < 0;
  Narrow(*this, w, n < 0 ? ZLength(w) : n, cs, terminated);
  return true;
}
