#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace quillbay::sandbox {

using Instant = std::chrono::sys_seconds;

/// What time it is; tests move it.
using Clock = std::function<Instant()>;

Instant systemTime();

/// A strftime pattern applied to the instant in UTC.
std::string formatTime(Instant instant, const char* pattern);

}  // namespace quillbay::sandbox
