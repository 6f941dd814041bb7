// Character-class tests over the Unicode attribute word.
#include "zq/zqglob.h"

namespace {

bool Has(unsigned short u, unsigned bits) { return (ZQGlob::GetUCAttrs(u) & bits) != 0; }

}  // namespace

bool ZQGlob::IsUCSpace(unsigned short u) {
  // Tab, line feed and carriage return count as space although Unicode
  // files them as controls; vertical tab and form feed do not.
  return Has(u, UC_SPACE) || u == 10 || u == 13 || u == 9;
}

bool ZQGlob::IsUCUpper(unsigned short u) { return Has(u, UC_UPPER); }
bool ZQGlob::IsUCLower(unsigned short u) { return Has(u, UC_LOWER); }
bool ZQGlob::IsUCTitle(unsigned short u) { return Has(u, UC_TITLE); }
bool ZQGlob::IsUCAlpha(unsigned short u) { return Has(u, UC_ALPHA); }
bool ZQGlob::IsUCDigit(unsigned short u) { return Has(u, UC_DIGIT); }
bool ZQGlob::IsUCPunct(unsigned short u) { return Has(u, UC_PUNCT); }
bool ZQGlob::IsUCAlnum(unsigned short u) { return Has(u, UC_ALPHA | UC_DIGIT); }
bool ZQGlob::IsUCCntrl(unsigned short u) { return Has(u, UC_CNTRL); }
bool ZQGlob::IsUCXDigit(unsigned short u) { return Has(u, UC_XDIGIT); }
