// Runs one scenario in a fresh process (modules load and SetLocale acts once
// per process) and prints what it saw: "load CS" converts with code set CS
// twice and compares with code set 0; "locale" calls SetLocale.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "text/codepage.h"
#include "zq/zqglob.h"

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "load") == 0) {
    const ZQ_CSET cs = static_cast<ZQ_CSET>(std::atoi(argv[2]));
    const char text[] = "A\xC4\xE4\xF0";  // bytes that differ between code pages
    unsigned short mine[16] = {}, oem[16] = {}, unit = 0, oem_unit = 0;
    const int before = zq::EncodingState(cs);
    const int first = ZQGlob::MBStoWCS(mine, text, 16, cs);
    const int again = ZQGlob::MBStoWCS(mine, text, 16, cs);
    const int one = ZQGlob::MBtoWC(&unit, text + 1, 1, cs);
    const int other = ZQGlob::MBStoWCS(oem, text, 16, ZQ_CSET_OEM);
    const bool same = first == other && again == other &&
                      one == ZQGlob::MBtoWC(&oem_unit, text + 1, 1, ZQ_CSET_OEM) &&
                      unit == oem_unit && std::memcmp(mine, oem, sizeof(mine)) == 0;
    const bool valid = ZQGlob::ValidateEncoding(cs);
    std::printf("before=%d state=%d attempts=%d same_as_oem=%d valid=%d unit=%d\n", before,
                zq::EncodingState(cs), zq::EncodingLoadAttempts(cs), same, valid,
                one == 1 ? unit : -1);
    return 0;
  }
  if (argc == 2 && std::strcmp(argv[1], "locale") == 0) {
    const int before = ZQGlob::GetLangID();
    ZQGlob::SetLocale();
    ZQGlob::SetLocale();
    const char* ctype = std::setlocale(LC_CTYPE, nullptr);
    std::printf("before=%d langid=%d ctype=%s maxchars=%d\n", before, ZQGlob::GetLangID(),
                ctype != nullptr ? ctype : "", ZQGlob::MBMaxChars(ZQ_CSET_OEM));
    return 0;
  }
  std::fprintf(stderr, "usage: enc_probe load CS | enc_probe locale\n");
  return 2;
}
