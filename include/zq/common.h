// Types shared by every family of the zq750util runtime.
#ifndef ZQ_COMMON_H
#define ZQ_COMMON_H

#include "zq/export.h"

// Result of file, sort, logging and module operations; 0 is success.
enum BATCHERR {
  BATCH_OK = 0,
  BATCH_END = 1,            // no more records, or end
  BATCH_IOERROR = 4,        // I/O failure on a file or module
  BATCH_NOMEMORY = 5,       // out of memory
  BATCH_SORTERROR = 8,      // sort or run-writing failure
  BATCH_CANTOPEN = 19,      // cannot open
  BATCH_CANTREMOVE = 21,    // cannot remove
  BATCH_NOTEMPFILE = 27,    // no such temporary file
  BATCH_INVALID = 34,       // invalid URI or invalid value
  BATCH_BADMODULE = 47      // module cannot be loaded or lacks an entry point
};

// Character sets. Values 3 to 23 are served by loadable encoding modules.
enum ZQ_CSET {
  ZQ_CSET_UTF8 = -3,
  ZQ_CSET_UCS2 = -2,
  ZQ_CSET_UNKNOWN = -1,
  ZQ_CSET_OEM = 0,          // the process's current locale
  ZQ_CSET_ISO8859_1 = 1,
  ZQ_CSET_CP1252 = 2,
  ZQ_CSET_ISO8859_2 = 3,
  ZQ_CSET_ISO8859_3 = 4,
  ZQ_CSET_ISO8859_4 = 5,
  ZQ_CSET_ISO8859_5 = 6,
  ZQ_CSET_ISO8859_6 = 7,
  ZQ_CSET_ISO8859_7 = 8,
  ZQ_CSET_ISO8859_8 = 9,
  ZQ_CSET_ISO8859_9 = 10,
  ZQ_CSET_CP1250 = 11,
  ZQ_CSET_CP1251 = 12,
  ZQ_CSET_CP1253 = 13,
  ZQ_CSET_CP1254 = 14,
  ZQ_CSET_CP1255 = 15,
  ZQ_CSET_CP1256 = 16,
  ZQ_CSET_CP1257 = 17,
  ZQ_CSET_CP1258 = 18,
  ZQ_CSET_SHIFTJIS = 19,
  ZQ_CSET_CP932 = 20,
  ZQ_CSET_CP936 = 21,
  ZQ_CSET_CP949 = 22,
  ZQ_CSET_CP950 = 23
};

#endif  // ZQ_COMMON_H
