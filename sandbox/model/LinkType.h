#pragma once

#include <optional>
#include <string_view>

namespace quillbay::sandbox {

/// What opening a link gives.
enum class LinkType {
  page,      ///< a page that lists the files
  download,  ///< the file, or a ZIP of several
  direct,    ///< the content itself, shown in place
};

std::optional<LinkType> linkTypeFromText(std::string_view text);
std::string_view text(LinkType type);

}  // namespace quillbay::sandbox
