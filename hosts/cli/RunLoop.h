#pragma once

#include <QuillbayPlatform/MainQueue.h>

#include <chrono>

#include "ExitStatus.h"
#include "Interruption.h"

namespace quillbay::cli {

/// Nine times a second and a last time at the end: never more than ten.
inline constexpr std::chrono::milliseconds kTickInterval{115};

/// Starts `run` and runs the main queue until it is over. `run` has `start()`, `cancel()`,
/// `tick(now)` and `status()`.
template <class Run>
ExitStatus runUntilOver(Run& run, Interruption& interruption) {
  interruption.setHandler([&run] { run.cancel(); });
  run.start();
  while (true) {
    platform::runMainQueue([&run] { return run.status().has_value(); }, kTickInterval);
    if (const auto status = run.status()) return *status;
    run.tick(std::chrono::steady_clock::now());
  }
}

}  // namespace quillbay::cli
