#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace quillbay::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kBound = 30s;

/// Drives the main queue until `condition` holds.
bool runUntil(const std::function<bool()>& condition) { return runMainQueue(condition, kBound); }

/// Asks the main queue to look at its condition again, from any thread.
void wakeMainQueue() {
  DispatchQueue::main().async([] {});
}

/// Notes on which thread it was destroyed.
class Captured {
 public:
  explicit Captured(std::thread::id* destroyedOn) : destroyedOn_(destroyedOn) {}
  Captured(Captured&& other) noexcept : destroyedOn_(std::exchange(other.destroyedOn_, nullptr)) {}
  Captured& operator=(Captured&&) = delete;
  ~Captured() {
    if (destroyedOn_) *destroyedOn_ = std::this_thread::get_id();
  }

 private:
  std::thread::id* destroyedOn_;
};

std::vector<std::shared_ptr<DispatchQueue>> backgroundQueues() {
  return {DispatchQueue::makeSerial(),
          {&DispatchQueue::globalUserInitiated(), [](DispatchQueue*) {}}};
}

TEST(MainQueue, RunsItemsInOrderOnItsThreadAndNeverInsideTheCall) {
  std::vector<int> order;
  DispatchQueue::main().async([&] {
    DispatchQueue::main().async([&] { order.push_back(3); });
    order.push_back(1);
  });
  DispatchQueue::main().async([&] { order.push_back(2); });
  EXPECT_TRUE(order.empty());
  EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(MainQueue, AReachedConditionLeavesTheRestForTheNextRun) {
  int count = 0;
  for (int i = 0; i < 3; ++i) DispatchQueue::main().async([&] { ++count; });
  EXPECT_TRUE(runUntil([&] { return count == 1; }));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(runUntil([&] { return count == 3; }));
}

TEST(MainQueue, ABoundThatPassesEndsTheRunEvenWhileItemsKeepComing) {
  EXPECT_FALSE(runMainQueue([] { return false; }, 0ms));
  EXPECT_FALSE(runMainQueue([] { return false; }, 5ms));
  std::function<void()> again = [&] { DispatchQueue::main().async([&] { again(); }); };
  again();
  EXPECT_FALSE(runMainQueue([] { return false; }, 5ms));
  again = [] {};
  EXPECT_TRUE(runMainQueue([] { return true; }, std::chrono::milliseconds::max()));
  bool isReached = false;
  DispatchQueue::main().async([&] { isReached = true; });
  EXPECT_TRUE(runMainQueue([&] { return isReached; }, std::chrono::milliseconds::max()));
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
  stopMainQueue();
  runMainQueue();
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(runUntil([&] { return count == 2; }));
  std::thread([] { stopMainQueue(); }).join();
  EXPECT_FALSE(runUntil([] { return false; }));
}

TEST(MainQueue, AnItemsObjectsEndOnTheMainThreadBeforeTheNextItem) {
  std::thread::id destroyedOn;
  bool wasDestroyedBefore = false;
  bool isDone = false;
  std::thread([&] {
    DispatchQueue::main().async([captured = Captured(&destroyedOn)] {});
    DispatchQueue::main().async([&] {
      wasDestroyedBefore = destroyedOn == std::this_thread::get_id();
      isDone = true;
    });
  }).join();
  EXPECT_TRUE(runUntil([&] { return isDone; }));
  EXPECT_TRUE(wasDestroyedBefore);
}

TEST(MainQueue, AHostsLoopGetsOneCallAnItemAndKeepsTheirOrder) {
  std::mutex mutex;
  std::deque<std::function<void()>> loop;
  std::vector<int> order;
  DispatchQueue::main().async([&] { order.push_back(0); });
  setMainQueuePoster([&](std::function<void()> runOneItem) {
    const std::lock_guard lock(mutex);
    loop.push_front(std::move(runOneItem));  // a loop that keeps no order
  });
  DispatchQueue::main().async([&] { order.push_back(1); });
  std::thread([&] { DispatchQueue::main().async([&] { order.push_back(2); }); }).join();
  EXPECT_TRUE(order.empty());
  ASSERT_EQ(loop.size(), 3U);
  for (const auto& runOneItem : loop) runOneItem();
  loop.front()();
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
  for (int t = 0; t < kThreadCount; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kItemCount; ++i) {
        queue->async([&, t, i] {
          if (++runningCount > 1) ++overlapCount;
          seen[static_cast<std::size_t>(t)].push_back(i);
          --runningCount;
          if (++doneCount == kThreadCount * kItemCount) wakeMainQueue();
        });
      }
    });
  }
  EXPECT_TRUE(runUntil([&] { return doneCount == kThreadCount * kItemCount; }));
  EXPECT_EQ(overlapCount, 0);
  for (const auto& items : seen) EXPECT_TRUE(std::is_sorted(items.begin(), items.end()));
}

