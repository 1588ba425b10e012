#pragma once

#include <string>
#include <string_view>

namespace quillbay::platform {

/// Standard Base64 with padding and without line breaks (RFC 4648, section 4).
std::string base64Encoded(std::string_view bytes);

/// `text` with every byte percent-encoded (upper-case hexadecimal) except ASCII letters and digits
/// and those in `unescaped` (RFC 3986, section 2.1).
std::string percentEncoded(std::string_view text, std::string_view unescaped);

/// `text` with every well-formed percent triplet replaced by its byte.
std::string percentDecoded(std::string_view text);

}  // namespace quillbay::platform
