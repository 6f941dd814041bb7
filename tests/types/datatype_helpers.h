// Shared helpers of the descriptor tests.
#ifndef ZQ_TESTS_TYPES_DATATYPE_HELPERS_H
#define ZQ_TESTS_TYPES_DATATYPE_HELPERS_H

#include <gtest/gtest.h>

#include <string>

#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace zqtest {

inline std::string Str(const char* s) { return s == nullptr ? std::string("<null>") : s; }

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
  EXPECT_EQ(a.Type(), b.Type());
  EXPECT_EQ(a.GenericType(), b.GenericType());
  EXPECT_EQ(Str(a.Alias()), Str(b.Alias()));
  EXPECT_EQ(Str(a.Picture()), Str(b.Picture()));
  EXPECT_EQ(a.Length(), b.Length());
  EXPECT_EQ(a.MinLength(), b.MinLength());
  EXPECT_EQ(a.MaxLength(), b.MaxLength());
  EXPECT_EQ(a.Precision(), b.Precision());
  EXPECT_EQ(a.MinPrecision(), b.MinPrecision());
  EXPECT_EQ(a.MaxPrecision(), b.MaxPrecision());
  EXPECT_EQ(a.Scale(), b.Scale());
  EXPECT_EQ(a.MinScale(), b.MinScale());
  EXPECT_EQ(a.MaxScale(), b.MaxScale());
  EXPECT_EQ(a.DecimalPlaces(), b.DecimalPlaces());
  EXPECT_EQ(a.MinDecimalPlaces(), b.MinDecimalPlaces());
  EXPECT_EQ(a.MaxDecimalPlaces(), b.MaxDecimalPlaces());
  EXPECT_EQ(a.PadChar(), b.PadChar());
  EXPECT_EQ(a.DecimalSeparator(), b.DecimalSeparator());
  EXPECT_EQ(a.ThousandSeparator(), b.ThousandSeparator());
  EXPECT_EQ(a.MSBFirst(), b.MSBFirst());
  EXPECT_EQ(a.Signed(), b.Signed());
  EXPECT_EQ(a.Nulls(), b.Nulls());
  EXPECT_EQ(a.VariableLength(), b.VariableLength());
  EXPECT_EQ(a.SettableFlags(), b.SettableFlags());
  EXPECT_EQ(a.MeaningfulFlags(), b.MeaningfulFlags());
  EXPECT_EQ(a.SignStyle(), b.SignStyle());
  EXPECT_EQ(a.SignStyleMask(), b.SignStyleMask());
  EXPECT_EQ(a.SignPos(), b.SignPos());
  EXPECT_EQ(a.SignPosMask(), b.SignPosMask());
  if (negtype) {
    EXPECT_EQ(a.NegType(), b.NegType());
  }
  EXPECT_EQ(a.NegTypeMask(), b.NegTypeMask());
  EXPECT_EQ(a.Align(), b.Align());
  EXPECT_EQ(a.AlignMask(), b.AlignMask());
  EXPECT_EQ(a.AutoInc(), b.AutoInc());
  EXPECT_EQ(a.Currency(), b.Currency());
  EXPECT_EQ(a.Display(), b.Display());
  EXPECT_EQ(a.RowVersion(), b.RowVersion());
}

}  // namespace zqtest

#endif  // ZQ_TESTS_TYPES_DATATYPE_HELPERS_H
