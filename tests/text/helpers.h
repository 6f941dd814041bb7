// Helpers shared by the text and module tests: 16-bit strings, snapshots of
// string objects, and glibc's iconv as the oracle for code pages and UTF-8.
#ifndef ZQ_TESTS_TEXT_HELPERS_H
#define ZQ_TESTS_TEXT_HELPERS_H

#include <errno.h>
#include <iconv.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace zqtest {

using U16 = std::basic_string<unsigned short>;

// Each byte widened to the unit of the same value.
inline U16 Widen(const std::string& s) {
  U16 out;
  for (char c : s) out += static_cast<unsigned char>(c);
  return out;
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
  U16 out(b.size() / 2, 0);
  std::memcpy(&out[0], b.data(), out.size() * 2);
  return out;
}

// One iconv descriptor, converting one complete input at a time.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {
    EXPECT_TRUE(ok()) << to << " <- " << from;
  }
  ~Iconv() {
    if (ok()) iconv_close(cd_);
  }
  bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

  // Converts all of `in`, flushing any held state; false when iconv rejects
  // any of it (`err` gets errno: EINVAL for a sequence cut short).
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
