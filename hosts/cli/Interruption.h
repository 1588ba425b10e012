#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "hosts/common/FileDescriptor.h"

namespace quillbay::cli {

/// Ctrl-C and requests to terminate (SIGINT, SIGTERM, SIGHUP), on a thread of its own: the first
/// asks the program to end in order, the second ends it at once, and so does a program that takes
/// longer than two seconds for its order. A signal that the caller has chosen to ignore (`nohup`,
/// a shell's background job) stays ignored.
///
/// Create it before any other thread starts: threads inherit that these signals are blocked.
class Interruption {
 public:
  /// `beforeAbruptEnd` is called on this object's thread right before the process ends. Throws
  /// `std::system_error` when the system has no descriptors or threads left.
  explicit Interruption(std::function<void()> beforeAbruptEnd);
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  /// The signals stay blocked.
  ~Interruption();

  /// `handler` is called on the main queue after the first signal. Set it on the main queue's
  /// thread before the queue runs.
  void setHandler(std::function<void()> handler) { handler_ = std::move(handler); }

  /// Readable from the first signal on, for a wait in `poll`.
  int descriptor() const { return occurrence_.get(); }
  bool hasOccurred() const { return hasOccurred_; }

 private:
  enum class Event { signal, stop, timeout };

  void watch();
  Event wait(std::chrono::milliseconds bound) const;

  const std::function<void()> beforeAbruptEnd_;
  std::function<void()> handler_;
  host::FileDescriptor signals_;
  host::FileDescriptor occurrence_;
  host::FileDescriptor stop_;
  std::atomic<bool> hasOccurred_ = false;
  std::thread thread_;
};

}  // namespace quillbay::cli
