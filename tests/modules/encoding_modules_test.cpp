// Every encoding module against the C library's iconv, over all single
// bytes, all two-byte sequences of its lead bytes and all 16-bit units.
#include <dlfcn.h>
#include <errno.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/encmodule.h"

namespace {

using zqtest::FromLE;
using zqtest::LE;
using zqtest::U16;

struct ModuleCase {
  const char* word;
  const char* iconv_name;
  int max_bytes;
};

const ModuleCase kModules[] = {
    {"8859-2", "ISO-8859-2", 1}, {"8859-3", "ISO-8859-3", 1}, {"8859-4", "ISO-8859-4", 1},
    {"8859-5", "ISO-8859-5", 1}, {"8859-6", "ISO-8859-6", 1}, {"8859-7", "ISO-8859-7", 1},
    {"8859-8", "ISO-8859-8", 1}, {"8859-9", "ISO-8859-9", 1}, {"cp1250", "CP1250", 1},
    {"cp1251", "CP1251", 1},     {"cp1253", "CP1253", 1},     {"cp1254", "CP1254", 1},
    {"cp1255", "CP1255", 1},     {"cp1256", "CP1256", 1},     {"cp1257", "CP1257", 1},
    {"cp1258", "CP1258", 1},     {"shiftjis", "SHIFT_JIS", 2}, {"cp932", "CP932", 2},
    {"cp936", "CP936", 2},       {"cp949", "CP949", 2},       {"cp950", "CP950", 2},
};

void PrintTo(const ModuleCase& c, std::ostream* os) { *os << c.word; }

class EncodingModule : public ::testing::TestWithParam<ModuleCase> {
 protected:
  void SetUp() override {
    std::string path = std::string(ZQ_BINARY_DIR) + "/lib/zqenc" + GetParam().word + ".so";
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle_, nullptr) << dlerror();
    Find(&mbtowc_, "zq_mbtowc");
    Find(&mbstowcs_, "zq_mbstowcs");
    Find(&wctomb_, "zq_wctomb");
    Find(&wcstombs_, "zq_wcstombs");
    Find(&mblen_, "zq_mblen");
    Find(&isleadbyte_, "zq_isleadbyte");
    Find(&mbcurmax_, "zq_mbcurmax");
  }
  void TearDown() override {
    if (handle_ != nullptr) dlclose(handle_);
  }
  template <typename F>
  void Find(F* fn, const char* name) {
    *fn = reinterpret_cast<F>(dlsym(handle_, name));
    ASSERT_NE(*fn, nullptr) << name;
  }

  // What iconv makes of `bytes`: true and the unit when it is exactly one
  // character; `err` is EINVAL for a sequence cut short.
  bool OracleDecode(const std::string& bytes, unsigned short* u, int* err) {
    std::string out;
    if (!decode_.Convert(bytes, &out, err) || out.size() != 2) return false;
    *u = FromLE(out)[0];
    return true;
  }

  void* handle_ = nullptr;
  zq_mbtowc_fn mbtowc_;
  zq_mbstowcs_fn mbstowcs_;
  zq_wctomb_fn wctomb_;
  zq_wcstombs_fn wcstombs_;
  zq_mblen_fn mblen_;
  zq_isleadbyte_fn isleadbyte_;
  zq_mbcurmax_fn mbcurmax_;
  zqtest::Iconv decode_{"UTF-16LE", GetParam().iconv_name};
  zqtest::Iconv encode_{GetParam().iconv_name, "UTF-16LE"};
};

TEST_P(EncodingModule, DecodesEveryByteSequenceLikeIconv) {
  const ModuleCase& c = GetParam();
  EXPECT_EQ(mbcurmax_(), c.max_bytes);
  std::vector<int> leads;
  for (int b = 1; b < 256; ++b) {
    std::string one(1, static_cast<char>(b));
    unsigned short want = 0, got = 0;
    int err = 0;
    bool valid = OracleDecode(one, &want, &err);
    SCOPED_TRACE(::testing::Message() << "byte 0x" << std::hex << b);
    EXPECT_EQ(mbtowc_(&got, one.data(), 1), valid ? 1 : -1);
    EXPECT_EQ(got, want);
    EXPECT_EQ(mblen_(one.data(), 1), valid ? 1 : -1);
    // iconv reports a lead byte alone as an incomplete sequence.
    EXPECT_EQ(isleadbyte_(b) != 0, !valid && err == EINVAL);
    if (!valid && err == EINVAL) leads.push_back(b);
  }
  EXPECT_EQ(leads.empty(), c.max_bytes == 1);
  size_t pairs = 0;
  for (int lead : leads) {
    for (int trail = 0; trail < 256; ++trail) {
      const char seq[3] = {static_cast<char>(lead), static_cast<char>(trail), 0};
      unsigned short want = 0, got = 0;
      int err = 0;
      bool valid = trail != 0 && OracleDecode(std::string(seq, 2), &want, &err);
      SCOPED_TRACE(::testing::Message() << "bytes 0x" << std::hex << lead << " 0x" << trail);
      EXPECT_EQ(mbtowc_(&got, seq, 2), valid ? 2 : -1);
      EXPECT_EQ(got, want);
      EXPECT_EQ(mblen_(seq, 2), valid ? 2 : -1);
      EXPECT_EQ(mbtowc_(&got, seq, 1), -1);  // cut short
      pairs += valid;
    }
  }
  EXPECT_TRUE(c.max_bytes == 1 || pairs > 5000u);
}

