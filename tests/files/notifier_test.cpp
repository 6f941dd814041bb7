#include "zq/notifier.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/ticks.h"

namespace {

long g_now = 0;

// Stops an operation by answering non-zero, keeping the base class's rate.
class StopAt10 : public ZQNotifier {
 public:
  BATCHERR Notify(long progress, short status) override {
    NVNotify(progress, status);
    return progress >= 10 ? BATCH_END : BATCH_OK;
  }
};

TEST(Notifier, RateIsRecomputedAtMostOncePerSecondPastTheThreshold) {
  zq::platform::SetSecondsSourceForTesting([] { return g_now; });
  // Each step: seconds after the start, progress, then the rate, threshold
  // and update count expected after that Notify.
  const struct {
    const char* name;
    std::vector<std::array<long, 5>> steps;
  } cases[] = {
      {"same second never changes the rate", {{0, 10, 0, 0, 0}, {0, 5000, 0, 0, 0}}},
      {"below the threshold nothing moves",
       {{2, 1000, 500, 1400, 1}, {5, 1400, 500, 1400, 1}, {6, 1401, 233, 1587, 2}}},
      {"a second must pass since the last update",
       {{1, 100, 100, 180, 1}, {1, 900, 100, 180, 1}, {2, 900, 450, 1260, 2}}},
      {"progress 0 never exceeds the initial threshold", {{3, 0, 0, 0, 0}}},
  };
  for (const auto& c : cases) {
    g_now = 1000000;
    ZQNotifier n;
    n.StartNotification(5000);
    for (const auto& [seconds, progress, rate, threshold, updates] : c.steps) {
      SCOPED_TRACE(::testing::Message() << c.name << " at progress " << progress);
      g_now = 1000000 + seconds;
      EXPECT_EQ(n.Notify(progress, 7), BATCH_OK);
      EXPECT_EQ(n.Rate(), rate);
      EXPECT_EQ(n.Threshold(), threshold);
      EXPECT_EQ(n.Updates(), updates);
      EXPECT_EQ(n.LastStatus(), 7);
    }
  }

  // Starting again resets everything, ending clears it; a derived class stops.
  StopAt10 stop;
  ZQNotifier& n = stop;
  n.StartNotification(42);
  g_now += 3;
  EXPECT_EQ(n.Notify(9, 2), BATCH_OK);
  EXPECT_EQ(n.Rate(), 3);
  EXPECT_EQ(n.Notify(10, 2), BATCH_END);
  g_now += 1;
  n.StartNotification(7);
  EXPECT_EQ(n.StartTime(), g_now);
  EXPECT_EQ(n.LastUpdate(), g_now);
  EXPECT_EQ(n.Total(), 7);
  EXPECT_EQ(n.Rate() + n.Updates() + n.Threshold() + n.LastStatus(), 0);
  n.EndNotification(7);
  EXPECT_EQ(n.Total() + n.StartTime() + n.LastUpdate(), 0);
  zq::platform::SetSecondsSourceForTesting(nullptr);
}

}  // namespace
