#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/ShortWaits.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace quillbay::platform {
namespace {

using Clock = std::chrono::steady_clock;

/// How long exit on one thread waits for an item on another, which may be waiting for that thread.
constexpr std::chrono::seconds kLongestItemAtExit(1);

/// All items are in one list, also those that the host's loop runs: so their order does not depend
/// on the host's loop, and an item that the loop forgets is never destroyed on a strange thread. A
/// forked child is asked for before any lock is taken: a thread that does not exist there may hold
/// it.
class MainQueue final : public DispatchQueue {
 public:
  using Poster = std::function<void(std::function<void()>)>;

  static MainQueue& instance() {
    static constinit OnFirstUse<MainQueue> queue;
    return queue.get();
  }

  void async(Work work) override {
    if (!work || isForkedChild()) return;
    std::call_once(isRegistered_, [this] { stopAtExit([this] { awaitRunningItem(); }); });
    std::shared_ptr<const Poster> poster;
    {
      const std::lock_guard lock(mutex_);
      items_.push_back(std::move(work));
      hasItems_ = true;
      poster = poster_;
    }
    changed_.notify_all();
    post(poster);
  }

  void setPoster(Poster poster) {
    if (isForkedChild()) return;
    const auto shared = poster ? std::make_shared<const Poster>(std::move(poster)) : nullptr;
    std::size_t waitingCount = 0;
    {
      const std::lock_guard lock(mutex_);
      poster_ = shared;
      waitingCount = items_.size();
    }
    for (std::size_t i = 0; i < waitingCount; ++i) post(shared);
  }

  bool run(const std::function<bool()>& condition, std::optional<Clock::time_point> deadline) {
    const bool held = runUntil(condition, deadline);
    if (isForkedChild()) return held;
    const std::lock_guard lock(mutex_);
    isStopRequested_ = false;
    return held;
  }

  void stop() {
    if (isForkedChild()) return;
    {
      const std::lock_guard lock(mutex_);
      isStopRequested_ = true;
    }
    changed_.notify_all();
  }

 private:
  /// The host's loop is gone once exit has begun.
  static void post(const std::shared_ptr<const Poster>& poster) {
    if (poster && !isProcessExiting()) (*poster)([] { instance().runOneItem(); });
  }

  void runOneItem() {
    if (Work work = takeItem()) perform(std::move(work));
  }

  void perform(Work work) {
    work();
    work = nullptr;
    if (isForkedChild()) return;
    const std::lock_guard lock(mutex_);
    runner_ = std::thread::id();
    if (isProcessExiting()) changed_.notify_all();
  }

  Work takeItem() {
    if (isForkedChild()) return nullptr;
    const std::lock_guard lock(mutex_);
    return takeFirst();
  }

  /// To be performed by this thread.
  Work takeFirst() {
    if (items_.empty() || isProcessExiting()) return nullptr;
    Work work = std::move(items_.front());
    items_.pop_front();
    hasItems_ = !items_.empty();
    runner_ = std::this_thread::get_id();
    return work;
  }

  /// After it, no item runs on another thread, nor will.
  void awaitRunningItem() {
    const auto isSettled = [this] {
      return runner_ == std::thread::id() || runner_ == std::this_thread::get_id();
    };
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kLongestItemAtExit, isSettled);
  }

  bool runUntil(const std::function<bool()>& condition, std::optional<Clock::time_point> deadline) {
    for (;;) {
      if (condition && condition()) return true;
      Work work = awaitItem(deadline);
      if (!work) return false;
      perform(std::move(work));
    }
  }

  /// Nothing when the run is to end. While another thread exits the process, the run neither begins
  /// an item nor ends by itself: a main function that returned now would exit a second time.
  Work awaitItem(std::optional<Clock::time_point> deadline) {
    if (isForkedChild() || isThreadExitingProcess()) return nullptr;
    if (deadline && Clock::now() >= *deadline) return nullptr;
    thread_local constinit ShortWaits waits;
    const auto isAwake = [this] { return isStopRequested_ || (hasItems_ && !isProcessExiting()); };
    const ShortWaits::Wait wait(waits, isAwake);
    std::unique_lock lock(mutex_);
    if (!deadline) {
      changed_.wait(lock, isAwake);
    } else if (!changed_.wait_until(lock, *deadline, isAwake)) {
      return nullptr;
    }
    return isStopRequested_ ? nullptr : takeFirst();
  }

  std::once_flag isRegistered_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> items_;
  std::shared_ptr<const Poster> poster_;
  std::thread::id runner_;  ///< of the item in progress
  // Written under the lock, and read without it by a wait that begins awake.
  std::atomic<bool> hasItems_ = false;
  std::atomic<bool> isStopRequested_ = false;
};

}  // namespace

DispatchQueue& DispatchQueue::main() { return MainQueue::instance(); }

void runMainQueue() { MainQueue::instance().run(nullptr, std::nullopt); }

bool runMainQueue(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
  // Far beyond any wait, and far from the clock's overflow.
  constexpr std::chrono::milliseconds kLongestBound = std::chrono::years(10);
  return MainQueue::instance().run(condition, Clock::now() + std::min(bound, kLongestBound));
}

void stopMainQueue() { MainQueue::instance().stop(); }

void setMainQueuePoster(std::function<void(std::function<void()> runOneItem)> post) {
  MainQueue::instance().setPoster(std::move(post));
}

}  // namespace quillbay::platform
