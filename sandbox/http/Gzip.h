#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Whether an Accept-Encoding header asks for gzip.
bool acceptsGzip(std::string_view acceptEncoding);

std::string gzip(std::string_view text);

}  // namespace quillbay::sandbox
