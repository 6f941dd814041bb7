// ZQWString: the library's growable string of 16-bit units.
//
// The twin of ZQString with every byte read as an `unsigned short` unit
// (UTF-16 text as the library uses it, never the platform's wchar_t).
// Positions, counts and capacities are units; `long` is 32-bit. Units
// compare as unsigned 16-bit values.
#ifndef ZQ_ZQWSTRING_H
#define ZQ_ZQWSTRING_H

#include <cstdint>
#include <string>

#include "zq/common.h"
#include "zq/export.h"

class ZQString;

class ZQ_EXPORT ZQWString {
 public:
  // Empty string, capacity 32 units, inline.
  ZQWString();
  // Copy of `s` (null is empty); `n` of -1 means up to the zero unit of `s`.
  ZQWString(const unsigned short* s, int n = -1);
  ZQWString(const ZQWString& other);
  // Frees the heap block when the object owns one.
  virtual ~ZQWString();

  // Usable capacity in units (the terminator needs no room of its own).
  virtual long capacity() const;
  long length() const { return len_; }
  long size() const { return len_; }
  // False only when an allocation failed and left no buffer.
  bool OK() const { return buf_ != nullptr; }
  const unsigned short* c_str() const { return buf_; }
  unsigned short* GetBuffer() { return buf_; }

  // Ensures room for `n` units plus the terminator; false when there is no
  // buffer or a string cannot grow that large.
  bool Allocate(long n);
  // Sets the length to `n` and terminates, unless `n` is above the capacity.
  void SetLength(long n);
  // Shortens to `n` units; false (and no change) when `n` is above the length.
  bool Truncate(long n);
  // Length 0; the buffer and capacity are kept.
  void clear();

  // Assignment replaces the content and rewinds the cursor.
  ZQWString& operator=(const ZQWString& other);
  ZQWString& operator=(const unsigned short* s);
  ZQWString& operator=(const std::basic_string<unsigned short>& s);
  ZQWString& operator=(unsigned short u);
  // Copies the content, zero units included, into `out`.
  void AssignToStd(std::basic_string<unsigned short>& out) const;
  // Content becomes `n` copies of `u`.
  bool Set(unsigned short u, long n);
  // Content becomes `n` units of `s` from `off`; negative `n` means to the
  // zero unit of `s`. Nothing happens when that count is negative.
  bool CopyN(const unsigned short* s, long n = -1, long off = 0);
  // Content becomes at most `n` units of `s` from `off` (all when negative);
  // nothing happens when `s` is this object or `off` is not below its length.
  bool CopyN(const ZQWString& s, long n = -1, long off = 0);
  // Clears, then AppendTo(s, from, stop).
  bool CopyTo(const ZQWString& s, long from, unsigned short stop);
  // Widens text of code set `cs`; always true.
  bool Assign(const ZQString& s, ZQ_CSET cs);
  // Widens from the current locale's code set (0), the whole std string.
  bool Assign(const std::string& s);
  // Widens `n` bytes of `s` (-1: up to its zero byte) from code set `cs`.
  bool Assign(const char* s, ZQ_CSET cs, int n = -1);

  ZQWString& operator+=(const ZQWString& s);
  ZQWString& operator+=(const unsigned short* s);
  ZQWString& operator+=(unsigned short u);
  ZQWString operator+(const ZQWString& s) const;
  ZQWString operator+(const unsigned short* s) const;
  // Appends `n` units of `s` from `off`; negative `n` as for CopyN.
  bool Append(const unsigned short* s, long n = -1, long off = 0);
  bool Append(const ZQWString& s, long n = -1, long off = 0);
  // Inserts `n` units of `s` from `off` at `pos`; negative `n` as for CopyN.
  bool Insert(long pos, const unsigned short* s, long n = -1, long off = 0);
  bool Insert(long pos, const ZQWString& s, long n = -1, long off = 0);
  // Removes `count` units at `start` (count first); cuts at `start` when the
  // range reaches the end.
  void Remove(long count, long start);
  // Overwrites the unit at `pos` when `pos` is below the length.
  void Replace(long pos, unsigned short u);
  // Appends `n` copies of `u`; false only if there is no buffer.
  bool Pad(unsigned short u, long n);
  // Appends the units of `s` from `from` up to and including the first `stop`.
  bool AppendTo(const ZQWString& s, long from, unsigned short stop);
  // Removes runs of `u` from the end (trailing), then from the start.
  void StripChars(bool leading, bool trailing, unsigned short u);
  // Unit-wise case conversion with towlower/towupper.
  void ToLower();
  void ToUpper();

  // Unit-wise comparisons, units ordered as unsigned 16-bit values.
  bool operator==(const ZQWString& s) const;
  bool operator==(const unsigned short* s) const;
  bool operator!=(const ZQWString& s) const { return mycompare(s) != 0; }
  bool operator!=(const unsigned short* s) const { return mycompare(s) != 0; }
  bool operator<(const ZQWString& s) const { return mycompare(s) < 0; }
  bool operator<(const unsigned short* s) const { return mycompare(s) < 0; }
  bool operator>(const ZQWString& s) const { return mycompare(s) > 0; }
  bool operator>(const unsigned short* s) const { return mycompare(s) > 0; }
  bool operator<=(const ZQWString& s) const { return mycompare(s) <= 0; }
  bool operator<=(const unsigned short* s) const { return mycompare(s) <= 0; }
  bool operator>=(const ZQWString& s) const { return mycompare(s) >= 0; }
  bool operator>=(const unsigned short* s) const { return mycompare(s) >= 0; }

  // The unit at `i`, or 0 when `i` is outside the content.
  unsigned short operator[](long i) const;
  unsigned short operator[](int i) const;

  // Unit at the cursor or -1 at the end; the cursor stays.
  int Peek() const;
  // Unit at the cursor, then advances; -1 at the end.
  int operator()() const;
  // Cursor = min(p, length); a negative `p` is taken as 0.
  void Seek(long p) const;
  void Rewind() const { cursor_ = 0; }
  void Previous() const;
  long Tell() const { return cursor_; }

  // Appends the escaped form of the content to `out`, quoted if `quote`.
  void Print(ZQWString& out, bool quote) const;
  // Reads one token at the cursor of `src`, appends it unescaped; true when
  // a token (possibly empty and quoted) was found before the end of `src`.
  bool Extract(const ZQWString& src);

 private:
  // Empty string with room for `n` units.
  explicit ZQWString(long n);
  // Inline state: capacity 32, length 0, cursor 0; frees nothing.
  void Init();
  // Grows when `n` is at least the capacity.
  void allocmem(long n);
  // Moves the content to a fresh heap block big enough for `n`.
  void internal_allocmem(long n);
  int mycompare(const ZQWString& s) const;
  int mycompare(const unsigned short* s) const;

  unsigned short* buf_;
  unsigned short inline_[34];
  int32_t cap_;
  int32_t len_;
  mutable int32_t cursor_;
  uint8_t owns_;
};

#endif  // ZQ_ZQWSTRING_H
