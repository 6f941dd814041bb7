// ZQLogger: one open log file, shared by everyone who opens the same path.
#ifndef ZQ_ZQLOG_H
#define ZQ_ZQLOG_H

#include <string>

#include "zq/common.h"

class ZQ_EXPORT ZQLogger {
 public:
  // The logger for `path` (opened if needed, with `mask` as its mask in any
  // case); null when the file cannot be opened.
  static ZQLogger* GetLogger(const char* path, int mask);
  // Drops one reference; the last one closes the file. Null is ignored.
  static void FreeLogger(ZQLogger* l);

  // Opens `path` for appending (created with mode 0666 less the umask).
  ZQLogger(const char* path, int mask);
  ~ZQLogger();
  // Copies every member; the copy gets its own descriptor for the same
  // open file (so each object closes only its own) and is not shared.
  ZQLogger(const ZQLogger& other);
  ZQLogger& operator=(const ZQLogger& other);

  // Writes "<date-time> level code kind source message" when `level` meets
  // the mask; levels with bit 4 or 8 are remembered for LastLogMessage even
  // when not written. Returns `code`.
  BATCHERR WriteLog(int level, BATCHERR code, const char* source, int kind, const char* message);
  // The same for 16-bit texts, narrowed in code set 0.
  BATCHERR WriteLog(int level, BATCHERR code, const unsigned short* source, int kind,
                    const unsigned short* message);

  // The last message remembered and its level; the level is then reset, so a
  // message is fetched once. Null (and level 0) when there is none.
  const char* LastLogMessage(int& level);

  bool AutoFlush() const { return autoflush_; }
  void AutoFlush(bool on) { autoflush_ = on; }
  int LogMask() const { return mask_; }
  void LogMask(int mask) { mask_ = mask; }
  const char* LogFileName() const { return path_; }

  // The file descriptor; -1 when the open failed.
  int Handle() const { return file_; }
  // Number of holders obtained through GetLogger.
  int RefCount() const { return refcount_; }

 private:
  friend class ZQGlob;

  // WriteLog filtered by `mask` in place of the logger's own mask, so that
  // threads sharing the logger each apply their own mask.
  BATCHERR WriteMasked(int mask, int level, BATCHERR code, const char* source, int kind,
                       const char* message);

  bool autoflush_;
  char path_[259];
  int mask_;
  int file_;
  int refcount_;
  ZQLogger* next_;
  std::string last_message_;
  int last_level_;
};

#endif  // ZQ_ZQLOG_H
