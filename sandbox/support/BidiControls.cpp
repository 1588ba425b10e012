#include "sandbox/support/BidiControls.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t controlByteCount = 3;

/// U+202A to U+202E and U+2066 to U+2069, by their bytes in UTF-8.
bool isBidiControl(std::string_view character) {
  if (character.size() != controlByteCount || character[0] != '\xE2') return false;
  const char last = character[2];
  return (character[1] == '\x80' && last >= '\xAA' && last <= '\xAE') ||
         (character[1] == '\x81' && last >= '\xA6' && last <= '\xA9');
}

}  // namespace

std::string replaceBidiControls(std::string_view text, std::string_view replacement) {
  std::string replaced;
  replaced.reserve(text.size());
  while (!text.empty()) {
    const bool isControl = isBidiControl(text.substr(0, controlByteCount));
    if (isControl) {
      replaced += replacement;
    } else {
      replaced += text.front();
    }
    text.remove_prefix(isControl ? controlByteCount : 1);
  }
  return replaced;
}

}  // namespace quillbay::sandbox
