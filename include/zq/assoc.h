// ASSOCIATION_BASE: a small hash table from caller-owned string keys to
// fixed-size values, and the keyword scanners NextKeyword and FindKeyword.
#ifndef ZQ_ASSOC_H
#define ZQ_ASSOC_H

#include <string>

#include "zq/export.h"

class ZQString;

// The untyped engine beneath typed wrappers such as ASSOCIATION<T>. Keys are
// stored by pointer: the caller keeps each key's text alive and unchanged
// while it is in the table. Slots 0 to size()-1 are densely used; removal
// moves the last slot into the hole. Capacity must be at least 1.
class ZQ_EXPORT ASSOCIATION_BASE {
 protected:
  ASSOCIATION_BASE(unsigned int value_size, unsigned int capacity);
  // A table of capacity `count` holding keys[i] -> values + i * value_size.
  ASSOCIATION_BASE(const char* const* keys, const void* values, unsigned int value_size,
                   unsigned int count);
  // Deep copy of the arrays; the key pointers are shared with `other`.
  ASSOCIATION_BASE(const ASSOCIATION_BASE& other);
  ASSOCIATION_BASE& operator=(const ASSOCIATION_BASE& other);
  ~ASSOCIATION_BASE();

  // Frees the four arrays (delete_pointers) or only forgets them.
  void delete_pointers();
  void clear_pointers();

  unsigned int size() const { return count_; }
  // True when an array is missing (an allocation failed).
  bool operator!() const;

  // 1 when stored (an existing key's value is overwritten); 0 for a null key
  // or a failed growth.
  int insert(const char* key, const void* value);
  // 1 when the key was present and removed.
  int remove(const char* key);
  // The key's value, or null.
  void* find(const char* key) const;
  // The key's value, inserting a zero-filled one if absent; null for a null
  // key or a failed growth.
  void* reference(const char* key);
  int operator()(const char* key) const { return find(key) != nullptr ? 1 : 0; }
  void* operator[](const char* key) { return reference(key); }

  // Keys in slot order; null at the end.
  const char* first();
  const char* next();

  // Bucket of `key`: h = 0x5555, h = h * 2 ^ byte for each byte, mod capacity.
  unsigned int hash(const char* key) const;
  // Allocates the four arrays for the current capacity (buckets all -1).
  int allocate_array();
  // Doubles the capacity; 0 when allocation failed (the table is unchanged).
  int expand_array();

  unsigned int capacity_;
  unsigned int count_;
  int* buckets_;
  const char** keys_;
  int* links_;
  unsigned char* values_;
  unsigned int value_size_;
  unsigned int cursor_;

 private:
  int slot_of(const char* key, unsigned int bucket) const;
  void copy_from(const ASSOCIATION_BASE& other);
};

// Typed view of ASSOCIATION_BASE for trivially copyable values.
template <class T>
class ASSOCIATION : public ASSOCIATION_BASE {
 public:
  explicit ASSOCIATION(unsigned int capacity = 16) : ASSOCIATION_BASE(sizeof(T), capacity) {}
  ASSOCIATION(const char* const* keys, const T* values, unsigned int count)
      : ASSOCIATION_BASE(keys, values, sizeof(T), count) {}

  using ASSOCIATION_BASE::first;
  using ASSOCIATION_BASE::next;
  using ASSOCIATION_BASE::operator!;
  using ASSOCIATION_BASE::operator();
  using ASSOCIATION_BASE::remove;
  using ASSOCIATION_BASE::size;

  int insert(const char* key, const T& value) { return ASSOCIATION_BASE::insert(key, &value); }
  T* find(const char* key) const { return static_cast<T*>(ASSOCIATION_BASE::find(key)); }
  T* reference(const char* key) { return static_cast<T*>(ASSOCIATION_BASE::reference(key)); }
  T* operator[](const char* key) { return reference(key); }
  unsigned int capacity() const { return capacity_; }
};

// Reads from the read position of `text` up to the next "keyword =" and
// stores the keyword (trimmed) in `keyword`, leaving the position on the
// first character of the value. A line beginning with "." ends the keyword
// section; lines beginning with "#" are comments; a newline, ";", carriage
// return or tab starts the keyword afresh. False (position restored) when no
// keyword is found. `keyword` must have room for text.length() + 1 bytes.
ZQ_EXPORT bool NextKeyword(char* keyword, const ZQString& text);
// The same into a string that grows as needed.
ZQ_EXPORT bool NextKeyword(std::string& keyword, const ZQString& text);

// Index of the first entry of the null-terminated `list` equal to `word`
// without regard to case; -1 when the list or word is null or not found.
ZQ_EXPORT int FindKeyword(const char* const* list, const char* word);

#endif  // ZQ_ASSOC_H
