#include "Waiting.h"

#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>

#include <memory>

namespace quillbay::test {

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
