#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <Waiting.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <array>
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

TEST(MainQueue, AnItemFromAnotherThreadWakesTheRun) {
  const auto queue = DispatchQueue::makeSerial();
  DispatchQueue::main().async(
      [&] { queue->async([] { DispatchQueue::main().async(stopMainQueue); }); });
  runMainQueue();
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

TEST(SerialQueue, RunsItemsOfManyThreadsOneAtATimeInEachThreadsOrder) {
  constexpr int kItemCount = 2000;
  const auto queue = DispatchQueue::makeSerial();
  std::array<std::vector<int>, 4> seen;
  std::atomic<int> runningCount = 0;
  std::atomic<int> overlapCount = 0;
  std::atomic<std::size_t> doneCount = 0;
  std::vector<std::jthread> threads;
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
  EXPECT_TRUE(waitUntil([&] { return doneCount == seen.size() * kItemCount; }));
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

TEST(BackgroundQueues, AnItemsObjectsEndOnItsThreadWhichTakesNoSignals) {
  const std::shared_ptr<DispatchQueue> global(&DispatchQueue::globalUserInitiated(), [](auto*) {});
  for (const auto& queue : {DispatchQueue::makeSerial(), global}) {
    sigset_t blocked;
    std::atomic<std::thread::id> ranOn;
    std::atomic<std::thread::id> destroyedOn;
    queue->async([&, captured = destructionNote(destroyedOn)] {
      pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
      ranOn = std::this_thread::get_id();
    });
    ASSERT_TRUE(waitUntil([&] { return destroyedOn.load() != std::thread::id(); }));
    EXPECT_EQ(destroyedOn.load(), ranOn.load());
    EXPECT_NE(ranOn.load(), std::this_thread::get_id());
    sigset_t own;
    pthread_sigmask(SIG_BLOCK, nullptr, &own);
    for (const int number : {SIGPIPE, SIGINT, SIGTERM}) {
      EXPECT_TRUE(sigismember(&blocked, number)) << number;
      EXPECT_FALSE(sigismember(&own, number)) << number;
    }
  }
}

}  // namespace
}  // namespace quillbay::platform
