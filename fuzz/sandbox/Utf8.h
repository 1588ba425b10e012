#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace quillbay::fuzz {

/// What the JSON library takes as UTF-8: a second opinion.
inline bool isUtf8(std::string_view bytes) {
  std::string text(bytes);
  for (char& c : text) {
    // Some of ASCII has to be escaped in JSON.
    if ((c & 0x80) == 0) c = 'a';
  }
  return nlohmann::json::accept('"' + text + '"');
}

}  // namespace quillbay::fuzz
