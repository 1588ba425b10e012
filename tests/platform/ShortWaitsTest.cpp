#include <QuillbayPlatform/ShortWaits.h>
#include <gtest/gtest.h>

#include <thread>

namespace quillbay::platform {
namespace {

TEST(ShortWaits, AWaitBeginsAwakeForAMomentWhileTheLastOnesWereShort) {
  if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "a single processor";
  ShortWaits waits;
  // For an event that comes with this look, or else never.
  const auto lookCount = [&](int look) {
    int count = 0;
    const ShortWaits::Wait wait(waits, [&] { return ++count == look; });
    return count;
  };
  EXPECT_EQ(lookCount(2), 1) << "nothing is known of earlier waits";
  int waitCount = 0;
  while (lookCount(0) == 1 && waitCount < 10'000) ++waitCount;
  EXPECT_LT(waitCount, 10'000) << "every wait was short";
  {
    const ShortWaits::Wait longWait(waits, [] { return false; });
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(10);
    while (std::chrono::steady_clock::now() < end) continue;
  }
  EXPECT_EQ(lookCount(2), 1) << "the last wait was long";
}

}  // namespace
}  // namespace quillbay::platform
