// ZQLogger (shared log files) and the per-thread log of ZQGlob.
#include "zq/zqlog.h"

#include <ace/Object_Manager.h>
#include <ace/Thread.h>
#include <ace/Thread_Mutex.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "platform/fs.h"
#include "zq/datetime.h"
#include "zq/wsfmt.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"

namespace {

// Guards the list of open loggers and their reference counts; made at load.
ACE_Thread_Mutex g_list_mutex;
ZQLogger* g_loggers = nullptr;

// Serialises the writing of lines across all loggers; made on first use.
ACE_Thread_Mutex& WriteMutex() {
  static ACE_Thread_Mutex mutex;
  return mutex;
}

// One thread's log state.
struct ThreadLog {
  int mask = 0xFFFF;
  ZQLogger* logger = nullptr;
};

extern "C" void DestroyThreadLog(void* p) {
  ThreadLog* t = static_cast<ThreadLog*>(p);
  // A thread that ends without CloseLog still gives its reference back.
  if (t != nullptr && !ACE_Object_Manager::shutting_down()) ZQLogger::FreeLogger(t->logger);
  delete t;
}

// The thread-specific-storage key of the per-thread log state; made at load.
class ThreadLogKey {
 public:
  ThreadLogKey() { ok_ = ACE_Thread::keycreate(&key_, &DestroyThreadLog) == 0; }

  // The calling thread's state, made on first use; null only when the key
  // or the state could not be made.
  ThreadLog* Get() {
    if (!ok_) return nullptr;
    void* p = nullptr;
    if (ACE_Thread::getspecific(key_, &p) == 0 && p != nullptr) return static_cast<ThreadLog*>(p);
    ThreadLog* t = new (std::nothrow) ThreadLog;
    if (t == nullptr) return nullptr;
    if (ACE_Thread::setspecific(key_, t) != 0) {
      delete t;
      return nullptr;
    }
    return t;
  }

  // The calling thread's state if it exists already.
  ThreadLog* Peek() {
    if (!ok_) return nullptr;
    void* p = nullptr;
    return ACE_Thread::getspecific(key_, &p) == 0 ? static_cast<ThreadLog*>(p) : nullptr;
  }

 private:
  ACE_thread_key_t key_;
  bool ok_ = false;
};

ThreadLogKey g_thread_log;

void CopyPath(char* dst, const char* src) {
  std::size_t n = src != nullptr ? std::strlen(src) : 0;
  if (n > 258) n = 258;
  if (n > 0) std::memcpy(dst, src, n);
  dst[n] = '\0';
}

// The logger of the calling thread, or null.
ZQLogger* CurrentLogger() {
  ThreadLog* t = g_thread_log.Peek();
  return t != nullptr ? t->logger : nullptr;
}

}  // namespace

// ---- ZQLogger ------------------------------------------------------------------------

ZQLogger* ZQLogger::GetLogger(const char* path, int mask) {
  if (path == nullptr) return nullptr;
  g_list_mutex.acquire();
  for (ZQLogger* l = g_loggers; l != nullptr; l = l->next_) {
    if (std::strcmp(l->path_, path) == 0) {
      l->mask_ = mask;
      ++l->refcount_;
      g_list_mutex.release();
      return l;
    }
  }
  ZQLogger* l = new (std::nothrow) ZQLogger(path, mask);
  if (l != nullptr && l->file_ < 0) {
    delete l;
    l = nullptr;
  }
  if (l != nullptr) {
    l->refcount_ = 1;
    l->next_ = g_loggers;
    g_loggers = l;
  }
  g_list_mutex.release();
  return l;
}

void ZQLogger::FreeLogger(ZQLogger* l) {
  if (l == nullptr) return;
  // At process exit the list mutex may already be gone.
  bool lock = !ACE_Object_Manager::shutting_down();
  if (lock) g_list_mutex.acquire();
  if (--l->refcount_ <= 0) {
    for (ZQLogger** p = &g_loggers; *p != nullptr; p = &(*p)->next_) {
      if (*p == l) {
        *p = l->next_;
        break;
      }
    }
    l->next_ = nullptr;
    delete l;
  }
  if (lock) g_list_mutex.release();
}

ZQLogger::ZQLogger(const char* path, int mask)
    : autoflush_(true), mask_(mask), file_(-1), refcount_(0), next_(nullptr), last_level_(0) {
  CopyPath(path_, path);
  file_ = zq::platform::FileOpenAppend(path, 0666);
}

ZQLogger::~ZQLogger() {
  zq::platform::FileClose(file_);
  file_ = -1;
}

ZQLogger::ZQLogger(const ZQLogger& other)
    : autoflush_(other.autoflush_),
      mask_(other.mask_),
      file_(zq::platform::FileDup(other.file_)),
      refcount_(0),
      next_(nullptr),
      last_message_(other.last_message_),
      last_level_(other.last_level_) {
  std::memcpy(path_, other.path_, sizeof path_);
}

ZQLogger& ZQLogger::operator=(const ZQLogger& other) {
  if (this != &other) {
    zq::platform::FileClose(file_);
    autoflush_ = other.autoflush_;
    std::memcpy(path_, other.path_, sizeof path_);
    mask_ = other.mask_;
    file_ = zq::platform::FileDup(other.file_);
    last_message_ = other.last_message_;
    last_level_ = other.last_level_;
  }
  return *this;
}

