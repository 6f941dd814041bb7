// zq750util: every public family of the runtime in one include.
#ifndef ZQ_ZQ750UTIL_H
#define ZQ_ZQ750UTIL_H

#include "zq/common.h"
#include "zq/strutil.h"
#include "zq/wsfmt.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"
#include "zq/zqglob.h"
#include "zq/ebcdic.h"
#include "zq/decimal.h"
#include "zq/quadword.h"
#include "zq/datetime.h"
#include "zq/dtype.h"
#include "zq/notifier.h"
#include "zq/assoc.h"
#include "zq/zqlog.h"
#include "zq/options.h"
#include "zq/catalog.h"

#endif  // ZQ_ZQ750UTIL_H
