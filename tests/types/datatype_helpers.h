// Shared helpers of the descriptor tests.
#ifndef ZQ_TESTS_TYPES_DATATYPE_HELPERS_H
#define ZQ_TESTS_TYPES_DATATYPE_HELPERS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace zqtest {

// The bytes as upper-case hex pairs separated by spaces.
inline std::string Hex(const void* data, size_t n) {
  static const char kDigits[] = "0123456789ABCDEF";
  const unsigned char* p = static_cast<const unsigned char*>(data);
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    if (i) s += ' ';
    s += kDigits[p[i] >> 4];
    s += kDigits[p[i] & 15];
  }
  return s;
}

// The bytes written as hex pairs separated by spaces.
inline std::string FromHex(const std::string& hex) {
  std::string b;
  for (size_t i = 0; i + 1 < hex.size(); i += 3) {
    b += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return b;
}

inline std::string Str(const char* s) { return s == nullptr ? std::string("<null>") : s; }

// A descriptor of type `t` with room for length `len` (0: the default) and
// scale `scale`.
inline ZQDType Type(DATATYPE t, long len = 0, short scale = 0) {
  ZQDType d(t);
  if (len > 0) {
    d.MaxLength(std::max(len, d.MaxLength()));
    d.MaxPrecision(std::max(len, d.MaxPrecision()));
    d.Length(len);
  }
  d.MinScale(-20);
  d.MaxScale(20);
  d.Scale(scale);
  return d;
}

inline std::string PrintOf(const ZQDType& d) {
  ZQString out;
  d.Print(out);
  return std::string(out.c_str(), static_cast<size_t>(out.length()));
}

inline ZQDType ReadBack(const std::string& text) {
  ZQString def(text.c_str(), static_cast<int>(text.size()));
  return ZQDType(def);
}

// Compares every property a property string carries; `negtype` also
// compares the negative type, which the string does not carry back.
inline void ExpectSameDescriptor(const ZQDType& a, const ZQDType& b, bool negtype = true) {
#define ZQ_SAME(f) EXPECT_EQ(a.f(), b.f()) << #f;
  ZQ_SAME(Type) ZQ_SAME(GenericType) ZQ_SAME(SettableFlags) ZQ_SAME(MeaningfulFlags)
  ZQ_SAME(Length) ZQ_SAME(MinLength) ZQ_SAME(MaxLength)
  ZQ_SAME(Precision) ZQ_SAME(MinPrecision) ZQ_SAME(MaxPrecision)
  ZQ_SAME(Scale) ZQ_SAME(MinScale) ZQ_SAME(MaxScale)
  ZQ_SAME(DecimalPlaces) ZQ_SAME(MinDecimalPlaces) ZQ_SAME(MaxDecimalPlaces)
  ZQ_SAME(PadChar) ZQ_SAME(DecimalSeparator) ZQ_SAME(ThousandSeparator)
  ZQ_SAME(MSBFirst) ZQ_SAME(Signed) ZQ_SAME(Nulls) ZQ_SAME(VariableLength)
  ZQ_SAME(SignStyle) ZQ_SAME(SignStyleMask) ZQ_SAME(SignPos) ZQ_SAME(SignPosMask)
  ZQ_SAME(NegTypeMask) ZQ_SAME(Align) ZQ_SAME(AlignMask)
  ZQ_SAME(AutoInc) ZQ_SAME(Currency) ZQ_SAME(Display) ZQ_SAME(RowVersion)
#undef ZQ_SAME
  EXPECT_EQ(Str(a.Alias()), Str(b.Alias()));
  EXPECT_EQ(Str(a.Picture()), Str(b.Picture()));
  if (negtype) {
    EXPECT_EQ(a.NegType(), b.NegType());
  }
}

}  // namespace zqtest

#endif  // ZQ_TESTS_TYPES_DATATYPE_HELPERS_H
