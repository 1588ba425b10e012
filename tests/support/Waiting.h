#pragma once

#include <chrono>
#include <functional>

namespace quillbay::test {

/// Long enough for anything that should happen; only a failing test waits it out.
constexpr std::chrono::milliseconds generousBound() { return std::chrono::seconds(10); }

/// Runs the main queue on this thread until `condition` holds, whichever thread makes it hold.
/// Returns whether it does.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds bound = generousBound());

/// Runs everything that stands in the main queue now.
void drainMainQueue();

}  // namespace quillbay::test
