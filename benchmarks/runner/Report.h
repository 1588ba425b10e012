#pragma once

#include <ostream>
#include <vector>

#include "benchmarks/runner/Machine.h"
#include "benchmarks/runner/Row.h"

namespace quillbay::bench {

/// Writes the page: how to run, what the columns mean, the machine, the table, and why rows were
/// missed.
void writePage(std::ostream& page, const Machine& machine, const std::vector<Row>& rows);

/// Writes the table alone.
void writeTable(std::ostream& page, const std::vector<Row>& rows);

}  // namespace quillbay::bench
