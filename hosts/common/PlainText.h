#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::host {

/// Texts as people read them on a terminal. Functions of their arguments; any thread.

/// The number of code points; nothing if `text` is not UTF-8.
std::optional<std::size_t> codePointCount(std::string_view text);

/// The number of characters as people count them (grapheme clusters, UAX #29); nothing if `text` is
/// not UTF-8.
std::optional<std::size_t> characterCount(std::string_view text);

/// `text` as one line that cannot drive a terminal: control characters and marks that reorder the
/// line are left out, line breaks become spaces, what is no UTF-8 becomes U+FFFD, and a text of
/// more than 500 characters is cut. For whatever came from a server.
std::string plainLine(std::string_view text);

/// `name` between single quotes, with everything `plainLine` would drop written as \xHH, so that
/// the reader can tell which file is meant.
std::string inQuotes(std::string_view name);

/// How many columns of a terminal `text`, a plain line, fills.
std::size_t columnCount(std::string_view text);

/// `text`, a plain line, in at most `columnCount` columns: the end gives way to "...".
std::string shortened(const std::string& text, std::size_t columnCount);

/// "0 bytes", "999 bytes", "1.2 kB", "64.0 MB": decimal units and one decimal, as the window and
/// the pages behind the links write them.
std::string byteCountText(std::uint64_t byteCount);

/// `text` with a capital as its first letter. Empty for an empty text.
std::string capitalized(std::string_view text);

/// "0:07", "12:34", "1:02:03".
std::string durationText(std::chrono::seconds duration);

/// "1 file", "3 files".
std::string fileCountText(std::size_t count);

}  // namespace quillbay::host
