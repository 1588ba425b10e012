#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Safe in element content and in quoted attributes, of HTML and of XML.
std::string escapeMarkup(std::string_view text);

}  // namespace quillbay::sandbox
