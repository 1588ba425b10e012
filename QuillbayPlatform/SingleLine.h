#pragma once

#include <string>
#include <string_view>

namespace quillbay::platform {

/// `text` as one line that may be written to a log or a terminal. For names and texts that come
/// from a server, a file system or a user.
///
/// A space replaces every control character (C0, DEL, C1), line separator (U+2028, U+2029) and
/// mark that changes the direction of the text around it (U+061C, U+200E, U+200F, U+202A to U+202E,
/// U+2066 to U+2069): they start new lines, steer terminals, or make a line show other words than
/// it holds. U+FFFD replaces every byte that is not part of well-formed UTF-8. Any thread.
std::string singleLine(std::string_view text);

}  // namespace quillbay::platform
