#include "sandbox/support/Time.h"

#include <array>
#include <ctime>

namespace quillbay::sandbox {

Instant systemTime() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string formatTime(Instant instant, const char* pattern) {
  const std::time_t seconds = instant.time_since_epoch().count();
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text;
  return {text.data(), std::strftime(text.data(), text.size(), pattern, &parts)};
}

}  // namespace quillbay::sandbox
