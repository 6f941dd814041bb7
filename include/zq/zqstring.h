// ZQString: the library's growable narrow byte string.
//
// The content has an explicit length (zero bytes may occur inside it) and is
// always followed by a zero byte. Short strings live in an inline area; the
// heap block grows by doubling up to 1,024 bytes and by 1,024 after that.
// A read cursor, changed even through const members, lets parsers consume a
// string byte by byte. Positions and counts are bytes; `long` is 32-bit.
#ifndef ZQ_ZQSTRING_H
#define ZQ_ZQSTRING_H

#include <cstdint>
#include <string>

#include "zq/common.h"
#include "zq/export.h"

class ZQWString;

class ZQ_EXPORT ZQString {
 public:
  // Empty string, capacity 32, inline.
  ZQString();
  // Copy of `s` (null is empty); `n` of -1 means up to the zero byte of `s`.
  ZQString(const char* s, int n = -1);
  ZQString(const ZQString& other);
  // Frees the heap block when the object owns one.
  virtual ~ZQString();

  // Usable capacity in bytes (the terminator needs no room of its own).
  virtual long capacity() const;
  long length() const { return len_; }
  long size() const { return len_; }
  // False only when an allocation failed and left no buffer.
  bool OK() const { return buf_ != nullptr; }
  const char* c_str() const { return buf_; }
  char* GetBuffer() { return buf_; }

  // Ensures room for `n` bytes plus the terminator; false when there is no
  // buffer or a string cannot grow that large.
  bool Allocate(long n);
  // Sets the length to `n` and terminates, unless `n` is above the capacity.
  void SetLength(long n);
  // Shortens to `n` bytes; false (and no change) when `n` is above the length.
  bool Truncate(long n);
  // Length 0; the buffer and capacity are kept.
  void clear();

  // Assignment replaces the content and rewinds the cursor.
  ZQString& operator=(const ZQString& other);
  ZQString& operator=(const char* s);
  ZQString& operator=(const std::string& s);
  ZQString& operator=(char c);
  // Copies the content, zero bytes included, into `out`.
  void AssignToStd(std::string& out) const;
  // Content becomes `n` copies of `c`.
  bool Set(char c, long n);
  // Content becomes `n` bytes of `s` from `off`; negative `n` means to the
  // zero byte of `s`. Nothing happens when that count is negative.
  bool CopyN(const char* s, long n = -1, long off = 0);
  // Content becomes at most `n` bytes of `s` from `off` (all when negative);
  // nothing happens when `s` is this object or `off` is not below its length.
  bool CopyN(const ZQString& s, long n = -1, long off = 0);
  // Clears, then AppendTo(s, from, stop).
  bool CopyTo(const ZQString& s, long from, char stop);
  // Narrows 16-bit text into code set `cs`; always true.
  bool Assign(const ZQWString& w, ZQ_CSET cs);
  // Narrows into the current locale's code set (0), the whole std string.
  bool Assign(const std::basic_string<unsigned short>& w);
  // Narrows `n` units of `w` (-1: up to its zero unit) into code set `cs`.
  bool Assign(const unsigned short* w, ZQ_CSET cs, int n = -1);

  ZQString& operator+=(const ZQString& s);
  ZQString& operator+=(const char* s);
  ZQString& operator+=(char c);
  ZQString operator+(const ZQString& s) const;
  ZQString operator+(const char* s) const;
  // Appends `n` bytes of `s` from `off`; negative `n` as for CopyN.
  bool Append(const char* s, long n = -1, long off = 0);
  bool Append(const ZQString& s, long n = -1, long off = 0);
  // Inserts `n` bytes of `s` from `off` at `pos`; negative `n` as for CopyN.
  bool Insert(long pos, const char* s, long n = -1, long off = 0);
  bool Insert(long pos, const ZQString& s, long n = -1, long off = 0);
  // Removes `count` bytes at `start` (count first); cuts at `start` when the
  // range reaches the end.
  void Remove(long count, long start);
  // Overwrites the byte at `pos` when `pos` is below the length.
  void Replace(long pos, char c);
  // Appends `n` copies of `c`; false only if there is no buffer.
  bool Pad(char c, long n);
  // Appends the bytes of `s` from `from` up to and including the first `stop`.
  bool AppendTo(const ZQString& s, long from, char stop);
  // Removes runs of `c` from the end (trailing), then from the start.
  void StripChars(bool leading, bool trailing, char c);
  // Byte-wise case conversion that leaves trail bytes of multibyte
  // characters of the current code page alone.
  void ToLower();
  void ToUpper();

  // Byte-wise comparisons, bytes ordered as unsigned values.
  bool operator==(const ZQString& s) const;
  bool operator==(const char* s) const;
  bool operator!=(const ZQString& s) const { return mycompare(s) != 0; }
  bool operator!=(const char* s) const { return mycompare(s) != 0; }
  bool operator<(const ZQString& s) const { return mycompare(s) < 0; }
  bool operator<(const char* s) const { return mycompare(s) < 0; }
  bool operator>(const ZQString& s) const { return mycompare(s) > 0; }
  bool operator>(const char* s) const { return mycompare(s) > 0; }
  bool operator<=(const ZQString& s) const { return mycompare(s) <= 0; }
  bool operator<=(const char* s) const { return mycompare(s) <= 0; }
  bool operator>=(const ZQString& s) const { return mycompare(s) >= 0; }
  bool operator>=(const char* s) const { return mycompare(s) >= 0; }

  // The byte at `i`, or 0 when `i` is outside the content.
  char operator[](long i) const;
  char operator[](int i) const;

  // Byte at the cursor (0 to 255) or -1 at the end; the cursor stays.
  int Peek() const;
  // Byte at the cursor (0 to 255), then advances; -1 at the end.
  int operator()() const;
  // Cursor = min(p, length); a negative `p` is taken as 0.
  void Seek(long p) const;
  void Rewind() const { cursor_ = 0; }
  void Previous() const;
  long Tell() const { return cursor_; }

  // Appends the escaped form of the content to `out`, quoted if `quote`.
  void Print(ZQString& out, bool quote) const;
  // Reads one token at the cursor of `src`, appends it unescaped; true when
  // a token (possibly empty and quoted) was found before the end of `src`.
  bool Extract(const ZQString& src);

 private:
  // Empty string with room for `n` bytes.
  explicit ZQString(long n);
  // Inline state: capacity 32, length 0, cursor 0; frees nothing.
  void Init();
  // Grows when `n` is at least the capacity.
  void allocmem(long n);
  // Moves the content to a fresh heap block big enough for `n`.
  void internal_allocmem(long n);
  int mycompare(const ZQString& s) const;
  int mycompare(const char* s) const;

  char* buf_;
  char inline_[36];
  int32_t cap_;
  int32_t len_;
  mutable int32_t cursor_;
  uint8_t owns_;
};

#endif  // ZQ_ZQSTRING_H