TEST_P(EncodingModule, EncodesEveryUnitLikeIconv) {
  int mapped = 0;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) {
    std::string want;
    // A unit iconv can only write as several characters (a base letter and a
    // combining mark) has no form here.
    bool valid = (u < 0xD800 || u > 0xDFFF) && encode_.Convert(LE(U16(1, u)), &want) &&
                 !want.empty() && static_cast<int>(want.size()) <= GetParam().max_bytes;
    char got[4] = {0, 0, 0, 0};
    int len = wctomb_(got, static_cast<unsigned short>(u));
    ASSERT_EQ(len, valid ? static_cast<int>(want.size()) : -1) << "unit 0x" << std::hex << u;
    ASSERT_EQ(std::string(got, valid ? len : 0), valid ? want : "") << "unit 0x" << std::hex << u;
    mapped += valid;
  }
  EXPECT_GT(mapped, 100);
  char zero = 'x';
  EXPECT_EQ(wctomb_(&zero, 0), 1);
  EXPECT_EQ(zero, '\0');
}

// The string routines (whole texts are checked against iconv through the
// runtime's code-set table): counting, short destinations, and errors.
TEST_P(EncodingModule, StringRoutinesKeepTheirLimits) {
  std::string text;
  U16 units;
  for (int b = 1; b < 256; ++b) {
    unsigned short u;
    char one = static_cast<char>(b);
    if (mbtowc_(&u, &one, 1) == 1) {
      text += one;
      units += u;
    }
  }
  std::vector<unsigned short> small(11, 0xAAAA);
  EXPECT_EQ(mbstowcs_(nullptr, text.c_str(), 0), units.size());
  EXPECT_EQ(mbstowcs_(small.data(), text.c_str(), 10), 10u);  // filled exactly
  EXPECT_EQ(U16(small.data(), 11), units.substr(0, 10) + U16(1, 0xAAAA));
  std::string back(text.size() + 1, '\x55');
  EXPECT_EQ(wcstombs_(nullptr, units.c_str(), 0), text.size());
  ASSERT_EQ(wcstombs_(&back[0], units.c_str(), back.size()), text.size());
  EXPECT_EQ(back, text + '\0');

  // A two-byte character is never split at the end of the destination.
  unsigned short kanji = 0;
  if (GetParam().max_bytes == 2) {
    for (int i = 0x8140; i <= 0xFFFF && kanji == 0; ++i) {
      const char seq[2] = {static_cast<char>(i >> 8), static_cast<char>(i)};
      if (mbtowc_(&kanji, seq, 2) != 2) kanji = 0;
    }
    const unsigned short two[] = {kanji, kanji, 0};
    char buf[4] = {1, 1, 1, 1};
    EXPECT_EQ(wcstombs_(buf, two, 3), 2u);
    EXPECT_EQ(buf[2], 1);
  }

  // An invalid byte, a lead byte cut short by the terminator, or a unit
  // without a form stops the string routines.
  for (int b = 1; b < 256; ++b) {
    char one = static_cast<char>(b);
    unsigned short u, out[8];
    if (mbtowc_(&u, &one, 1) != -1) continue;
    const char bad[] = {'a', 'b', one, 0};
    EXPECT_EQ(mbstowcs_(out, bad, 8), ZQ_ENCODING_ERROR) << b;
    EXPECT_EQ(mbstowcs_(nullptr, bad, 0), ZQ_ENCODING_ERROR) << b;
  }
  const unsigned short no_form[] = {'a', 0xFFFF, 0};  // a noncharacter
  char out[8];
  EXPECT_EQ(wcstombs_(out, no_form, sizeof(out)), ZQ_ENCODING_ERROR);
  EXPECT_EQ(wctomb_(out, 0xD800), -1);
  EXPECT_EQ(isleadbyte_(-1), 0);
  EXPECT_EQ(isleadbyte_(256), 0);
  EXPECT_EQ(mbtowc_(nullptr, nullptr, 0), 0);
  EXPECT_EQ(mblen_("a", 0), -1);
}

INSTANTIATE_TEST_SUITE_P(AllModules, EncodingModule, ::testing::ValuesIn(kModules),
                         [](const ::testing::TestParamInfo<ModuleCase>& info) {
                           std::string name = info.param.word;
                           for (char& ch : name) ch = ch == '-' ? '_' : ch;
                           return name;
                         });

}  // namespace
