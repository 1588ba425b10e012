#pragma once

#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>

#include <chrono>
#include <functional>
#include <memory>

namespace quillbay::test {

/// Long enough for anything that should happen; only a failing test waits it out.
constexpr std::chrono::milliseconds generousBound() { return std::chrono::seconds(10); }

/// Runs the main queue on this thread until `condition` holds, whichever thread makes it hold.
/// Returns whether it does.
[[nodiscard]] inline bool waitUntil(const std::function<bool()>& condition,
                                    std::chrono::milliseconds bound = generousBound()) {
  using Clock = std::chrono::steady_clock;
  // In slices, because what another thread changes does not wake the main queue.
  constexpr std::chrono::milliseconds slice(2);
  const auto end = Clock::now() + bound;
  while (!platform::runMainQueue(condition, slice)) {
    if (Clock::now() >= end) return condition();
  }
  return true;
}

/// Runs everything that is in the main queue now.
inline void drainMainQueue() {
  const auto reached = std::make_shared<bool>(false);
  platform::DispatchQueue::main().async([reached] { *reached = true; });
  (void)waitUntil([reached] { return *reached; });
}

}  // namespace quillbay::test
