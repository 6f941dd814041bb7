// ZQDType::CalculateDisplayLength: the width of a displayed value.
#include <algorithm>
#include <cstring>

#include "types/datatype_table.h"
#include "zq/datetime.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

// Width of the sample moment 27 September 1955 12:59:59 printed by `mask`.
long SampleWidth(const char* mask) {
  ZQDateTime sample(27, 9, 1955, 12, 59, 59);
  ZQString out;
  sample.Print(out, mask);
  return out.length();
}

bool Differs(const char* picture, const char* default_mask) {
  return picture != nullptr && (default_mask == nullptr || std::strcmp(picture, default_mask) != 0);
}

}  // namespace

long ZQDType::CalculateDisplayLength() const {
  // The exact type decides, so the specific date and time encodings are
  // measured by their precision like numbers.
  const zq::types::CatalogueRow* row = zq::types::FindRow(type_);
  zq::types::DisplayRule rule = row == nullptr ? zq::types::DSP_NUMBER : row->display;
  const char* picture = Picture();
  switch (rule) {
    case zq::types::DSP_TEXT:
      return precision_;
    case zq::types::DSP_DATE:
      return Differs(picture, ZQDateTime::DefaultDateFormat()) ? SampleWidth(picture) : 10;
    case zq::types::DSP_TIME:
      return Differs(picture, ZQDateTime::DefaultTimeFormat()) ? SampleWidth(picture) : 8;
    case zq::types::DSP_DATETIME:
      return Differs(picture, ZQDateTime::DefaultDateTimeFormat()) ? SampleWidth(picture) : 19;
    case zq::types::DSP_BOOLEAN: {
      if (picture == nullptr || std::strcmp(picture, "True.False") == 0) return 5;
      const char* point = std::strchr(picture, '.');
      if (point == nullptr) return static_cast<long>(std::strlen(picture));
      long true_len = static_cast<long>(point - picture);
      long false_len = static_cast<long>(std::strlen(point + 1));
      return std::max(true_len, false_len);
    }
    case zq::types::DSP_NUMBER:
      break;
  }
  return static_cast<long>(precision_) + (dec_places_ != 0 ? 1 : 0) + (Signed() ? 1 : 0);
}
