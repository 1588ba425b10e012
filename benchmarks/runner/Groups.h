#pragma once

#include <string>
#include <vector>

#include "benchmarks/runner/Row.h"

namespace quillbay::bench {

struct Workbench;

/// The rows of one table of the page.
struct Group {
  /// For `scripts/bench --only`.
  std::string name;
  std::string title;
  /// What is compared, why with these peers, and where the limits come from.
  std::string text;
  std::vector<Row> (*measure)(const Workbench&);
};

/// In the order of the page.
const std::vector<Group>& groups();

std::vector<Row> fingerprintRows(const Workbench& bench);
std::vector<Row> uploadRows(const Workbench& bench);
std::vector<Row> sessionRows(const Workbench& bench);
std::vector<Row> distanceRows(const Workbench& bench);
std::vector<Row> startRows(const Workbench& bench);
std::vector<Row> idleRows(const Workbench& bench);
std::vector<Row> activityRows(const Workbench& bench);
std::vector<Row> memoryRows(const Workbench& bench);

/// The rows of a group, as they were measured.
struct MeasuredGroup {
  const Group* group = nullptr;
  std::vector<Row> rows;
};

}  // namespace quillbay::bench
