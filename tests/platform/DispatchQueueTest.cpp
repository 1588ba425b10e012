#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <Waiting.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <deque>
#include <latch>
#include <thread>
#include <vector>

namespace quillbay::platform {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;

std::vector<std::shared_ptr<DispatchQueue>> backgroundQueues() {
  return {DispatchQueue::makeSerial(),
          {&DispatchQueue::globalUserInitiated(), [](DispatchQueue*) {}}};
}

/// A copyable object that notes on which thread its last copy was destroyed.
std::shared_ptr<void> destructionNote(std::atomic<std::thread::id>& destroyedOn) {
  return {nullptr, [&](void*) { destroyedOn = std::this_thread::get_id(); }};
}

TEST(MainQueue, RunsItemsInOrderOnItsThreadAndNeverInsideTheCall) {
  std::vector<int> order;
  DispatchQueue::main().async([&] {
    DispatchQueue::main().async([&] { order.push_back(3); });
    order.push_back(1);
  });
  DispatchQueue::main().async([&] { order.push_back(2); });
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
  EXPECT_FALSE(runMainQueue([] { return false; }, 0ms));
  EXPECT_FALSE(runMainQueue([] { return false; }, 5ms));
  bool isReached = false;
  again = [&] { isReached = true; };
  EXPECT_TRUE(runMainQueue([&] { return isReached; }, std::chrono::milliseconds::max()));
}

TEST(MainQueue, AnItemFromAnotherThreadWakesTheRun) {
  bool isReached = false;
  const auto queue = DispatchQueue::makeSerial();
  DispatchQueue::main().async(
      [&] { queue->async([&] { DispatchQueue::main().async([&] { isReached = true; }); }); });
  EXPECT_TRUE(runMainQueue([&] { return isReached; }, 60s));
}

TEST(MainQueue, StopEndsTheRunningRunAfterItsItemOrElseTheNextOne) {
  int count = 0;
  DispatchQueue::main().async([&] {
    ++count;
    stopMainQueue();
  });
  DispatchQueue::main().async([&] { ++count; });
  runMainQueue();
  EXPECT_EQ(count, 1);
  std::thread([] { stopMainQueue(); }).join();
  runMainQueue();
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(waitUntil([&] { return count == 2; }));
}

TEST(MainQueue, AnItemsObjectsEndOnTheMainThreadBeforeTheNextItem) {
  std::atomic<std::thread::id> destroyedOn;
  std::optional<bool> wasDestroyedBefore;
  std::thread([&] {
    DispatchQueue::main().async([captured = destructionNote(destroyedOn)] {});
    DispatchQueue::main().async(
        [&] { wasDestroyedBefore = destroyedOn == std::this_thread::get_id(); });
  }).join();
  EXPECT_TRUE(waitUntil([&] { return wasDestroyedBefore.has_value(); }));
  EXPECT_TRUE(*wasDestroyedBefore);
}

TEST(MainQueue, AHostsLoopGetsOneCallAnItemAndKeepsTheirOrder) {
  std::deque<std::function<void()>> loop;
  std::vector<int> order;
  DispatchQueue::main().async([&] { order.push_back(0); });
  setMainQueuePoster([&](std::function<void()> runOneItem) {
    loop.push_front(std::move(runOneItem));  // a loop that keeps no order
  });
  DispatchQueue::main().async([&] { order.push_back(1); });
  std::thread([&] { DispatchQueue::main().async([&] { order.push_back(2); }); }).join();
  EXPECT_TRUE(order.empty());
  EXPECT_EQ(loop.size(), 3U);
  for (const auto& runOneItem : loop) runOneItem();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
  setMainQueuePoster(nullptr);
}

TEST(SerialQueue, RunsItemsOfManyThreadsOneAtATimeInEachThreadsOrder) {
  constexpr int kThreadCount = 4;
  constexpr int kItemCount = 2000;
  const auto queue = DispatchQueue::makeSerial();
  std::vector<std::vector<int>> seen(kThreadCount);
  std::atomic<int> runningCount = 0;
  std::atomic<int> overlapCount = 0;
  std::atomic<int> doneCount = 0;
  std::vector<std::jthread> threads;
  threads.reserve(kThreadCount);
  for (auto& items : seen) {
    threads.emplace_back([&] {
      for (int i = 0; i < kItemCount; ++i) {
        queue->async([&, i] {
          if (++runningCount > 1) ++overlapCount;
          items.push_back(i);
          --runningCount;
          ++doneCount;
        });
      }
    });
  }
  EXPECT_TRUE(waitUntil([&] { return doneCount == kThreadCount * kItemCount; }));
  EXPECT_EQ(overlapCount, 0);
  for (const auto& items : seen) EXPECT_TRUE(std::ranges::is_sorted(items));
}

TEST(SerialQueue, MayBeReleasedWhileItemsWaitEvenByItsOwnItem) {
  auto queue = DispatchQueue::makeSerial();
  std::latch start(1);
  std::atomic<bool> hasRun = false;
  queue->async([&, own = queue]() mutable {
    start.wait();
    own.reset();
  });
  queue->async([&] { hasRun = true; });
  queue.reset();
  start.count_down();
  EXPECT_TRUE(waitUntil([&] { return hasRun.load(); }));
}

TEST(BackgroundQueues, BlockedItemsDelayNoOtherSerialQueue) {
  constexpr int kBlockedCount = 64;
  for (const bool isSerial : {true, false}) {
    std::latch release(1);
    std::atomic<int> doneCount = 0;
    for (int i = 0; i < kBlockedCount; ++i) {
      const auto serial = DispatchQueue::makeSerial();
      (isSerial ? *serial : DispatchQueue::globalUserInitiated()).async([&] {
        release.wait();
        ++doneCount;
      });
    }
    std::atomic<bool> hasRun = false;
    DispatchQueue::makeSerial()->async([&] { hasRun = true; });
    EXPECT_TRUE(waitUntil([&] { return hasRun.load(); })) << isSerial;
    release.count_down();
    EXPECT_TRUE(waitUntil([&] { return doneCount == kBlockedCount; }));
  }
}

TEST(GlobalQueue, RunsTwoItemsAtOnce) {
  std::latch bothRunning(2);
  std::atomic<int> doneCount = 0;
  for (int i = 0; i < 2; ++i) {
    DispatchQueue::globalUserInitiated().async([&] {
      bothRunning.arrive_and_wait();
      ++doneCount;
    });
  }
  EXPECT_TRUE(waitUntil([&] { return doneCount == 2; }));
}

TEST(BackgroundQueues, AnItemsObjectsEndOnItsThread) {
  for (const auto& queue : backgroundQueues()) {
    std::atomic<std::thread::id> ranOn;
    std::atomic<std::thread::id> destroyedOn;
    queue->async(
        [captured = destructionNote(destroyedOn), &ranOn] { ranOn = std::this_thread::get_id(); });
    ASSERT_TRUE(waitUntil([&] { return destroyedOn.load() != std::thread::id(); }));
    EXPECT_EQ(destroyedOn.load(), ranOn.load());
    EXPECT_NE(ranOn.load(), std::this_thread::get_id());
  }
}

TEST(BackgroundQueues, TheirThreadsTakeNoSignalsAndTheCallerKeepsItsMask) {
  for (const auto& queue : backgroundQueues()) {
    sigset_t blocked;
    std::atomic<bool> isDone = false;
    queue->async([&] {
      pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
      isDone = true;
    });
    ASSERT_TRUE(waitUntil([&] { return isDone.load(); }));
    sigset_t own;
    pthread_sigmask(SIG_BLOCK, nullptr, &own);
    for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGALRM, SIGUSR1}) {
      EXPECT_TRUE(sigismember(&blocked, number)) << number;
      EXPECT_FALSE(sigismember(&own, number)) << number;
    }
  }
}

}  // namespace
}  // namespace quillbay::platform
