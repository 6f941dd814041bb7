// ZQGlob: the library's free-standing helpers, gathered as static members.
//
// The members come in three groups, each declared in its own file under
// zq/glob/: character sets and code pages, logging, and the general
// utilities (Boolean words, escaping, Base64, profiles, number conversion).
#ifndef ZQ_ZQGLOB_H
#define ZQ_ZQGLOB_H

#include <string>

#include "zq/common.h"

class ZQString;
class ZQWString;

class ZQ_EXPORT ZQGlob {
 public:
  ZQGlob() = delete;

#include "zq/glob/encoding.inc"
#include "zq/glob/logging.inc"
#include "zq/glob/utility.inc"
};

#endif  // ZQ_ZQGLOB_H
