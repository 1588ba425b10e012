#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SerialQueue.h>
#include <QuillbayPlatform/WorkerPool.h>

#include <limits>
#include <utility>

namespace quillbay::platform {
namespace {

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

}  // namespace

std::shared_ptr<SerialQueue> SerialQueue::create() {
  // Now, not with the first item: what the queue's owner registers afterwards is stopped before
  // the pool and may still hand it items.
  serialPool().prepare();
  return std::shared_ptr<SerialQueue>(new SerialQueue);
}

void SerialQueue::async(Work work) {
  if (!work || isForkedChild()) return;
  {
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(work));
    if (std::exchange(isRunning_, true)) return;
  }
  submitRun();
}

void SerialQueue::runHereOrAsync(Work work) {
  if (isForkedChild()) return;
  if (!beginHere()) return async(std::move(work));
  work();
  work = nullptr;
  endHere();
}

bool SerialQueue::beginHere() {
  const std::lock_guard lock(mutex_);
  return !isProcessExiting() && !std::exchange(isRunning_, true);
}

void SerialQueue::endHere() {
  if (isForkedChild()) return;
  {
    const std::lock_guard lock(mutex_);
    isRunning_ = !items_.empty();
    if (!isRunning_) return;
  }
  submitRun();
}

void SerialQueue::submitRun() {
  serialPool().submit([self = shared_from_this()] { self->run(); });
}

void SerialQueue::run() {
  while (!isProcessExiting()) {
    Work work = takeNext();
    if (!work) return;
    work();
  }
  // The pool keeps what it does not run any more, and with it the items.
  submitRun();
}

SerialQueue::Work SerialQueue::takeNext() {
  const std::lock_guard lock(mutex_);
  if (items_.empty()) {
    isRunning_ = false;
    return nullptr;
  }
  Work work = std::move(items_.front());
  items_.pop_front();
  return work;
}

}  // namespace quillbay::platform
