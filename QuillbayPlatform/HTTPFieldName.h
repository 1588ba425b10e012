#pragma once

#include <QuillbayPlatform/ASCIICase.h>

#include <string_view>

namespace quillbay::platform {

/// Orders the names of HTTP header fields without regard to case (RFC 9110, section 5.1).
struct HTTPFieldNameLess {
  bool operator()(std::string_view first, std::string_view second) const noexcept {
    return precedesIgnoringASCIICase(first, second);
  }
};

}  // namespace quillbay::platform
