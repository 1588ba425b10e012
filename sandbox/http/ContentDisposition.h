#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// A file name without what a recipient's system could take for a path or a control character, or
/// show in another order.
std::string safeFileName(std::string_view fileName);

/// The header value, with an ASCII form of the name for old clients and the exact one in UTF-8.
std::string contentDisposition(bool isInline, std::string_view fileName);

}  // namespace quillbay::sandbox
