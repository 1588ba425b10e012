#pragma once

#include <algorithm>
#include <string>

namespace quillbay::cloud {

/// Internal: `text` with control characters replaced by spaces: a server's text must neither start
/// a new line of a log nor steer the terminal that shows it.
inline std::string singleLine(std::string text) {
  const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; };
  std::ranges::replace_if(text, isControl, ' ');
  return text;
}

}  // namespace quillbay::cloud
