#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SignalMask.h>
#include <QuillbayPlatform/WorkerPool.h>
#include <pthread.h>

#include <system_error>
#include <utility>

namespace quillbay::platform {

void WorkerPool::prepare() {
  if (isForkedChild()) return;
  std::call_once(prepared_, [this] {
    prepareProcess();
    stopAtExit([this] { stop(); });
  });
}

void WorkerPool::submit(Job job) {
  // Before any lock: in a forked child a thread that does not exist may hold it.
  if (isForkedChild()) return;
  prepare();
  Threads finished;
  bool hasThread = false;
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    finished.swap(finishedThreads_);
    const bool areThreadsShort = jobs_.size() > idleThreadCount_;
    if (areThreadsShort && threads_.size() < settings_.maximumThreadCount) startThread();
    hasThread = !threads_.empty();
  }
  jobArrived_.notify_one();
  if (!hasThread) DispatchQueue::main().async([this] { serveFromMainQueue(); });
  for (std::thread& thread : finished) thread.join();
}

void WorkerPool::startThread() {
  if (isStopping_ || isProcessExiting()) return;
  const SignalMask allBlocked;
  const auto self = threads_.emplace(threads_.end());
  try {
    *self = std::thread([this, self] { runThread(self); });
  } catch (const std::system_error&) {
    // The system has none to give: the job waits for a thread of ours, or for the main queue.
    threads_.erase(self);
  }
}

/// Called once for each job that met no thread. Threads may be had again by now; else the job runs
/// here, since a host is better served late than never.
void WorkerPool::serveFromMainQueue() {
  Job job;
  {
    const std::lock_guard lock(mutex_);
    if (threads_.empty() && !jobs_.empty()) startThread();
    if (!threads_.empty() || jobs_.empty()) return;
    job = takeFirst();
  }
  job();
}

WorkerPool::Job WorkerPool::takeFirst() {
  Job job = std::move(jobs_.front());
  jobs_.pop_front();
  return job;
}

void WorkerPool::runThread(Threads::iterator self) {
  pthread_setname_np(pthread_self(), settings_.threadName);
  std::unique_lock lock(mutex_);
  while (awaitJob(lock)) {
    Job job = takeFirst();
    lock.unlock();
    job();
    job = nullptr;
    lock.lock();
  }
  // While stopping, all handles belong to stop().
  if (!isStopping_) finishedThreads_.splice(finishedThreads_.end(), threads_, self);
}

bool WorkerPool::awaitJob(std::unique_lock<std::mutex>& lock) {
  for (;;) {
    if (isStopping_ || isProcessExiting()) return false;
    if (!jobs_.empty()) return true;
    if (idleThreadCount_ >= settings_.maximumIdleThreadCount) return false;
    ++idleThreadCount_;
    jobArrived_.wait(lock);
    --idleThreadCount_;
  }
}

void WorkerPool::stop() {
  Threads threads;
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    threads.swap(threads_);
    threads.splice(threads.end(), finishedThreads_);
  }
  jobArrived_.notify_all();
  for (std::thread& thread : threads) {
    // A job of ours called exit(): its thread is the one that ends the process.
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
      continue;
    }
    thread.join();
  }
}

}  // namespace quillbay::platform
