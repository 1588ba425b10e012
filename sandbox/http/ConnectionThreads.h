#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace quillbay::sandbox {

/// A thread for every open connection, made when needed and kept for a while for the next one:
/// stalled uploads and idle kept-alive connections never make another client wait.
class ConnectionThreads : public httplib::TaskQueue {
 public:
  /// A thread without a connection ends after `idleLimit`. `makeRoom` is called for every
  /// connection that waits because all threads are taken, on the thread that adds it.
  ConnectionThreads(std::size_t threadLimit, std::chrono::milliseconds idleLimit,
                    std::function<void()> makeRoom)
      : threadLimit_(threadLimit), idleLimit_(idleLimit), makeRoom_(std::move(makeRoom)) {}

  void enqueue(std::function<void()> connection) override;
  /// Returns when all connections and threads have ended.
  void shutdown() override;

  std::size_t threadCount() const;

 private:
  using Threads = std::list<std::thread>;

  bool startThread();
  void run(Threads::iterator self);
  bool runNextConnection(std::unique_lock<std::mutex>& lock);

  const std::size_t threadLimit_;
  const std::chrono::milliseconds idleLimit_;
  const std::function<void()> makeRoom_;
  mutable std::mutex mutex_;
  std::condition_variable hasWork_;
  std::condition_variable hasThreadEnded_;
  std::deque<std::function<void()>> waiting_;
  Threads threads_;
  /// The thread that ended last, for the next one that ends to join.
  std::thread ended_;
  std::size_t idleCount_ = 0;
  bool isShutDown_ = false;
};

}  // namespace quillbay::sandbox
