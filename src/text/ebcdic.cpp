// Translation between EBCDIC code pages and ISO-8859-1 through generated
// tables.
#include "zq/ebcdic.h"

#include "zq_ebcdic.inc"

namespace {

int PageIndex(int codepage) {
  for (int i = 0; i < ebcdic::kPageCount; ++i) {
    if (ebcdic::kPages[i] == codepage) return i;
  }
  return -1;
}

bool Translate(char* buf, int n, const unsigned char* table) {
  if (table == nullptr || buf == nullptr || n < 0) return false;
  unsigned char* p = reinterpret_cast<unsigned char*>(buf);
  for (int i = 0; i < n; ++i) p[i] = table[p[i]];
  return true;
}

}  // namespace

bool ZQEbcdic::IsSupported(int codepage) { return PageIndex(codepage) >= 0; }

const unsigned char* ZQEbcdic::ToISOTable(int codepage) {
  int i = PageIndex(codepage);
  return i < 0 ? nullptr : ebcdic::kToLatin1[i];
}

const unsigned char* ZQEbcdic::FromISOTable(int codepage) {
  int i = PageIndex(codepage);
  return i < 0 ? nullptr : ebcdic::kFromLatin1[i];
}

bool ZQEbcdic::ToISO(char* buf, int n, int codepage) {
  return Translate(buf, n, ToISOTable(codepage));
}

bool ZQEbcdic::FromISO(char* buf, int n, int codepage) {
  return Translate(buf, n, FromISOTable(codepage));
}
