#pragma once

#include <strings.h>

#include <string>

namespace quillbay::platform {

/// Orders the names of HTTP header fields without regard to case (RFC 9110, section 5.1).
struct HTTPFieldNameLess {
  bool operator()(const std::string& first, const std::string& second) const noexcept {
    return strcasecmp(first.c_str(), second.c_str()) < 0;
  }
};

}  // namespace quillbay::platform
