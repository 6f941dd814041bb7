// An encoding module that lacks six of its seven entry points: the runtime
// must refuse it.
#include "zq/encmodule.h"

int zq_mbtowc(unsigned short* out, const char* in, size_t n) {
  if (in == nullptr) return 0;
  if (n == 0) return -1;
  if (out != nullptr) *out = static_cast<unsigned char>(*in);
  return *in == '\0' ? 0 : 1;
}
