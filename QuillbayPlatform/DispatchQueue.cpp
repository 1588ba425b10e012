#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/WorkerPool.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>

namespace quillbay::platform {
namespace {

WorkerPool& globalPool() {
  static constinit OnFirstUse<WorkerPool> pool;
  return pool.get([] {
    const std::size_t threadCount = std::max(2U, std::thread::hardware_concurrency());
    return std::make_unique<WorkerPool>(
        WorkerPool::Settings{.threadName = "quillbay-work",
                             .maximumThreadCount = threadCount,
                             .maximumIdleThreadCount = threadCount});
  });
}

/// Without a limit: a serial queue whose item blocks must not hold up the others.
WorkerPool& serialPool() {
  static constinit OnFirstUse<WorkerPool> pool;
  return pool.get([] {
    return std::make_unique<WorkerPool>(
        WorkerPool::Settings{.threadName = "quillbay-serial",
                             .maximumThreadCount = std::numeric_limits<std::size_t>::max(),
                             .maximumIdleThreadCount = 4});
  });
}

class ConcurrentQueue final : public DispatchQueue {
 public:
  void async(Work work) override {
    if (work) globalPool().submit(std::move(work));
  }
};

/// While items wait, one job in the pool runs them one after the other and keeps the queue alive.
class SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
 public:
  void async(Work work) override {
    if (!work || isForkedChild()) return;
    {
      const std::lock_guard lock(mutex_);
      items_.push_back(std::move(work));
      if (std::exchange(isRunning_, true)) return;
    }
    submitRun();
  }

 private:
  void submitRun() {
    serialPool().submit([self = shared_from_this()] { self->run(); });
  }

  void run() {
    while (!isProcessExiting()) {
      Work work = takeNext();
      if (!work) return;
      work();
    }
    // The pool keeps what it does not run any more, and with it the items.
    submitRun();
  }

  Work takeNext() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) {
      isRunning_ = false;
      return nullptr;
    }
    Work work = std::move(items_.front());
    items_.pop_front();
    return work;
  }

  std::mutex mutex_;
  std::deque<Work> items_;
  bool isRunning_ = false;
};

}  // namespace

DispatchQueue::~DispatchQueue() = default;

DispatchQueue& DispatchQueue::globalUserInitiated() {
  static constinit OnFirstUse<ConcurrentQueue> queue;
  return queue.get();
}

std::shared_ptr<DispatchQueue> DispatchQueue::makeSerial() {
  // Now, not with the first item: what the queue's owner registers afterwards is stopped before
  // the pool and may still hand it items.
  serialPool().prepare();
  return std::make_shared<SerialQueue>();
}

}  // namespace quillbay::platform
