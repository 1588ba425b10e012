#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Encodes every byte but ASCII letters, digits and "-._~", and those in `alsoKept`.
std::string percentEncode(std::string_view text, std::string_view alsoKept = "");

/// Malformed escapes stay as they are.
std::string percentDecode(std::string_view text);

}  // namespace quillbay::sandbox
