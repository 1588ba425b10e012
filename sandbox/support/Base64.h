#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillbay::sandbox {

std::string base64Encode(std::string_view bytes);

/// Standard alphabet, padded, without line breaks; nothing else is accepted.
std::optional<std::string> base64Decode(std::string_view text);

}  // namespace quillbay::sandbox
