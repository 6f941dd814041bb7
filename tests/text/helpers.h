// Helpers shared by the text and module tests; glibc's iconv is the oracle.
#ifndef ZQ_TESTS_TEXT_HELPERS_H
#define ZQ_TESTS_TEXT_HELPERS_H

#include <errno.h>
#include <iconv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace zqtest {

using U16 = std::basic_string<unsigned short>;

// Each byte widened to the unit of the same value.
inline U16 Widen(const std::string& s) {
  const auto* p = reinterpret_cast<const unsigned char*>(s.data());
  return U16(p, p + s.size());
}

// The content of a string object, embedded zeros included.
template <typename S>
auto Std(const S& s) {
  std::basic_string<std::remove_const_t<std::remove_pointer_t<decltype(s.c_str())>>> out;
  s.AssignToStd(out);
  return out;
}

// True while the content lives in the object's inline area.
template <typename S>
bool IsInline(const S& s) {
  auto p = reinterpret_cast<const char*>(s.c_str());
  auto b = reinterpret_cast<const char*>(&s);
  return p >= b && p < b + sizeof(S);
}

// Units as UTF-16LE bytes (the machine's own order) and back.
inline std::string LE(const U16& u) {
  return std::string(reinterpret_cast<const char*>(u.data()), u.size() * 2);
}
inline U16 FromLE(const std::string& b) {
  return U16(reinterpret_cast<const unsigned short*>(b.data()), b.size() / 2);
}

// The end of one of four 64 KiB regions, each followed by an inaccessible page.
inline char* GuardedEnd(int which) {
  static char* ends[4] = {};
  if (ends[which] == nullptr) {
    const size_t size = 1 << 16, page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    char* base = static_cast<char*>(mmap(nullptr, size + page, PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base + size, page, PROT_NONE);
    ends[which] = base + size;
  }
  return ends[which];
}

// `count` elements of `data` placed to end at guarded region `which`.
template <typename T>
T* PutGuarded(int which, const T* data, size_t count) {
  T* at = reinterpret_cast<T*>(GuardedEnd(which)) - count;
  std::memcpy(at, data, count * sizeof(T));
  return at;
}

// One iconv descriptor, converting one complete input at a time.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {
    EXPECT_TRUE(ok()) << to << " <- " << from;
  }
  ~Iconv() { if (ok()) iconv_close(cd_); }
  bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

  // Converts all of `in`; false (`err`: errno) when iconv rejects any of it.
  bool Convert(const std::string& in, std::string* out, int* err = nullptr) {
    if (!ok()) return false;
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);
    std::vector<char> buf(in.size() * 8 + 16);
    char* ip = const_cast<char*>(in.data());
    size_t il = in.size();
    char* op = buf.data();
    size_t ol = buf.size();
    bool good = iconv(cd_, &ip, &il, &op, &ol) != static_cast<size_t>(-1) &&
                iconv(cd_, nullptr, nullptr, &op, &ol) != static_cast<size_t>(-1);
    if (err != nullptr) *err = good ? 0 : errno;
    out->assign(buf.data(), op - buf.data());
    return good && il == 0;
  }

  // Converts input that must be valid.
  std::string operator()(const std::string& in) {
    std::string out;
    EXPECT_TRUE(Convert(in, &out));
    return out;
  }

 private:
  iconv_t cd_;
};

}  // namespace zqtest

#endif  // ZQ_TESTS_TEXT_HELPERS_H
