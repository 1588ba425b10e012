#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"

namespace quillbay::bench {
namespace {

constexpr std::size_t kFileCount = 1'000;
constexpr int kRoundCount = 15;
constexpr double kLimit = 1.02;
constexpr const char* kReasonIfMissed =
    "An observer is called ten times a second, and at each of three steps a file; what that costs "
    "is less than the difference from one run of this program to the next.";

Row observerRow(const Workbench& bench, const std::string& work, const Command& observed,
                const Command& ignored) {
  const auto runs = bench.compare({{"observed", {observed}}, {"ignored", {ignored}}}, kRoundCount);
  return ratioRow(work + " with an observer, processor time", "the same without", kLimit,
                  processorSeconds(runs[0], runs[1]), kReasonIfMissed);
}

Row shareRow(const Workbench& bench) {
  const auto command = [&](const std::string& word) {
    Command share = {bench.program("bench-share"), bench.server.authorityFile(),
                     bench.server.route(), word};
    share.insert(share.end(), bench.files.small.begin(), bench.files.small.begin() + kFileCount);
    return share;
  };
  Row row =
      observerRow(bench, "Share of 1,000 files of 4 KiB", command("observe"), command("ignore"));
  bench.server.takeCounts();
  return row;
}

}  // namespace

std::vector<Row> activityRows(const Workbench& bench) {
  const std::string program = bench.program("bench-fingerprint");
  return {shareRow(bench),
          observerRow(bench, "Fingerprint of 1 GiB", {program, "--observe", bench.files.large},
                      {program, bench.files.large})};
}

}  // namespace quillbay::bench
