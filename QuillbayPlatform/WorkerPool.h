#pragma once

#include <QuillbayPlatform/DispatchQueue.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

namespace quillbay::platform {

/// Internal: threads that take jobs in the order of their submission. Not destroyed once it was
/// given a job; its threads start when jobs need them and are joined when the process exits. Jobs
/// that wait then are kept and never run. Any thread.
class WorkerPool {
 public:
  using Job = DispatchQueue::Work;

  struct Settings {
    const char* threadName;
    std::size_t maximumThreadCount;
    /// A thread that would be idle beside so many others ends.
    std::size_t maximumIdleThreadCount;
  };

  explicit WorkerPool(Settings settings) : settings_(settings) {}
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Registers for the end of the process, without a thread yet. What is registered later is
  /// stopped earlier, and may submit jobs until then.
  void prepare();

  /// Runs `job` on one of the threads and destroys it there; on the main queue if there is no
  /// thread and the system has none to give. Does nothing in a forked child.
  void submit(Job job);

 private:
  using Threads = std::list<std::thread>;

  void startThread();
  void serveFromMainQueue();
  Job takeFirst();
  void runThread(Threads::iterator self);
  bool awaitJob(std::unique_lock<std::mutex>& lock);
  void stop();

  const Settings settings_;
  std::once_flag prepared_;
  std::mutex mutex_;
  std::condition_variable jobArrived_;
  std::deque<Job> jobs_;
  Threads threads_;
  Threads finishedThreads_;
  std::size_t idleThreadCount_ = 0;
  bool isStopping_ = false;
};

}  // namespace quillbay::platform
