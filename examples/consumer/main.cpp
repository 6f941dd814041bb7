// Builds a string with the library and prints its escaped form.
#include <cstdio>

#include "zq/zq750util.h"

int main() {
  ZQString s("tab\there");
  ZQString out;
  s.Print(out, true);
  std::printf("%s\n", out.c_str());
  return out == "'tab\\there'" ? 0 : 1;
}
