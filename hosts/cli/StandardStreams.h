#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace quillbay::cli {

/// Opens the standard streams that the caller has closed onto nothing: a file or connection of
/// ours that got such a number would be read from or written over. Writing to one still fails.
/// Call it first.
void occupyStandardStreams();

/// Writes all of `bytes`, whatever the pieces; 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view bytes);

/// Columns of a terminal that may be filled; absent for what is none or does not tell.
std::optional<std::size_t> terminalColumnCount(int descriptor);

/// Whether a write of a line would go through at once.
bool canWriteNow(int descriptor);

}  // namespace quillbay::cli
