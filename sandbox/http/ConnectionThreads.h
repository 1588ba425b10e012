#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quillbay::sandbox {

/// A thread for every open connection, made when needed and kept for the next one: stalled uploads
/// and idle kept-alive connections never make another client wait.
class ConnectionThreads : public httplib::TaskQueue {
 public:
  explicit ConnectionThreads(std::size_t threadLimit) : threadLimit_(threadLimit) {}

  void enqueue(std::function<void()> connection) override;
  void shutdown() override;

 private:
  void run();

  const std::size_t threadLimit_;
  std::mutex mutex_;
  std::condition_variable hasWork_;
  std::deque<std::function<void()>> waiting_;
  std::vector<std::thread> threads_;
  std::size_t idleCount_ = 0;
  bool isShutDown_ = false;
};

}  // namespace quillbay::sandbox
