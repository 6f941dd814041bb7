// Storage operations shared by ZQString (bytes) and ZQWString (16-bit units).
//
// TextBuf is a view over a string object's own fields (buffer pointer, inline
// area, capacity, length, owns-heap flag); both string classes build one on
// the fly and delegate the storage work to it. Counts are in units of Ch.
#ifndef ZQ_TEXT_TEXTBUF_H
#define ZQ_TEXT_TEXTBUF_H

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "frame/memory.h"
#include "zq/strutil.h"

namespace zq {
namespace text {

// Initial capacity of every string, in units.
constexpr int32_t kInitialCapacity = 32;
// Spare units behind the capacity in every heap block.
constexpr int32_t kHeapSpare = 5;
// Largest capacity a string may reach; a larger need fails without change.
constexpr int64_t kMaxCapacity = 0x7FFFF000;

// Length of a zero-terminated run of units.
template <typename Ch>
inline int64_t ZLength(const Ch* s) {
  if (s == nullptr) return 0;
  const Ch* p = s;
  while (*p != 0) ++p;
  return p - s;
}

// Copies `n` units between blocks that do not overlap; short copies are done
// unit by unit, longer ones by the block-move routine.
template <typename Ch>
inline void CopyUnits(Ch* dst, const Ch* src, int64_t n) {
  if (n * static_cast<int64_t>(sizeof(Ch)) < 20) {
    for (int64_t i = 0; i < n; ++i) dst[i] = src[i];
  } else {
    movemem(dst, src, static_cast<long>(n * sizeof(Ch)));
  }
}

template <typename Ch>
class TextBuf {
 public:
  TextBuf(Ch*& buf, Ch* inl, int32_t& cap, int32_t& len, uint8_t& owns)
      : buf_(buf), inl_(inl), cap_(cap), len_(len), owns_(owns) {}

  // Inline state: capacity 32, length 0, not owning; frees nothing.
  void Init() {
    buf_ = inl_;
    inl_[0] = 0;
    cap_ = kInitialCapacity;
    len_ = 0;
    owns_ = 0;
  }

  // Releases the heap block if the object owns one.
  void Release() {
    if (owns_ && buf_ != nullptr) zq::MemFree(buf_);
    buf_ = nullptr;
    owns_ = 0;
  }

  // Moves the content to a fresh heap block whose capacity follows the
  // growth rule (double up to 1,024, then add 1,024) until it reaches `n`.
  // A need equal to the capacity still moves to a block of that capacity.
  // False when the need is out of range (nothing changes) or the block could
  // not be had (the buffer is then null and the content gone).
  bool Grow(int64_t n) {
    if (n > kMaxCapacity) return false;
    int64_t c = cap_;
    while (c < n && c <= 1024) c *= 2;
    if (c < n) c += (n - c + 1023) / 1024 * 1024;
    if (c > kMaxCapacity) return false;
    Ch* block = static_cast<Ch*>(
        zq::MemAlloc(static_cast<size_t>(c + kHeapSpare) * sizeof(Ch)));
    if (buf_ != nullptr && block != nullptr) {
      CopyUnits(block, buf_, len_);
      block[len_] = 0;
    } else if (block != nullptr) {
      block[0] = 0;
    }
    if (owns_ && buf_ != nullptr) zq::MemFree(buf_);
    buf_ = block;
    cap_ = static_cast<int32_t>(c);
    owns_ = 1;
    if (block == nullptr) len_ = 0;
    return block != nullptr;
  }

  // Grows when `n` is at least the capacity; true when the buffer can then
  // hold `n` units (plus the terminator in the heap block's spare units).
  bool Reserve(int64_t n) {
    if (n < 0) n = 0;
    if (buf_ == nullptr || n >= cap_) {
      if (!Grow(n)) return false;
    }
    return buf_ != nullptr && n <= cap_;
  }

  // True when `s` points into the object's current buffer.
  bool Aliases(const Ch* s) const {
    if (s == nullptr || buf_ == nullptr) return false;
    auto p = reinterpret_cast<uintptr_t>(s);
    auto b = reinterpret_cast<uintptr_t>(buf_);
    return p >= b && p < b + static_cast<uintptr_t>(cap_ + kHeapSpare) * sizeof(Ch);
  }

  void SetLen(int64_t n) {
    len_ = static_cast<int32_t>(n);
    buf_[len_] = 0;
  }

