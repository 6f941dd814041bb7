// Display lengths: by the exact type, with pictures for the generic date,
// time and Boolean types.
#include <gtest/gtest.h>

#include <string>

#include "zq/datetime.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

TEST(DatatypeDisplay, WidthByType) {
  struct Case {
    const char* what;
    DATATYPE type;
    void (*act)(ZQDType&);
    long width;
  } cases[] = {
      {"decimal 7.2 signed", ZQDT_DECIMAL, [](ZQDType&) {}, 9},
      {"decimal unsigned no places", ZQDT_DECIMAL, [](ZQDType& d) { d.Signed(false); d.DecimalPlaces(0); }, 7},
      {"text precision 40", ZQDT_TEXT, [](ZQDType& d) { d.Precision(40); }, 40},
      {"text ignores sign", ZQDT_TEXT, [](ZQDType& d) { d.Signed(true); }, 16},
      {"name is measured like a number", ZQDT_NAME, [](ZQDType& d) { d.Signed(true); }, 17},
      {"boolean default", ZQDT_BOOLEAN, [](ZQDType&) {}, 5},
      {"boolean yes/no", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture("Yes.No"); }, 3},
      {"boolean longer false word", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture("J.Nein"); }, 4},
      {"boolean without point", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture("Wahr"); }, 4},
      {"boolean without picture", ZQDT_BOOLEAN, [](ZQDType& d) { d.Picture(""); }, 5},
      {"date default", ZQDT_DATE, [](ZQDType&) {}, 10},
      {"date without picture", ZQDT_DATE, [](ZQDType& d) { d.Picture(nullptr); }, 10},
      {"time default", ZQDT_TIME, [](ZQDType&) {}, 8},
      {"datetime default", ZQDT_DATETIME, [](ZQDType&) {}, 19},
      {"btrieve date by precision", ZQDT_BTRIEVE_DATE, [](ZQDType& d) { d.Picture("d-mon-yyyy"); }, 8},
      {"magic date by precision", ZQDT_MAGIC_DATE, [](ZQDType&) {}, 9},
      {"16-bit logical by precision", ZQDT_LOGICAL16, [](ZQDType& d) { d.Picture("Yes.No"); }, 1},
      {"zoned", ZQDT_ZONED, [](ZQDType&) {}, 18},
      {"comp without places", ZQDT_COMP, [](ZQDType&) {}, 10},
      // Pictures are measured on 27 September 1955 12:59:59.
      {"d-mon-yyyy", ZQDT_DATE, [](ZQDType& d) { d.Picture("d-mon-yyyy"); }, 11},
      {"month d, yyyy", ZQDT_DATE, [](ZQDType& d) { d.Picture("month d, yyyy"); }, 18},
      {"yyyy", ZQDT_DATE, [](ZQDType& d) { d.Picture("yyyy"); }, 4},
      {"H24:MM", ZQDT_TIME, [](ZQDType& d) { d.Picture("H24:MM"); }, 5},
      {"full date-time", ZQDT_DATETIME, [](ZQDType& d) { d.Picture("yyyy-mm-dd H24:MM:SS"); }, 19},
      {"dd.mm.yy", ZQDT_DATETIME, [](ZQDType& d) { d.Picture("dd.mm.yy"); }, 8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ZQDType d(c.type);
    c.act(d);
    EXPECT_EQ(d.CalculateDisplayLength(), c.width);
  }
}

}  // namespace
