#pragma once

#include <chrono>
#include <cstdint>

namespace quillbay::platform {

/// Tells when nothing has moved on a transfer for its time-out. Speed does not matter, nor how long
/// the whole takes: a byte now and then is enough. Engine thread.
class SilenceWatch {
 public:
  explicit SilenceWatch(std::chrono::seconds timeout) : timeout_(timeout) {}

  void restart();

  /// The bytes received and sent so far; to be called at least every half second.
  void observe(std::int64_t receivedByteCount, std::int64_t sentByteCount);

  /// The time-out has passed; stays so until `restart`.
  bool isOver() const { return isOver_; }

 private:
  const std::chrono::seconds timeout_;
  std::chrono::steady_clock::time_point lastMovement_;
  std::int64_t receivedByteCount_ = 0;
  std::int64_t sentByteCount_ = 0;
  bool isOver_ = false;
};

}  // namespace quillbay::platform
