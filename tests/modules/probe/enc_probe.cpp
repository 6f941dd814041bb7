// Runs one code-set scenario in a fresh process and prints what it saw, for
// the tests that need a process of their own (module loading happens once
// per process, and so does SetLocale).
//
//   enc_probe load CS   converts with code set CS twice and reports its
//                       load state, load attempts and whether the results
//                       equal those of code set 0
//   enc_probe locale    reports GetLangID before and after SetLocale
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "text/codepage.h"
#include "zq/zqglob.h"

namespace {

int Load(ZQ_CSET cs) {
  // Bytes that differ between the code pages and the C locale.
  const char text[] = "A\xC4\xE4\xF0";
  unsigned short mine[16] = {}, oem[16] = {};
  int before = zq::EncodingState(cs);
  int first = ZQGlob::MBStoWCS(mine, text, 16, cs);
  int again = ZQGlob::MBStoWCS(mine, text, 16, cs);
  unsigned short unit = 0;
  int one = ZQGlob::MBtoWC(&unit, text + 1, 1, cs);
  int other = ZQGlob::MBStoWCS(oem, text, 16, ZQ_CSET_OEM);
  unsigned short oem_unit = 0;
  int oem_one = ZQGlob::MBtoWC(&oem_unit, text + 1, 1, ZQ_CSET_OEM);
  bool same = first == other && again == other && one == oem_one && unit == oem_unit &&
              std::memcmp(mine, oem, sizeof(mine)) == 0;
  bool valid = ZQGlob::ValidateEncoding(cs);
  std::printf("before=%d state=%d attempts=%d same_as_oem=%d valid=%d unit=%d\n", before,
              zq::EncodingState(cs), zq::EncodingLoadAttempts(cs), same ? 1 : 0,
              valid ? 1 : 0, one == 1 ? unit : -1);
  return 0;
}

int Locale() {
  int before = ZQGlob::GetLangID();
  ZQGlob::SetLocale();
  ZQGlob::SetLocale();
  const char* ctype = std::setlocale(LC_CTYPE, nullptr);
  std::printf("before=%d langid=%d ctype=%s maxchars=%d\n", before, ZQGlob::GetLangID(),
              ctype != nullptr ? ctype : "", ZQGlob::MBMaxChars(ZQ_CSET_OEM));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "load") == 0) {
    return Load(static_cast<ZQ_CSET>(std::atoi(argv[2])));
  }
  if (argc == 2 && std::strcmp(argv[1], "locale") == 0) return Locale();
  std::fprintf(stderr, "usage: enc_probe load CS | enc_probe locale\n");
  return 2;
}
