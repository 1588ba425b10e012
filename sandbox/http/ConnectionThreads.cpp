#include "sandbox/http/ConnectionThreads.h"

namespace quillbay::sandbox {

void ConnectionThreads::enqueue(std::function<void()> connection) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(connection));
  if (waiting_.size() > idleCount_ && threads_.size() < threadLimit_) {
    threads_.emplace_back([this] { run(); });
  }
  hasWork_.notify_one();
}

void ConnectionThreads::shutdown() {
  {
    const std::lock_guard lock(mutex_);
    isShutDown_ = true;
  }
  hasWork_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void ConnectionThreads::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idleCount_;
    hasWork_.wait(lock, [this] { return !waiting_.empty() || isShutDown_; });
    --idleCount_;
    if (waiting_.empty()) return;
    const std::function<void()> connection = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    connection();
    lock.lock();
  }
}

}  // namespace quillbay::sandbox