TEST(SerialQueue, BlockedQueuesStarveNoOther) {
  constexpr int kBlockedCount = 40;
  std::latch release(1);
  std::atomic<int> doneCount = 0;
  for (int i = 0; i < kBlockedCount; ++i) {
    DispatchQueue::makeSerial()->async([&] {
      release.wait();
      if (++doneCount == kBlockedCount) wakeMainQueue();
    });
  }
  std::atomic<bool> hasRun = false;
  DispatchQueue::makeSerial()->async([&] {
    hasRun = true;
    wakeMainQueue();
  });
  EXPECT_TRUE(runUntil([&] { return hasRun.load(); }));
  release.count_down();
  EXPECT_TRUE(runUntil([&] { return doneCount == kBlockedCount; }));
}

TEST(SerialQueue, MayBeReleasedWhileItemsWaitEvenByItsOwnItem) {
  auto queue = DispatchQueue::makeSerial();
  std::latch start(1);
  std::atomic<int> count = 0;
  queue->async([&, own = queue]() mutable {
    start.wait();
    own.reset();
  });
  queue->async([&] {
    ++count;
    wakeMainQueue();
  });
  queue.reset();
  start.count_down();
  EXPECT_TRUE(runUntil([&] { return count == 1; }));
}

TEST(GlobalQueue, LongWorkDelaysNoCallback) {
  std::latch release(1);
  std::atomic<int> doneCount = 0;
  constexpr int kLongCount = 64;
  for (int i = 0; i < kLongCount; ++i) {
    DispatchQueue::globalUserInitiated().async([&] {
      release.wait();
      if (++doneCount == kLongCount) wakeMainQueue();
    });
  }
  std::atomic<bool> hasRun = false;
  DispatchQueue::makeSerial()->async([&] {
    hasRun = true;
    wakeMainQueue();
  });
  EXPECT_TRUE(runUntil([&] { return hasRun.load(); }));
  EXPECT_EQ(doneCount, 0);
  release.count_down();
  EXPECT_TRUE(runUntil([&] { return doneCount == kLongCount; }));
}

TEST(GlobalQueue, RunsTwoItemsAtOnce) {
  std::latch bothRunning(2);
  std::atomic<int> doneCount = 0;
  for (int i = 0; i < 2; ++i) {
    DispatchQueue::globalUserInitiated().async([&] {
      bothRunning.arrive_and_wait();
      if (++doneCount == 2) wakeMainQueue();
    });
  }
  EXPECT_TRUE(runUntil([&] { return doneCount == 2; }));
}

TEST(BackgroundQueues, AnItemsObjectsEndOnItsThread) {
  for (const auto& queue : backgroundQueues()) {
    std::thread::id ranOn;
    std::thread::id destroyedOn;
    std::latch destroyed(1);
    struct CountDown {
      explicit CountDown(std::latch* l) : latch(l) {}
      CountDown(CountDown&& other) noexcept : latch(std::exchange(other.latch, nullptr)) {}
      CountDown& operator=(CountDown&&) = delete;
      ~CountDown() {
        if (latch) latch->count_down();
      }
      std::latch* latch;
    };
    // Members end in reverse order: the latch opens after the note.
    queue->async([last = CountDown(&destroyed), captured = Captured(&destroyedOn), &ranOn] {
      ranOn = std::this_thread::get_id();
    });
    destroyed.wait();
    EXPECT_EQ(destroyedOn, ranOn);
    EXPECT_NE(ranOn, std::this_thread::get_id());
  }
}

TEST(BackgroundQueues, TheirThreadsTakeNoSignalsAndTheCallerKeepsItsMask) {
  for (const auto& queue : backgroundQueues()) {
    sigset_t blocked;
    std::atomic<bool> isDone = false;
    queue->async([&] {
      pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
      isDone = true;
      wakeMainQueue();
    });
    ASSERT_TRUE(runUntil([&] { return isDone.load(); }));
    for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGALRM, SIGUSR1}) {
      EXPECT_TRUE(sigismember(&blocked, number)) << number;
      sigset_t own;
      pthread_sigmask(SIG_BLOCK, nullptr, &own);
      EXPECT_FALSE(sigismember(&own, number)) << number;
    }
  }
}

}  // namespace
}  // namespace quillbay::platform