  // Content becomes the `n` units at `s`; room is reserved for n + 1.
  bool Assign(const Ch* s, int64_t n) {
    if (n < 0 || (s == nullptr && n > 0)) return false;
    if (Aliases(s)) {
      std::vector<Ch> copy(s, s + n);
      return Assign(copy.data(), n);
    }
    if (!Reserve(n + 1)) return false;
    CopyUnits(buf_, s, n);
    SetLen(n);
    return true;
  }

  // Appends the `n` units at `s`; room is reserved for the new length.
  bool Append(const Ch* s, int64_t n) {
    if (n < 0 || (s == nullptr && n > 0)) return false;
    if (Aliases(s)) {
      std::vector<Ch> copy(s, s + n);
      return Append(copy.data(), n);
    }
    int64_t total = static_cast<int64_t>(len_) + n;
    if (!Reserve(total)) return false;
    CopyUnits(buf_ + len_, s, n);
    SetLen(total);
    return true;
  }

  // Opens a gap of `n` units at `pos` (clamped to the content) and copies
  // the units at `s` into it.
  bool Insert(int64_t pos, const Ch* s, int64_t n) {
    if (n < 0 || (s == nullptr && n > 0)) return false;
    if (Aliases(s)) {
      std::vector<Ch> copy(s, s + n);
      return Insert(pos, copy.data(), n);
    }
    if (pos < 0) pos = 0;
    if (pos > len_) pos = len_;
    int64_t total = static_cast<int64_t>(len_) + n;
    if (!Reserve(total)) return false;
    int64_t tail = len_ - pos;
    if (tail > 0 && n > 0) {
      movemem(buf_ + pos + n, buf_ + pos, static_cast<long>(tail * sizeof(Ch)));
    }
    CopyUnits(buf_ + pos, s, n);
    SetLen(total);
    return true;
  }

  // Appends `n` copies of `c`; `n` below 1 does nothing.
  bool Pad(Ch c, int64_t n) {
    if (n < 1) return buf_ != nullptr;
    int64_t total = static_cast<int64_t>(len_) + n;
    if (!Reserve(total)) return false;
    for (int64_t i = len_; i < total; ++i) buf_[i] = c;
    SetLen(total);
    return true;
  }

  // Removes `count` units at `start`, or cuts at `start` when the range
  // reaches the end. Counts below 1 and starts outside the content do nothing.
  void Remove(int64_t count, int64_t start) {
    if (buf_ == nullptr || count < 1 || start < 0 || start >= len_) return;
    if (start + count < len_) {
      int64_t tail = len_ - (start + count);
      movemem(buf_ + start, buf_ + start + count,
              static_cast<long>(tail * sizeof(Ch)));
      SetLen(len_ - count);
    } else {
      SetLen(start);
    }
  }

  // Removes runs of `c`: first at the end (trailing), then at the start.
  void Strip(bool leading, bool trailing, Ch c) {
    if (buf_ == nullptr) return;
    int64_t n = len_;
    if (trailing) {
      while (n > 0 && buf_[n - 1] == c) --n;
      SetLen(n);
    }
    if (leading) {
      int64_t k = 0;
      while (k < n && buf_[k] == c) ++k;
      if (k > 0) Remove(k, 0);
    }
  }

 private:
  Ch*& buf_;
  Ch* inl_;
  int32_t& cap_;
  int32_t& len_;
  uint8_t& owns_;
};

// Three-way comparison of the `alen` units at `a` with the `blen` units at
// `b`: the common part first, then the longer one is greater. Units are
// compared as unsigned values.
template <typename Ch>
int CompareUnits(const Ch* a, int64_t alen, const Ch* b, int64_t blen) {
  using U = std::make_unsigned_t<Ch>;
  int64_t common = alen < blen ? alen : blen;
  for (int64_t i = 0; i < common; ++i) {
    U x = static_cast<U>(a[i]);
    U y = static_cast<U>(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  if (alen == blen) return 0;
  return alen > blen ? 1 : -1;
}

// Three-way comparison of the terminated content `a` with `s` up to the
// zero unit of `s` (null pointers are empty); the length of `a` is not
// consulted, the walk ends at the first difference.
template <typename Ch>
int CompareToZ(const Ch* a, const Ch* s) {
  using U = std::make_unsigned_t<Ch>;
  static const Ch kEmpty[1] = {0};
  if (a == nullptr) a = kEmpty;
  if (s == nullptr) s = kEmpty;
  for (int64_t i = 0;; ++i) {
    U x = static_cast<U>(a[i]);
    U y = static_cast<U>(s[i]);
    if (x != y) return x < y ? -1 : 1;
    if (y == 0) return 0;
  }
}

}  // namespace text
}  // namespace zq

#endif  // ZQ_TEXT_TEXTBUF_H
