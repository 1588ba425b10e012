#include "sandbox/http/ConnectionThreads.h"

#include <utility>

namespace quillbay::sandbox {

void ConnectionThreads::enqueue(std::function<void()> connection) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(connection));
    hasWork_.notify_one();
    if (waiting_.size() <= idleCount_ || startThread()) return;
  }
  makeRoom_();
}

void ConnectionThreads::shutdown() {
  std::unique_lock lock(mutex_);
  isShutDown_ = true;
  hasWork_.notify_all();
  hasThreadEnded_.wait(lock, [this] { return threads_.empty(); });
  std::thread last = std::move(ended_);
  lock.unlock();
  if (last.joinable()) last.join();
}

std::size_t ConnectionThreads::threadCount() const {
  const std::lock_guard lock(mutex_);
  return threads_.size();
}

/// With the mutex held; false when there are as many as there may be.
bool ConnectionThreads::startThread() {
  if (threads_.size() == threadLimit_) return false;
  const auto self = threads_.emplace(threads_.end());
  *self = std::thread([this, self] { run(self); });
  return true;
}

void ConnectionThreads::run(Threads::iterator self) {
  std::unique_lock lock(mutex_);
  while (runNextConnection(lock)) {
  }
  std::thread endedBefore = std::exchange(ended_, std::move(*self));
  threads_.erase(self);
  hasThreadEnded_.notify_all();
  lock.unlock();
  if (endedBefore.joinable()) endedBefore.join();
}

/// False when none came in time.
bool ConnectionThreads::runNextConnection(std::unique_lock<std::mutex>& lock) {
  ++idleCount_;
  hasWork_.wait_for(lock, idleLimit_, [this] { return !waiting_.empty() || isShutDown_; });
  --idleCount_;
  if (waiting_.empty()) return false;
  const std::function<void()> connection = std::move(waiting_.front());
  waiting_.pop_front();
  lock.unlock();
  connection();
  lock.lock();
  return true;
}

}  // namespace quillbay::sandbox
