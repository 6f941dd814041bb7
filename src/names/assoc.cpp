// ASSOCIATION_BASE: chained hash table over densely packed slots.
#include "zq/assoc.h"

#include <cstdint>
#include <cstring>

#include "frame/memory.h"

ASSOCIATION_BASE::ASSOCIATION_BASE(unsigned int value_size, unsigned int capacity)
    : capacity_(capacity == 0 ? 1 : capacity),  // a zero modulus would divide by zero
      count_(0),
      buckets_(nullptr),
      keys_(nullptr),
      links_(nullptr),
      values_(nullptr),
      value_size_(value_size),
      cursor_(0) {
  allocate_array();
}

ASSOCIATION_BASE::ASSOCIATION_BASE(const char* const* keys, const void* values,
                                   unsigned int value_size, unsigned int count)
    : ASSOCIATION_BASE(value_size, count) {
  if (!*this || keys == nullptr) return;
  const unsigned char* v = static_cast<const unsigned char*>(values);
  for (unsigned int i = 0; i < count; ++i) {
    insert(keys[i], v != nullptr ? v + static_cast<std::size_t>(i) * value_size : nullptr);
  }
}

ASSOCIATION_BASE::ASSOCIATION_BASE(const ASSOCIATION_BASE& other)
    : capacity_(0),
      count_(0),
      buckets_(nullptr),
      keys_(nullptr),
      links_(nullptr),
      values_(nullptr),
      value_size_(0),
      cursor_(0) {
  copy_from(other);
}

ASSOCIATION_BASE& ASSOCIATION_BASE::operator=(const ASSOCIATION_BASE& other) {
  if (this != &other) {
    delete_pointers();
    copy_from(other);
  }
  return *this;
}

ASSOCIATION_BASE::~ASSOCIATION_BASE() { delete_pointers(); }

void ASSOCIATION_BASE::copy_from(const ASSOCIATION_BASE& other) {
  capacity_ = other.capacity_;
  count_ = other.count_;
  value_size_ = other.value_size_;
  cursor_ = 0;
  if (!allocate_array() || !other) {
    count_ = 0;
    return;
  }
  std::size_t n = capacity_;
  std::memcpy(buckets_, other.buckets_, n * sizeof(int));
  std::memcpy(keys_, other.keys_, n * sizeof(const char*));
  std::memcpy(links_, other.links_, n * sizeof(int));
  if (value_size_ != 0) std::memcpy(values_, other.values_, n * value_size_);
}

void ASSOCIATION_BASE::delete_pointers() {
  zq::MemFree(buckets_);
  zq::MemFree(keys_);
  zq::MemFree(links_);
  zq::MemFree(values_);
  clear_pointers();
}

void ASSOCIATION_BASE::clear_pointers() {
  buckets_ = nullptr;
  keys_ = nullptr;
  links_ = nullptr;
  values_ = nullptr;
}

bool ASSOCIATION_BASE::operator!() const {
  return buckets_ == nullptr || keys_ == nullptr || links_ == nullptr || values_ == nullptr;
}

unsigned int ASSOCIATION_BASE::hash(const char* key) const {
  uint32_t h = 0x5555;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(key); *p != 0; ++p) {
    h = (h * 2) ^ *p;
  }
  return h % capacity_;
}

int ASSOCIATION_BASE::allocate_array() {
  std::size_t n = capacity_;
  buckets_ = static_cast<int*>(zq::MemAlloc(n * sizeof(int)));
  keys_ = static_cast<const char**>(zq::MemAlloc(n * sizeof(const char*)));
  links_ = static_cast<int*>(zq::MemAlloc(n * sizeof(int)));
  // At least one byte, so that a table of empty values still has its block.
  values_ = static_cast<unsigned char*>(zq::MemAlloc(n * value_size_ + 1));
  if (!*this) {
    delete_pointers();
    return 0;
  }
  for (std::size_t i = 0; i < n; ++i) buckets_[i] = -1;
  return 1;
}

