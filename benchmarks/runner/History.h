#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Machine.h"

namespace quillbay::bench {

/// Adds a release to the page that has one column for each, or replaces its column. The page is
/// read back: what it says of other releases stays, also of rows that are no longer measured.
void addToHistory(const std::filesystem::path& page, const std::string& version,
                  const Machine& machine, const std::vector<MeasuredGroup>& groups);

}  // namespace quillbay::bench
