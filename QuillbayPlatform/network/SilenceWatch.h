#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>

namespace quillbay::platform {

/// Tells when nothing has moved on a transfer for its time-out. Speed does not matter, nor how long
/// the whole takes: a byte now and then is enough. Engine thread.
class SilenceWatch {
 public:
  explicit SilenceWatch(std::chrono::seconds timeout) : timeout_(timeout) {}

  void restart();

  /// The bytes received and sent so far. While neither grows, what the connection of `easy` has
  /// still to be acknowledged is looked at: a slow line empties the system's send buffer long
  /// before it takes the next byte from us.
  void observe(std::int64_t receivedByteCount, std::int64_t sentByteCount, CURL* easy);

  /// The time-out has passed; stays so until `restart`.
  bool isOver() const { return isOver_; }

 private:
  const std::chrono::seconds timeout_;
  std::chrono::steady_clock::time_point lastMovement_;
  std::int64_t receivedByteCount_ = 0;
  std::int64_t sentByteCount_ = 0;
  int unacknowledgedByteCount_ = 0;
  bool isOver_ = false;
};

}  // namespace quillbay::platform
