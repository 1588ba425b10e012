#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sandbox/http/Reply.h"

namespace quillbay::sandbox {

/// A whole HTML page in the look of all link pages. `title` is text, `content` is markup.
Reply pageReply(int status, std::string_view title, std::string_view content);

/// A page that says one thing.
Reply messageReply(int status, std::string_view heading, std::string_view message);

/// "348 bytes", "12.4 MB"
std::string humanSize(std::uint64_t byteCount);

}  // namespace quillbay::sandbox
