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
  for (const std::int64_t count : {10, 20}) child->setCompletedUnitCount(count);
  EXPECT_TRUE(seen.empty());
  drainMainQueue();
  for (const std::int64_t count : {20, 100}) {
    child->setCompletedUnitCount(count);
    drainMainQueue();
  }
  EXPECT_EQ(seen, (std::vector<double>{0.2, 1.0}));
}

TEST(Progress, ObserversMayEndAndAddObservationsWhileTheyAreCalled) {
  const auto progress = Progress::create(100);
  std::string calls;
  Progress::Observation first, second, added;
  first = progress->observe([&](const Progress&) {
    calls += 'a';
    first = second = {};
    added = progress->observe([&](const Progress&) { calls += 'c'; });
  });
  second = progress->observe([&](const Progress&) { calls += 'b'; });
  for (const std::string expected : {"a", "ac"}) {
    progress->setCompletedUnitCount(progress->completedUnitCount() + 1);
    drainMainQueue();
    EXPECT_EQ(calls, expected);
  }
}

TEST(Progress, ObservationAndProgressMayOutliveEachOther) {
  auto progress = Progress::create(100);
  const auto fail = [](const Progress&) { ADD_FAILURE() << "called"; };
  auto observation = progress->observe(fail);
  progress->setCompletedUnitCount(1);
  observation = {};
  drainMainQueue();
  observation = progress->observe(fail);
  progress->setCompletedUnitCount(2);
  progress.reset();
  drainMainQueue();
}

}  // namespace
}  // namespace quillbay::platform
