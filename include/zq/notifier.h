// ZQNotifier: the progress and abort callback handed to long operations.
#ifndef ZQ_NOTIFIER_H
#define ZQ_NOTIFIER_H

#include "zq/common.h"

// Long operations call StartNotification once, Notify as they progress and
// EndNotification at the end. The base class keeps a rate estimate (units of
// progress per second, recomputed at most once a second); derived classes
// show progress, and ask the operation to stop by returning a non-zero code
// from Notify.
class ZQ_EXPORT ZQNotifier {
 public:
  ZQNotifier();
  virtual ~ZQNotifier();

  // Announces the amount of work and starts the clock.
  virtual void StartNotification(long total);
  // Records progress; 0 means go on, anything else asks the caller to stop.
  virtual BATCHERR Notify(long progress, short status);
  // Ends the notification and clears every field.
  virtual void EndNotification(long progress);

  // Lets a caller with an event loop stay responsive; this platform has no
  // message queue to pump, so it returns at once.
  static void DoEvents();

  int Updates() const { return updates_; }
  long Total() const { return total_; }
  short LastStatus() const { return status_; }
  // Units of progress per second, from the last recomputation.
  long Rate() const { return rate_; }
  long StartTime() const { return start_; }
  long LastUpdate() const { return last_; }
  // Progress after which the rate is recomputed next.
  long Threshold() const { return threshold_; }

 protected:
  void NVStartNotification(long total);
  BATCHERR NVNotify(long progress, short status);
  void NVEndNotification();

 private:
  int updates_;
  int total_;
  short status_;
  int rate_;
  long start_;
  long last_;
  int threshold_;
};

#endif  // ZQ_NOTIFIER_H
