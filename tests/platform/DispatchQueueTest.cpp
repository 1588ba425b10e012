#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/SerialQueue.h>
#include <QuillbayPlatform/WorkerPool.h>
#include <ThreadLimit.h>
#include <Waiting.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <latch>
#include <optional>
#include <thread>
#include <vector>

namespace quillbay::platform {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;
using Threads = std::vector<std::thread::id>;

/// A copyable object that notes on which thread its last copy was destroyed.
std::shared_ptr<void> destructionNote(std::atomic<std::thread::id>& destroyedOn) {
  return {nullptr, [&](void*) { destroyedOn = std::this_thread::get_id(); }};
}

TEST(MainQueue, RunsItemsInOrderNeverInsideTheCallAndEndsTheirObjectsBeforeTheNextItem) {
  std::vector<int> order;
  std::atomic<std::thread::id> destroyedOn;
  DispatchQueue::main().async([&, captured = destructionNote(destroyedOn)] {
    DispatchQueue::main().async([&] { order.push_back(3); });
    order.push_back(1);
  });
  DispatchQueue::main().async([&] {
    EXPECT_EQ(destroyedOn.load(), std::this_thread::get_id());
    order.push_back(2);
  });
  EXPECT_TRUE(order.empty());
  // A reached condition leaves the rest for the next run.
  EXPECT_TRUE(waitUntil([&] { return order.size() == 1; }));
  EXPECT_EQ(order.size(), 1U);
  EXPECT_TRUE(waitUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(MainQueue, ABoundThatPassesEndsTheRunEvenWhileItemsKeepComing) {
  std::function<void()> again = [&] { DispatchQueue::main().async([&] { again(); }); };
  again();
  EXPECT_FALSE(runMainQueue([] { return false; }, 5ms));
  bool isReached = false;
  again = [&] { isReached = true; };
  EXPECT_TRUE(runMainQueue([&] { return isReached; }, std::chrono::milliseconds::max()));
}

TEST(MainQueue, AnItemFromAnotherThreadWakesTheRunAndStopEndsItOrElseTheNextOne) {
  const auto queue = DispatchQueue::makeSerial();
  int count = 0;
  queue->async([&] {
    DispatchQueue::main().async([&] {
      ++count;
      stopMainQueue();
    });
    DispatchQueue::main().async([&] { ++count; });
  });
  runMainQueue();
  EXPECT_EQ(count, 1);
  std::thread([] { stopMainQueue(); }).join();
  runMainQueue();
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(waitUntil([&] { return count == 2; }));
}

TEST(MainQueue, AHostsLoopGetsOneCallAnItemAndKeepsTheirOrder) {
  std::deque<std::function<void()>> loop;
  std::vector<int> order;
  DispatchQueue::main().async([&] { order.push_back(0); });
  setMainQueuePoster([&](std::function<void()> runOneItem) {
    loop.push_front(std::move(runOneItem));  // a loop that keeps no order
  });
  std::thread([&] { DispatchQueue::main().async([&] { order.push_back(1); }); }).join();
  EXPECT_TRUE(order.empty());
  EXPECT_EQ(loop.size(), 2U);
  for (const auto& runOneItem : loop) runOneItem();
  EXPECT_EQ(order, (std::vector<int>{0, 1}));
  setMainQueuePoster(nullptr);
}

TEST(SerialQueue, RunsItemsOneAtATimeInEachThreadsOrderAlsoWhenReleasedMeanwhile) {
  constexpr int kItemCount = 2000;
  auto queue = DispatchQueue::makeSerial();
  std::array<std::vector<int>, 4> seen;
  std::atomic<int> runningCount = 0;
  std::atomic<int> overlapCount = 0;
  std::atomic<std::size_t> doneCount = 0;
  for (auto& items : seen) {
    std::thread([&, queue] {
      for (int i = 0; i < kItemCount; ++i) {
        // The last reference ends with an item.
        queue->async([&, i, own = queue] {
          if (++runningCount > 1) ++overlapCount;
          items.push_back(i);
          --runningCount;
          ++doneCount;
        });
      }
    }).detach();
  }
  queue.reset();
  EXPECT_TRUE(waitUntil([&] { return doneCount == seen.size() * kItemCount; }));
  EXPECT_EQ(overlapCount, 0);
  for (const auto& items : seen) EXPECT_TRUE(std::ranges::is_sorted(items));
}

TEST(SerialQueue, RunsAnItemHereWhenNoneRunsOrWaitsAndWhatComesMeanwhileAfterIt) {
  const auto queue = SerialQueue::create();
  bool hasRunHere = false;
  bool isAfterIt = false;
  std::atomic<bool> isDone = false;
  queue->runHereOrAsync([&] {
    queue->runHereOrAsync([&] { isAfterIt = hasRunHere; });
    queue->async([&] { isDone = true; });
    hasRunHere = true;
  });
  EXPECT_TRUE(hasRunHere);
  EXPECT_TRUE(waitUntil([&] { return isDone.load(); }));
  EXPECT_TRUE(isAfterIt);
}

TEST(BackgroundQueues, RunItemsAtOnceAndWhenBlockedDelayNoOtherSerialQueue) {
  constexpr int kBlockedCount = 64;
  for (const bool isSerial : {true, false}) {
    std::latch release(1);
    std::atomic<int> begunCount = 0;
    std::atomic<int> doneCount = 0;
    for (int i = 0; i < kBlockedCount; ++i) {
      const auto serial = DispatchQueue::makeSerial();
      (isSerial ? *serial : DispatchQueue::globalUserInitiated()).async([&] {
        ++begunCount;
        release.wait();
        ++doneCount;
      });
    }
    std::atomic<bool> hasRun = false;
    DispatchQueue::makeSerial()->async([&] { hasRun = true; });
    EXPECT_TRUE(waitUntil([&] { return hasRun && begunCount > 1; })) << isSerial;
    release.count_down();
    EXPECT_TRUE(waitUntil([&] { return doneCount == kBlockedCount; }));
  }
}

TEST(WorkerPool, RunsAndDestroysJobsOnItsThreadAndWithoutOneToBeHadOnTheMainQueue) {
  auto& pool =
      *new WorkerPool({.threadName = "test", .maximumThreadCount = 1, .maximumIdleThreadCount = 1});
  Threads ranOn;
  std::atomic<std::thread::id> destroyedOn;
  std::optional<test::ThreadLimit> none(0);
  for (const std::size_t jobCount : {2U, 3U, 4U}) {
    destroyedOn = std::thread::id();
    const auto submit = [&] {
      pool.submit([&, captured = destructionNote(destroyedOn)] {
        ranOn.push_back(std::this_thread::get_id());
      });
    };
    submit();
    if (jobCount == 2) submit();
    // The third job finds no thread, but there is one to be had when the main queue takes it up.
    if (jobCount == 3) none.reset();
    EXPECT_TRUE(waitUntil([&] { return destroyedOn.load() != std::thread::id(); }));
    EXPECT_EQ(destroyedOn.load(), ranOn.back());
    EXPECT_TRUE(waitUntil([&] { return ranOn.size() == jobCount; }));
  }
  const auto self = std::this_thread::get_id();
  EXPECT_NE(ranOn.back(), self);
  EXPECT_EQ(ranOn, (Threads{self, self, ranOn.back(), ranOn.back()}));
}

}  // namespace
}  // namespace quillbay::platform
