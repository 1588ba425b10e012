#pragma once

#include <functional>

namespace quillbay::desktop {

/// Requests of the system to terminate (SIGINT, SIGTERM, SIGHUP): the first asks the program to end
/// in order, the second of the same kind ends it at once. One at a time; main thread, with a
/// QApplication.
class TerminationRequest {
 public:
  /// `handler` is called on the main thread, from the event loop.
  explicit TerminationRequest(std::function<void()> handler);
  TerminationRequest(const TerminationRequest&) = delete;
  TerminationRequest& operator=(const TerminationRequest&) = delete;
  ~TerminationRequest();
};

}  // namespace quillbay::desktop
