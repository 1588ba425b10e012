#pragma once

#include <QuillbayPlatform/Export.h>

#include <functional>
#include <memory>

namespace quillbay::platform {

/// Runs work items asynchronously, never inside the call that hands them over.
///
/// Threads start with the first use of a background queue, block all signals, and are joined when
/// the process exits: the items that run then are awaited; those that have not begun, on any queue,
/// neither run nor are destroyed. A forked child runs no work. While the system has no thread to
/// give, the main queue runs the items of the background queues. Any thread may call `async`.
class QUILLBAY_EXPORT DispatchQueue {
 public:
  /// A work item. It is called once, or never, and destroyed after the call.
  using Work = std::move_only_function<void()>;

  virtual ~DispatchQueue();

  /// Runs `work` later and returns at once. Work items must not throw.
  virtual void async(Work work) = 0;

  /// The one serial context of the host: see MainQueue.h for how it is run.
  static DispatchQueue& main();

  /// The concurrent queue for work that the user is waiting for. Items start in order.
  static DispatchQueue& globalUserInitiated();

  /// A new serial background queue with threads apart from the global queue's, so that long work
  /// there never delays a callback. It may be released while items are waiting; they run all the
  /// same.
  static std::shared_ptr<DispatchQueue> makeSerial();
};

}  // namespace quillbay::platform
