// The Unicode attribute word of each 16-bit unit.
#include "zq/zqglob.h"
#include "zq_ucattrs.inc"

unsigned short ZQGlob::GetUCAttrs(unsigned short u) {
  return ucattrs::kAttrPage[ucattrs::kAttrIndex[u >> 8]][u & 0xFF];
}
