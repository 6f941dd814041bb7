// Fuzz target: reading arbitrary text by an arbitrary date and time mask,
// printing by that mask, and reading text of unknown form must neither crash
// nor read or write out of bounds; a text that does not fit its mask leaves
// the value unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "zq/datetime.h"
#include "zq/zqstring.h"

namespace {

// The value printed in a fixed form, to tell whether a read changed it.
std::string Fixed(const ZQDateTime& d) {
  ZQString s;
  d.Print(s, "yyyy-mm-dd H24:MM:SS");
  return std::string(s.c_str(), s.length());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 4096) return 0;
  // The mask comes first, up to a zero byte; the text is the rest.
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t cut = input.find('\0');
  const std::string mask = input.substr(0, cut);
  const std::string text = cut == std::string::npos ? std::string() : input.substr(cut + 1);

  ZQDateTime d(12, 7, 1999, 13, 45, 30);
  const std::string before = Fixed(d);
  const bool read = d.Convert(text.c_str(), mask.c_str());
  if (!read && Fixed(d) != before) std::abort();
  ZQDateTime::Validate(text.c_str(), mask.c_str());
  ZQString printed;
  d.Print(printed, mask.c_str());

  ZQDateTime unknown(3, 3, 2003);
  const std::string kept = Fixed(unknown);
  if (!ZQDateTime::CDate(text.c_str(), unknown) && Fixed(unknown) != kept) std::abort();
  return 0;
}
