#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Two lower-case digits a byte.
std::string hexEncode(std::string_view bytes);

}  // namespace quillbay::sandbox
