#pragma once

#include <QuillbayPlatform/Date.h>

#include <cmath>
#include <cstdint>

namespace quillbay::host {

/// Seconds since 1970 for calendars that count whole ones. The service and the history may hold any
/// number: what is beyond 64 bits becomes an instant that no calendar can show.
inline std::int64_t wholeSeconds(platform::Date date) {
  constexpr double kLimit = 9e18;
  const double seconds = platform::secondsSince1970(date);
  return static_cast<std::int64_t>(std::fmin(std::fmax(seconds, -kLimit), kLimit));
}

}  // namespace quillbay::host
