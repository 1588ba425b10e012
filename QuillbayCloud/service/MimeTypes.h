#pragma once

#include <string_view>

namespace quillbay::cloud {

/// Internal: the MIME type of the path's extension, without regard to case;
/// "application/octet-stream" for an unknown one or none. The extension is what follows the last
/// full stop of the last path component, also of a name that begins with it (".png"). Slashes at
/// the end do not count. Any thread; the result lives for ever.
std::string_view mimeType(std::string_view path);

}  // namespace quillbay::cloud
