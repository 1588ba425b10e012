#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Safe in element content and in quoted attributes, of HTML and of XML. Characters that would
/// reorder the text around them become U+FFFD.
std::string escapeMarkup(std::string_view text);

}  // namespace quillbay::sandbox
