#pragma once

#include <QuillbayPlatform/Progress.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace quillbay::platform {

/// Carries a transfer's byte count from the engine thread to its progress object on the main
/// queue. The engine reports tens of thousands of times a gigabyte, so updates go by the clock: at
/// most one every 100 ms, at most one under way, and one at the end.
class TaskProgress : public std::enable_shared_from_this<TaskProgress> {
 public:
  static std::shared_ptr<TaskProgress> create() {
    return std::shared_ptr<TaskProgress>(new TaskProgress);
  }

  /// For the main queue. 0 of 100 units until the first update.
  const std::shared_ptr<Progress>& progress() const { return progress_; }

  /// Engine thread, at least twice a second. A body that is sent again after a redirect does not
  /// take the count back.
  void update(std::int64_t sentByteCount, std::int64_t expectedByteCount);

  /// Engine thread: the transfer succeeded; a body without bytes is complete now.
  void complete();

 private:
  TaskProgress();

  void post();
  void apply();

  const std::shared_ptr<Progress> progress_ = Progress::create(100);
  std::atomic<std::int64_t> sentByteCount_ = 0;
  std::atomic<std::int64_t> expectedByteCount_ = 0;
  std::atomic<bool> complete_ = false;
  std::atomic<bool> postPending_ = false;
  std::chrono::steady_clock::time_point engineThreadNextPost_;
  std::int64_t engineThreadPostedByteCount_ = 0;
};

}  // namespace quillbay::platform
