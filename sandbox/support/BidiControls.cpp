#include "sandbox/support/BidiControls.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t controlByteCount = 3;

/// UTF-8 keeps the order of the code points.
bool isBidiControl(std::string_view character) {
  return (character >= "\u202A" && character <= "\u202E") ||
         (character >= "\u2066" && character <= "\u2069");
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
