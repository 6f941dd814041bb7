// Every encoding module against the C library's iconv, over all single
// bytes, all two-byte sequences of its lead bytes and all 16-bit units.
#include <dlfcn.h>
#include <errno.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/encmodule.h"

namespace {

using zqtest::U16;

// The code pages by their iconv names.
const char* const kCodePages[] = {
    "ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-5", "ISO-8859-6", "ISO-8859-7",
    "ISO-8859-8", "ISO-8859-9", "CP1250",     "CP1251",     "CP1253",     "CP1254",
    "CP1255",     "CP1256",     "CP1257",     "CP1258",     "SHIFT_JIS",  "CP932",
    "CP936",      "CP949",      "CP950"};

// The module word of a code page: "ISO-8859-2" -> "8859-2", "SHIFT_JIS" -> "shiftjis".
std::string Word(std::string name) {
  if (name.rfind("ISO-", 0) == 0) name.erase(0, 4);
  name.erase(std::remove(name.begin(), name.end(), '_'), name.end());
  std::transform(name.begin(), name.end(), name.begin(), ::tolower);
  return name;
}

class EncodingModule : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    std::string path = std::string(ZQ_BINARY_DIR) + "/lib/zqenc" + Word(GetParam()) + ".so";
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

  // True and iconv's unit when `bytes` are exactly one character; `err` is
  // EINVAL for a sequence cut short.
  bool OracleDecode(const std::string& bytes, unsigned short* u, int* err) {
    std::string out;
    if (!decode_.Convert(bytes, &out, err) || out.size() != 2) return false;
    *u = zqtest::FromLE(out)[0];
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
  zqtest::Iconv decode_{"UTF-16LE", GetParam()};
  zqtest::Iconv encode_{GetParam(), "UTF-16LE"};
};

// Single bytes, then all pairs after each lead byte; the string routines
// over every valid single byte count, fill short destinations exactly and
// stop at invalid bytes.
TEST_P(EncodingModule, DecodesLikeIconv) {
  std::string text;
  U16 units;
  int leads = 0, pairs = 0;
  for (int b = 1; b < 256; ++b) {
    const std::string one(1, static_cast<char>(b));
    unsigned short want = 0, got = 0;
    int err = 0;
    const bool valid = OracleDecode(one, &want, &err);
    const bool lead = !valid && err == EINVAL;  // iconv finds a lead byte alone cut short
    SCOPED_TRACE(::testing::Message() << "byte 0x" << std::hex << b);
    EXPECT_EQ(mbtowc_(&got, one.data(), 1), valid ? 1 : -1);
    EXPECT_EQ(got, want);
    EXPECT_EQ(mblen_(one.data(), 1), valid ? 1 : -1);
    EXPECT_EQ(isleadbyte_(b) != 0, lead);
    if (valid) {
      text += one;
      units += got;
    } else {  // an invalid byte, or a lead byte cut short by the terminator
      unsigned short dst[8];
      EXPECT_EQ(mbstowcs_(dst, ("ab" + one).c_str(), 8), ZQ_ENCODING_ERROR);
      EXPECT_EQ(mbstowcs_(nullptr, ("ab" + one).c_str(), 0), ZQ_ENCODING_ERROR);
    }
    leads += lead;
    for (int trail = 0; lead && trail < 256; ++trail) {
      const std::string seq = one + static_cast<char>(trail);
      want = got = 0;
      const bool ok = trail != 0 && OracleDecode(seq, &want, &err);
      SCOPED_TRACE(::testing::Message() << "trail 0x" << std::hex << trail);
      EXPECT_EQ(mbtowc_(&got, seq.c_str(), 2), ok ? 2 : -1);
      EXPECT_EQ(got, want);
      EXPECT_EQ(mblen_(seq.c_str(), 2), ok ? 2 : -1);
      EXPECT_EQ(mbtowc_(&got, seq.c_str(), 1), -1);  // cut short
      pairs += ok;
    }
  }
  EXPECT_EQ(mbcurmax_(), leads > 0 ? 2 : 1);
  EXPECT_TRUE(leads == 0 || pairs > 5000);
  std::vector<unsigned short> small(11, 0xAAAA);
  EXPECT_EQ(mbstowcs_(nullptr, text.c_str(), 0), units.size());
  EXPECT_EQ(mbstowcs_(small.data(), text.c_str(), 10), 10u);
  EXPECT_EQ(U16(small.data(), 11), units.substr(0, 10) + U16(1, 0xAAAA));
  EXPECT_EQ(mbtowc_(nullptr, nullptr, 0), 0);
  EXPECT_EQ(mblen_("a", 0), -1);
  EXPECT_FALSE(isleadbyte_(-1) || isleadbyte_(256));

  std::string back(text.size() + 1, '\x55');
  EXPECT_EQ(wcstombs_(nullptr, units.c_str(), 0), text.size());
  ASSERT_EQ(wcstombs_(&back[0], units.c_str(), back.size()), text.size());
  EXPECT_EQ(back, text + '\0');
}

// Every unit, then the string routine's limits: a unit without a form stops
// it, and a two-byte character is never split at the end of the destination.
TEST_P(EncodingModule, EncodesLikeIconv) {
  int mapped = 0;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) {
    std::string want;
    // A unit iconv can only write as several characters (a base letter and a
    // combining mark) has no form here.
    bool valid = (u < 0xD800 || u > 0xDFFF) && encode_.Convert(zqtest::LE(U16(1, u)), &want) &&
                 !want.empty() && static_cast<int>(want.size()) <= mbcurmax_();
    char got[4] = {0, 0, 0, 0};
    int len = wctomb_(got, static_cast<unsigned short>(u));
    ASSERT_EQ(len, valid ? static_cast<int>(want.size()) : -1) << "unit 0x" << std::hex << u;
    ASSERT_EQ(std::string(got, valid ? len : 0), valid ? want : "") << "unit 0x" << std::hex << u;
    mapped += valid;
  }
  EXPECT_GT(mapped, 100);
  char out[8] = {'x', 1, 1, 1};
  EXPECT_EQ(wctomb_(out, 0), 1);
  EXPECT_EQ(out[0], '\0');
  const unsigned short no_form[] = {'a', 0xFFFF, 0};  // a noncharacter
  EXPECT_EQ(wcstombs_(out, no_form, sizeof(out)), ZQ_ENCODING_ERROR);
  if (mbcurmax_() == 2) {
    const unsigned short two[] = {0x4E00, 0x4E00, 0};  // a CJK ideograph every one of them has
    EXPECT_EQ(wcstombs_(out, two, 3), 2u);
    EXPECT_EQ(out[2], 1);
  }
}

INSTANTIATE_TEST_SUITE_P(AllModules, EncodingModule, ::testing::ValuesIn(kCodePages),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           std::string name = Word(info.param);
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