BATCHERR ZQLogger::WriteLog(int level, BATCHERR code, const char* source, int kind,
                            const char* message) {
  return WriteMasked(mask_, level, code, source, kind, message);
}

BATCHERR ZQLogger::WriteMasked(int mask, int level, BATCHERR code, const char* source, int kind,
                               const char* message) {
  bool write = (level & mask) != 0;
  if (!write && (level & 12) == 0) return code;
  // The stamp is made before taking the write mutex, so that nothing the
  // calendar does can come back into the log while the mutex is held.
  std::string stamp;
  if (write) {
    ZQString text;
    ZQDateTime now(true);
    now.Print(text, ZQDateTime::DefaultDateTimeFormat());
    stamp.assign(text.c_str(), static_cast<std::size_t>(text.length()));
  }
  ACE_Thread_Mutex& mutex = WriteMutex();
  mutex.acquire();
  last_level_ = level;
  last_message_ = message != nullptr ? message : "";
  if (write && file_ >= 0) {
    char fields[128];
    std::snprintf(fields, sizeof fields, " %3d %6d %c %-64.64s ", level, static_cast<int>(code),
                  kind, source != nullptr ? source : "");
    std::string line = stamp;
    line += fields;
    line += last_message_;
    line += '\n';
    if (zq::platform::FileWriteAll(file_, line.data(), line.size()) && autoflush_) {
      zq::platform::FileSync(file_);
    }
  }
  mutex.release();
  return code;
}

BATCHERR ZQLogger::WriteLog(int level, BATCHERR code, const unsigned short* source, int kind,
                            const unsigned short* message) {
  std::string s, m;
  ZQGlob::WStringToString(source, s, ZQ_CSET_OEM);
  ZQGlob::WStringToString(message, m, ZQ_CSET_OEM);
  return WriteLog(level, code, s.c_str(), kind, m.c_str());
}

const char* ZQLogger::LastLogMessage(int& level) {
  ACE_Thread_Mutex& mutex = WriteMutex();
  mutex.acquire();
  level = last_level_;
  last_level_ = 0;
  const char* text = level == 0 ? nullptr : last_message_.c_str();
  mutex.release();
  return text;
}

// ---- ZQGlob per-thread log -----------------------------------------------------------------

bool ZQGlob::OpenLog(const char* path, int mask) {
  ThreadLog* t = g_thread_log.Get();
  if (t == nullptr) return false;
  ZQLogger::FreeLogger(t->logger);
  t->logger = nullptr;
  t->mask = mask;
  t->logger = ZQLogger::GetLogger(path, mask);
  return t->logger != nullptr;
}

void ZQGlob::CloseLog() {
  ThreadLog* t = g_thread_log.Peek();
  if (t == nullptr) return;
  ZQLogger::FreeLogger(t->logger);
  t->logger = nullptr;
}

BATCHERR ZQGlob::LogMessage(int level, BATCHERR code, const char* format, ...) {
  ThreadLog* t = g_thread_log.Peek();
  if (t == nullptr || t->logger == nullptr || format == nullptr) return code;
  char small[2048];
  std::string text;
  va_list ap;
  va_start(ap, format);
  int n = std::vsnprintf(small, sizeof small, format, ap);
  va_end(ap);
  if (n < 0) return code;
  if (static_cast<std::size_t>(n) < sizeof small) {
    text.assign(small, static_cast<std::size_t>(n));
  } else {
    text.resize(static_cast<std::size_t>(n) + 1);
    va_start(ap, format);
    std::vsnprintf(&text[0], text.size(), format, ap);
    va_end(ap);
    text.resize(static_cast<std::size_t>(n));
  }
  return t->logger->WriteMasked(t->mask, level, code, "Global", 'O', text.c_str());
}

BATCHERR ZQGlob::LogMessage(int level, BATCHERR code, const unsigned short* format, ...) {
  ThreadLog* t = g_thread_log.Peek();
  if (t == nullptr || t->logger == nullptr || format == nullptr) return code;
  unsigned short buf[2048];
  buf[0] = 0;
  va_list ap;
  va_start(ap, format);
  vwsnfmt(buf, 2048, format, ap);
  va_end(ap);
  std::string text;
  WStringToString(buf, text, ZQ_CSET_OEM);
  return t->logger->WriteMasked(t->mask, level, code, "Global", 'O', text.c_str());
}

const char* ZQGlob::LastLogMessage(int* level) {
  ZQLogger* l = CurrentLogger();
  int lv = 0;
  const char* text = l != nullptr ? l->LastLogMessage(lv) : nullptr;
  if (level != nullptr) *level = lv;
  return text;
}

int ZQGlob::LogMask() {
  ThreadLog* t = g_thread_log.Peek();
  return t != nullptr ? t->mask : 0xFFFF;
}

void ZQGlob::LogMask(int mask) {
  ThreadLog* t = g_thread_log.Get();
  if (t == nullptr) return;
  t->mask = mask;
  if (t->logger != nullptr) t->logger->LogMask(mask);
}

bool ZQGlob::AutoFlushLog() {
  ZQLogger* l = CurrentLogger();
  return l != nullptr && l->AutoFlush();
}

void ZQGlob::AutoFlushLog(bool on) {
  ZQLogger* l = CurrentLogger();
  if (l != nullptr) l->AutoFlush(on);
}

const char* ZQGlob::LogFileName() {
  ZQLogger* l = CurrentLogger();
  return l != nullptr ? l->LogFileName() : nullptr;
}
