#pragma once

#include <QuillbayPlatform/Date.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "hosts/common/History.h"

namespace quillbay::cli {

/// The shares of the history as `quillbay list` prints them, in their order. `now` tells which have
/// expired.

/// A line for each share below a line of headings: when, state, files, size, expiry, title, link.
/// With `columnCount`, titles are cut so that the lines fit, as far as they can; links never are.
std::string shareTable(const std::vector<host::RememberedShare>& shares, platform::Date now,
                       std::optional<std::size_t> columnCount);

/// One JSON object a line for each share. Without tokens.
std::string shareObjects(const std::vector<host::RememberedShare>& shares, platform::Date now);

}  // namespace quillbay::cli
