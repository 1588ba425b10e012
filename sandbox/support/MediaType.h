#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// A Content-Type value taken apart.
struct MediaType {
  /// "image/png", in lower case.
  std::string essence;
  bool hasCharset = false;
  bool hasQuotedValue = false;
};

/// Nothing unless the whole text is one media type as RFC 9110, section 8.3.1, writes it.
std::optional<MediaType> parseMediaType(std::string_view text);

}  // namespace quillbay::sandbox
