#pragma once

#include <algorithm>
#include <string_view>

namespace quillbay::sandbox {

/// What header fields are made of: RFC 9110, section 5.6.

/// Of names, and of the parts of a media type.
inline bool isTokenCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("!#$%&'*+-.^_`|~").contains(c);
}

/// A value without the blanks around it, which do not belong to it.
inline std::string_view trimmed(std::string_view value) {
  constexpr std::string_view blanks = " \t";
  value.remove_prefix(std::min(value.find_first_not_of(blanks), value.size()));
  return value.substr(0, value.find_last_not_of(blanks) + 1);
}

}  // namespace quillbay::sandbox
