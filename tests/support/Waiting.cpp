#include "Waiting.h"

#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>

#include <algorithm>
#include <memory>

namespace quillbay::test {

std::chrono::milliseconds generousBound() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return std::chrono::seconds(60);
#else
  return std::chrono::seconds(20);
#endif
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
  using Clock = std::chrono::steady_clock;
  // In slices, because what another thread changes does not wake the main queue.
  constexpr std::chrono::milliseconds slice(2);
  const auto end = Clock::now() + bound;
  while (!platform::runMainQueue(condition, slice)) {
    if (Clock::now() >= end) return condition();
  }
  return true;
}

void drainMainQueue() {
  auto reached = std::make_shared<bool>(false);
  platform::DispatchQueue::main().async([reached] { *reached = true; });
  (void)waitUntil([reached] { return *reached; });
}

}  // namespace quillbay::test
