#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"

namespace quillbay::bench {
namespace {

constexpr int kRoundCount = 101;
constexpr double kLimit = 1.20;
constexpr const char* kReasonIfMissed =
    "Loading shared libraries takes most of the time. Both load those of libcurl; the packer of "
    "folders brings seven more.";

}  // namespace

std::vector<Row> startRows(const Workbench& bench) {
  const auto runs = bench.compare(
      {{"quillbay", {{bench.quillbay, "--version"}}}, {"curl", {{"curl", "--version"}}}},
      kRoundCount);
  return {ratioRow("`quillbay --version`", "`curl --version`", kLimit,
                   wallSeconds(runs[0], runs[1]), kReasonIfMissed)};
}

}  // namespace quillbay::bench
