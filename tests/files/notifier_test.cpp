#include "zq/notifier.h"

#include <gtest/gtest.h>

#include "platform/ticks.h"

namespace {

long g_now = 0;
long FakeNow() { return g_now; }

class NotifierTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_now = 1000000;
    zq::platform::SetSecondsSourceForTesting(&FakeNow);
  }
  void TearDown() override { zq::platform::SetSecondsSourceForTesting(nullptr); }
};

// One Notify call and the rate, threshold and update count expected after it.
struct Step {
  long seconds_after_start, progress, rate, threshold;
  int updates;
};

TEST_F(NotifierTest, RateIsRecomputedAtMostOncePerSecondPastTheThreshold) {
  const struct {
    const char* name;
    std::vector<Step> steps;
  } cases[] = {
      {"same second never changes the rate", {{0, 10, 0, 0, 0}, {0, 5000, 0, 0, 0}}},
      {"1000 after 2 s gives 500 and threshold 1400", {{2, 1000, 500, 1400, 1}}},
      {"below the threshold nothing moves",
       {{2, 1000, 500, 1400, 1}, {5, 1400, 500, 1400, 1}, {6, 1401, 233, 1587, 2}}},
      {"a second must pass since the last update",
       {{1, 100, 100, 180, 1}, {1, 900, 100, 180, 1}, {2, 900, 450, 1260, 2}}},
      {"progress 0 never exceeds the initial threshold", {{3, 0, 0, 0, 0}}},
  };
  for (const auto& c : cases) {
    ZQNotifier n;
    n.StartNotification(5000);
    const long start = g_now;
    for (const Step& s : c.steps) {
      g_now = start + s.seconds_after_start;
      EXPECT_EQ(n.Notify(s.progress, 7), BATCH_OK) << c.name;
      EXPECT_EQ(n.Rate(), s.rate) << c.name << " at progress " << s.progress;
      EXPECT_EQ(n.Threshold(), s.threshold) << c.name << " at progress " << s.progress;
      EXPECT_EQ(n.Updates(), s.updates) << c.name << " at progress " << s.progress;
      EXPECT_EQ(n.LastStatus(), 7) << c.name;
    }
  }
}

TEST_F(NotifierTest, StartResetsAndEndClears) {
  ZQNotifier n;
  n.StartNotification(42);
  EXPECT_EQ(n.Total(), 42);
  EXPECT_EQ(n.StartTime(), g_now);
  EXPECT_EQ(n.LastUpdate(), g_now);
  g_now += 3;
  n.Notify(900, 2);
  EXPECT_EQ(n.Rate(), 300);
  n.StartNotification(7);
  EXPECT_EQ(n.Rate(), 0);
  EXPECT_EQ(n.Updates(), 0);
  EXPECT_EQ(n.Threshold(), 0);
  EXPECT_EQ(n.LastStatus(), 0);
  n.EndNotification(7);
  EXPECT_EQ(n.Total(), 0);
  EXPECT_EQ(n.StartTime(), 0);
  EXPECT_EQ(n.LastUpdate(), 0);
}

// A derived notifier stops an operation by answering non-zero; the base
// implementation it builds on still keeps the rate.
class StopAt : public ZQNotifier {
 public:
  explicit StopAt(long limit) : limit_(limit) {}
  BATCHERR Notify(long progress, short status) override {
    NVNotify(progress, status);
    return progress >= limit_ ? BATCH_END : BATCH_OK;
  }

 private:
  long limit_;
};

TEST_F(NotifierTest, DerivedNotifierAsksToStopThroughTheVirtualCall) {
  StopAt stop(10);
  ZQNotifier& base = stop;
  base.StartNotification(100);
  g_now += 1;
  EXPECT_EQ(base.Notify(5, 0), BATCH_OK);
  EXPECT_EQ(base.Rate(), 5);
  EXPECT_EQ(base.Notify(10, 0), BATCH_END);
}

}  // namespace
