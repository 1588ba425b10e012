#pragma once

#include <algorithm>
#include <string_view>

namespace quillbay::platform {

/// Internal: comparison of protocol names without regard to case, in ASCII whatever the host's
/// locale: in a Turkish one "I" is not the capital of "i" (RFC 9110, sections 5.1 and 8.4.1).
constexpr char asciiLowercase(char character) noexcept {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                              : character;
}

constexpr bool equalsIgnoringASCIICase(std::string_view first, std::string_view second) noexcept {
  return std::ranges::equal(first, second, {}, asciiLowercase, asciiLowercase);
}

constexpr bool precedesIgnoringASCIICase(std::string_view first, std::string_view second) noexcept {
  return std::ranges::lexicographical_compare(first, second, {}, asciiLowercase, asciiLowercase);
}

}  // namespace quillbay::platform