int ASSOCIATION_BASE::expand_array() {
  if (!*this || capacity_ > 0x7FFFFFFFu) return 0;
  int* old_buckets = buckets_;
  const char** old_keys = keys_;
  int* old_links = links_;
  unsigned char* old_values = values_;
  unsigned int old_capacity = capacity_;
  capacity_ = old_capacity * 2;
  if (!allocate_array()) {
    buckets_ = old_buckets;
    keys_ = old_keys;
    links_ = old_links;
    values_ = old_values;
    capacity_ = old_capacity;
    return 0;
  }
  std::memcpy(keys_, old_keys, count_ * sizeof(const char*));
  if (value_size_ != 0) {
    std::memcpy(values_, old_values, static_cast<std::size_t>(count_) * value_size_);
  }
  for (unsigned int i = 0; i < count_; ++i) {
    unsigned int b = hash(keys_[i]);
    links_[i] = buckets_[b];
    buckets_[b] = static_cast<int>(i);
  }
  zq::MemFree(old_buckets);
  zq::MemFree(old_keys);
  zq::MemFree(old_links);
  zq::MemFree(old_values);
  return 1;
}

int ASSOCIATION_BASE::slot_of(const char* key, unsigned int bucket) const {
  for (int i = buckets_[bucket]; i >= 0; i = links_[i]) {
    const char* k = keys_[i];
    if (k[0] == key[0] && std::strcmp(k, key) == 0) return i;
  }
  return -1;
}

int ASSOCIATION_BASE::insert(const char* key, const void* value) {
  if (key == nullptr || !*this) return 0;
  unsigned int b = hash(key);
  int slot = slot_of(key, b);
  if (slot < 0) {
    if (count_ >= capacity_) {
      if (!expand_array()) return 0;
      b = hash(key);
    }
    slot = static_cast<int>(count_++);
    keys_[slot] = key;
    links_[slot] = buckets_[b];
    buckets_[b] = slot;
  }
  unsigned char* dst = values_ + static_cast<std::size_t>(slot) * value_size_;
  if (value != nullptr) {
    std::memmove(dst, value, value_size_);
  } else {
    std::memset(dst, 0, value_size_);
  }
  return 1;
}

int ASSOCIATION_BASE::remove(const char* key) {
  if (key == nullptr || !*this) return 0;
  unsigned int b = hash(key);
  int* link = &buckets_[b];
  while (*link >= 0) {
    const char* k = keys_[*link];
    if (k[0] == key[0] && std::strcmp(k, key) == 0) break;
    link = &links_[*link];
  }
  if (*link < 0) return 0;
  int slot = *link;
  *link = links_[slot];
  int last = static_cast<int>(count_) - 1;
  if (slot != last) {
    // Fill the hole with the last slot and redirect whatever pointed at it.
    int* ref = &buckets_[hash(keys_[last])];
    while (*ref != last) ref = &links_[*ref];
    *ref = slot;
    keys_[slot] = keys_[last];
    links_[slot] = links_[last];
    std::memcpy(values_ + static_cast<std::size_t>(slot) * value_size_,
                values_ + static_cast<std::size_t>(last) * value_size_, value_size_);
  }
  --count_;
  return 1;
}

void* ASSOCIATION_BASE::find(const char* key) const {
  if (key == nullptr || !*this) return nullptr;
  int slot = slot_of(key, hash(key));
  return slot < 0 ? nullptr : values_ + static_cast<std::size_t>(slot) * value_size_;
}

void* ASSOCIATION_BASE::reference(const char* key) {
  void* v = find(key);
  if (v != nullptr || key == nullptr) return v;
  if (!insert(key, nullptr)) return nullptr;
  return find(key);
}

const char* ASSOCIATION_BASE::first() {
  cursor_ = 0;
  return next();
}

const char* ASSOCIATION_BASE::next() {
  if (keys_ == nullptr || cursor_ >= count_) return nullptr;
  return keys_[cursor_++];
}
