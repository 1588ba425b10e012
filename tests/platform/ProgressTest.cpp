#include <QuillbayPlatform/Progress.h>
#include <Waiting.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

using test::drainMainQueue;

TEST(Progress, ChildrenCountByTheirWeightWhateverTheirOwnUnitsAndItNeverFalls) {
  const auto root = Progress::create(300);
  const auto queue = Progress::create(300);
  root->addChild(queue, 300);
  double last = 0;
  for (const std::int64_t weight : {100, 200}) {
    const auto task = Progress::create(100);
    queue->addChild(task, weight);
    for (std::int64_t sent = 0; sent <= 13; ++sent) {
      task->setUnitCounts(sent * 1'000'000'000'000, 13'000'000'000'000);
      EXPECT_GE(root->fractionCompleted(), last);
      last = root->fractionCompleted();
    }
    EXPECT_EQ(queue->completedUnitCount(), weight == 100 ? 100 : 300);
  }
  EXPECT_EQ(last, 1.0);
  EXPECT_TRUE(root->isFinished());
}

TEST(Progress, LetsFinishedChildrenGoForgetsWhatTheyDoLaterAndIsNeverBeyondOne) {
  EXPECT_EQ(Progress::create(0)->fractionCompleted(), 0);
  const auto parent = Progress::create(100);
  auto child = Progress::create(10);
  const std::weak_ptr<Progress> weakChild = child;
  parent->addChild(child, 50);
  child->setCompletedUnitCount(11);
  EXPECT_EQ(child->fractionCompleted(), 1.0);
  child->setUnitCounts(0, 10);
  EXPECT_EQ(parent->fractionCompleted(), 0.5);
  child.reset();
  EXPECT_TRUE(weakChild.expired());
  const auto finished = Progress::create(1);
  finished->setCompletedUnitCount(1);
  parent->addChild(finished, 50);
  EXPECT_TRUE(parent->isFinished());
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
  drainMainQueue();
  child->setCompletedUnitCount(20);
  drainMainQueue();
  child->setCompletedUnitCount(100);
  drainMainQueue();
  EXPECT_EQ(seen, (std::vector<double>{0.2, 1.0}));
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
  drainMainQueue();
  EXPECT_EQ(calls, "a");
  progress->setCompletedUnitCount(2);
  drainMainQueue();
  EXPECT_EQ(calls, "ac");
}

TEST(Progress, ObservationAndProgressMayOutliveEachOther) {
  int callCount = 0;
  auto progress = Progress::create(100);
  auto observation = progress->observe([&](const Progress&) { ++callCount; });
  progress->setCompletedUnitCount(1);
  observation = {};
  drainMainQueue();
  observation = progress->observe([&](const Progress&) { ++callCount; });
  progress->setCompletedUnitCount(2);
  progress.reset();
  drainMainQueue();
  EXPECT_EQ(callCount, 0);
}

}  // namespace
}  // namespace quillbay::platform
