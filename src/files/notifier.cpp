#include "zq/notifier.h"

#include <cstdint>

#include "platform/ticks.h"

ZQNotifier::ZQNotifier()
    : updates_(0), total_(0), status_(0), rate_(0), start_(0), last_(0), threshold_(0) {}

ZQNotifier::~ZQNotifier() = default;

void ZQNotifier::StartNotification(long total) { NVStartNotification(total); }

BATCHERR ZQNotifier::Notify(long progress, short status) { return NVNotify(progress, status); }

void ZQNotifier::EndNotification(long) { NVEndNotification(); }

void ZQNotifier::DoEvents() {}

void ZQNotifier::NVStartNotification(long total) {
  total_ = static_cast<int32_t>(total);
  rate_ = 0;
  start_ = last_ = zq::platform::NowSeconds();
  threshold_ = 0;
  updates_ = 0;
  status_ = 0;
}

BATCHERR ZQNotifier::NVNotify(long progress, short status) {
  status_ = status;
  const int32_t p = static_cast<int32_t>(progress);
  if (p > threshold_) {
    const long now = zq::platform::NowSeconds();
    // The rate moves at most once a second, and only after about four fifths
    // of a second's worth of further progress.
    if (now - last_ >= 1 && now > start_) {
      rate_ = static_cast<int32_t>(p / (now - start_));
      last_ = now;
      threshold_ = static_cast<int32_t>(p + static_cast<int64_t>(rate_) * 4 / 5);
      ++updates_;
    }
  }
  return BATCH_OK;
}

void ZQNotifier::NVEndNotification() {
  updates_ = 0;
  total_ = 0;
  status_ = 0;
  rate_ = 0;
  start_ = 0;
  last_ = 0;
  threshold_ = 0;
}
