#include "hosts/common/TransferEstimate.h"

#include <gtest/gtest.h>

namespace quillbay::host {
namespace {

using namespace std::chrono_literals;

const TransferEstimate::Clock::time_point kStart;

TEST(TransferEstimate, aSmallFileIsASmallPartOfTheWork) {
  TransferEstimate estimate(1'000'001'000, 2, kStart);
  estimate.update(1000, 1, kStart + 1s);
  EXPECT_LT(estimate.fraction(), 0.01);
  estimate.update(500'000'000, 1, kStart + 2s);
  EXPECT_NEAR(estimate.fraction(), 0.5, 0.01);
  estimate.update(1'000'001'000, 2, kStart + 3s);
  EXPECT_DOUBLE_EQ(estimate.fraction(), 1);
}

TEST(TransferEstimate, theRemainingTimeFollowsTheSpeedOfTheLastSeconds) {
  TransferEstimate estimate(100'000'000, 1, kStart);
  EXPECT_EQ(estimate.remaining(), std::nullopt);
  for (unsigned n = 1; n <= 100; ++n) estimate.update(n * 100'000U, 0, kStart + n * 100ms);
  EXPECT_NEAR(static_cast<double>(estimate.remaining()->count()), 90, 2);
  EXPECT_NEAR(estimate.speed(), 1e6, 2e4);
  for (int n = 101; n <= 400; ++n) estimate.update(10'000'000, 0, kStart + n * 100ms);
  EXPECT_GT(estimate.remaining()->count(), 900);
}

}  // namespace
}  // namespace quillbay::host
