#pragma once

#include <chrono>

namespace quillbay::platform {

/// An instant with sub-second resolution and no time zone.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

/// Seconds from 1970-01-01T00:00:00Z to 2001-01-01T00:00:00Z.
inline constexpr double kSecondsFrom1970To2001 = 978'307'200.0;

/// The instant `seconds` after 1970-01-01T00:00:00Z; before it, where negative.
constexpr Date dateFromSecondsSince1970(double seconds) {
  return Date(std::chrono::duration<double>(seconds));
}

/// Seconds from 1970-01-01T00:00:00Z to `date`, with their fraction.
constexpr double secondsSince1970(Date date) { return date.time_since_epoch().count(); }

/// The instant `seconds` after 2001-01-01T00:00:00Z; before it, where negative.
constexpr Date dateFromSecondsSince2001(double seconds) {
  return dateFromSecondsSince1970(seconds + kSecondsFrom1970To2001);
}

/// Seconds from 2001-01-01T00:00:00Z to `date`, with their fraction.
constexpr double secondsSince2001(Date date) {
  return secondsSince1970(date) - kSecondsFrom1970To2001;
}

}  // namespace quillbay::platform
