#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/Progress.h>
#include <gtest/gtest.h>

#include <limits>

namespace quillbay::platform {
namespace {

/// Runs what waits on the main queue, and what that brings about, to the end.
void runPendingWork() {
  bool isReached = false;
  DispatchQueue::main().async([&] { DispatchQueue::main().async([&] { isReached = true; }); });
  ASSERT_TRUE(runMainQueue([&] { return isReached; }, std::chrono::seconds(30)));
}

TEST(Progress, ChildrenCountByTheirWeightWhateverTheirOwnUnits) {
  const auto parent = Progress::create(300);
  const auto small = Progress::create(100);
  const auto large = Progress::create(100);
  parent->addChild(small, 100);
  parent->addChild(large, 200);
  small->setUnitCounts(5, 10);
  EXPECT_DOUBLE_EQ(parent->fractionCompleted(), 50.0 / 300);
  large->setUnitCounts(1'000'000'000'000, 4'000'000'000'000);
  EXPECT_DOUBLE_EQ(parent->fractionCompleted(), 100.0 / 300);
  EXPECT_EQ(parent->completedUnitCount(), 0);
}

TEST(Progress, NeverFallsWhileChildrenComeMoveAndFinish) {
  constexpr std::int64_t kChildCount = 7;
  const auto root = Progress::create(kChildCount * 100);
  const auto queue = Progress::create(kChildCount * 100);
  root->addChild(queue, kChildCount * 100);
  double last = 0;
  for (std::int64_t i = 0; i < kChildCount; ++i) {
    const auto task = Progress::create(100);
    queue->addChild(task, 100);
    for (std::int64_t sent = 0; sent <= 13; ++sent) {
      task->setUnitCounts(sent, 13);
      EXPECT_GE(root->fractionCompleted(), last);
      last = root->fractionCompleted();
    }
    EXPECT_EQ(queue->completedUnitCount(), (i + 1) * 100);
  }
  EXPECT_EQ(last, 1.0);
  EXPECT_TRUE(root->isFinished());
}

TEST(Progress, LetsFinishedChildrenGoAndForgetsWhatTheyDoLater) {
  const auto parent = Progress::create(100);
  auto child = Progress::create(10);
  const std::weak_ptr<Progress> weakChild = child;
  parent->addChild(child, 50);
  child->setCompletedUnitCount(10);
  child->setUnitCounts(0, 10);
  EXPECT_EQ(parent->fractionCompleted(), 0.5);
  child.reset();
  EXPECT_TRUE(weakChild.expired());
}

TEST(Progress, TakesAChildThatHasAlreadyFinished) {
  const auto parent = Progress::create(100);
  const auto child = Progress::create(1);
  child->setCompletedUnitCount(1);
  parent->addChild(child, 100);
  EXPECT_TRUE(parent->isFinished());
  EXPECT_EQ(parent->fractionCompleted(), 1.0);
}

TEST(Progress, AChildHasOneParentAndNoCycleArises) {
  const auto first = Progress::create(100);
  const auto second = Progress::create(100);
  const auto child = Progress::create(100);
  first->addChild(child, 100);
  second->addChild(child, 100);
  child->addChild(first, 100);
  child->addChild(child, 100);
  child->setCompletedUnitCount(50);
  EXPECT_EQ(first->fractionCompleted(), 0.5);
  EXPECT_EQ(second->fractionCompleted(), 0);
}

TEST(Progress, StaysBetweenZeroAndOneForAnyCounts) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const auto empty = Progress::create(0);
  EXPECT_EQ(empty->fractionCompleted(), 0);
  EXPECT_FALSE(empty->isFinished());
  const auto parent = Progress::create(kMost);
  for (int i = 0; i < 3; ++i) {
    const auto child = Progress::create(kMost);
    parent->addChild(child, kMost);
    child->setCompletedUnitCount(kMost);
  }
  EXPECT_EQ(parent->completedUnitCount(), kMost);
  EXPECT_EQ(parent->fractionCompleted(), 1.0);
  parent->setUnitCounts(-5, -5);
  EXPECT_EQ(parent->fractionCompleted(), 0);
}

TEST(Progress, AChangeRisesThroughADeepChain) {
  constexpr int kDepth = 1000;
  const auto root = Progress::create(1);
  auto lowest = root;
  for (int i = 0; i < kDepth; ++i) {
    const auto child = Progress::create(1);
    lowest->addChild(child, 1);
    lowest = child;
  }
  lowest->setUnitCounts(1, 2);
  EXPECT_EQ(root->fractionCompleted(), 0.5);
  lowest->setUnitCounts(2, 2);
  EXPECT_TRUE(root->isFinished());
}

TEST(Progress, TellsItsObserversOnceATurnAndNeverInsideTheChange) {
  const auto parent = Progress::create(100);
  const auto child = Progress::create(100);
  parent->addChild(child, 100);
  std::vector<double> seen;
  const auto observation =
      parent->observe([&](const Progress& p) { seen.push_back(p.fractionCompleted()); });
  child->setCompletedUnitCount(10);
  child->setCompletedUnitCount(20);
  EXPECT_TRUE(seen.empty());
  runPendingWork();
  EXPECT_EQ(seen, std::vector<double>{0.2});
  child->setCompletedUnitCount(20);
  runPendingWork();
  EXPECT_EQ(seen.size(), 1U);
  child->setCompletedUnitCount(100);
  runPendingWork();
  EXPECT_EQ(seen.back(), 1.0);
}

TEST(Progress, ObserversMayEndAndAddObservationsWhileTheyAreCalled) {
  const auto progress = Progress::create(100);
  std::string calls;
  Progress::Observation first, second, added;
  first = progress->observe([&](const Progress&) {
    calls += 'a';
    first = {};
    second = {};
    added = progress->observe([&](const Progress&) { calls += 'c'; });
  });
  second = progress->observe([&](const Progress&) { calls += 'b'; });
  progress->setCompletedUnitCount(1);
  runPendingWork();
  EXPECT_EQ(calls, "a");
  progress->setCompletedUnitCount(2);
  runPendingWork();
  EXPECT_EQ(calls, "ac");
}

TEST(Progress, ObservationAndProgressMayOutliveEachOther) {
  int callCount = 0;
  auto progress = Progress::create(100);
  auto observation = progress->observe([&](const Progress&) { ++callCount; });
  progress->setCompletedUnitCount(1);
  observation = {};
  runPendingWork();
  observation = progress->observe([&](const Progress&) { ++callCount; });
  progress->setCompletedUnitCount(2);
  progress.reset();
  runPendingWork();
  EXPECT_EQ(callCount, 0);
}

}  // namespace
}  // namespace quillbay::platform
