#include <QuillbayPlatform/network/SilenceWatch.h>

#include <utility>

namespace quillbay::platform {

void SilenceWatch::restart() {
  lastMovement_ = std::chrono::steady_clock::now();
  isOver_ = false;
}

void SilenceWatch::observe(std::int64_t receivedByteCount, std::int64_t sentByteCount) {
  const auto now = std::chrono::steady_clock::now();
  const bool received = std::exchange(receivedByteCount_, receivedByteCount) != receivedByteCount;
  const bool sent = std::exchange(sentByteCount_, sentByteCount) != sentByteCount;
  if (received || sent) {
    lastMovement_ = now;
    return;
  }
  isOver_ = now - lastMovement_ >= timeout_;
}

}  // namespace quillbay::platform
