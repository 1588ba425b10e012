#pragma once

#include <string_view>

namespace quillbay::cloud {

/// Internal: the MIME type that the path's extension stands for, without regard to case;
/// "application/octet-stream" for an unknown one or none. Only the text after the last full stop
/// counts. Any thread; the result lives for ever.
std::string_view mimeType(std::string_view path);

}  // namespace quillbay::cloud
