#pragma once

#include <chrono>

namespace quillbay::bench {

/// Between clients and the server, where it is said to be far away.
inline constexpr std::chrono::milliseconds kRoundTrip(20);

}  // namespace quillbay::bench
