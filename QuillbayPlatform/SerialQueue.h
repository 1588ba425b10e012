#pragma once

#include <QuillbayPlatform/DispatchQueue.h>

#include <deque>
#include <memory>
#include <mutex>

namespace quillbay::platform {

/// Internal: the queue of `DispatchQueue::makeSerial`. While items wait, one job in a pool of
/// threads runs them one after the other and keeps the queue alive. Any thread.
class SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
 public:
  static std::shared_ptr<SerialQueue> create();

  void async(Work work) override;

  /// Runs `work` on this thread, inside this call, if no other item runs or waits; otherwise later,
  /// in its turn. Spares the waking of a thread, for items that are done sooner than that.
  void runHereOrAsync(Work work);

 private:
  SerialQueue() = default;

  bool beginHere();
  void endHere();
  void submitRun();
  void run();
  Work takeNext();

  std::mutex mutex_;
  std::deque<Work> items_;
  bool isRunning_ = false;
};

}  // namespace quillbay::platform
