#pragma once

namespace quillbay::test {

/// While it lives, the system gives this process so many more threads and then refuses.
class ThreadLimit {
 public:
  explicit ThreadLimit(int threadCount);
  ~ThreadLimit();
  ThreadLimit(const ThreadLimit&) = delete;
  ThreadLimit& operator=(const ThreadLimit&) = delete;
};

}  // namespace quillbay::test
