#pragma once

#include <ostream>
#include <vector>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Machine.h"

namespace quillbay::bench {

/// Writes the page: how to run, what the columns mean, the machine, and the groups.
void writePage(std::ostream& page, const Machine& machine,
               const std::vector<MeasuredGroup>& groups);

/// Writes the table of each group, with the reasons for the rows that were missed.
void writeGroups(std::ostream& page, const std::vector<MeasuredGroup>& groups);

}  // namespace quillbay::bench
