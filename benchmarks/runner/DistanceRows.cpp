#include <algorithm>
#include <chrono>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/RoundTrip.h"

namespace quillbay::bench {
namespace {

constexpr std::size_t kFileCount = 60;
constexpr int kRoundCount = 5;
constexpr double kLimit = 1.08;

// Three a file: address, upload, finalize. Two for each connection, to the service and to the
// store: TCP and TLS 1.3. One creates the session.
constexpr std::size_t kLeastRoundTripCount = (3 * kFileCount) + (2 * 2) + 1;

void checkCounts(const Workbench& bench) {
  auto counts = bench.server.takeCounts();
  if (counts[kServiceHost].requests != (2 * kFileCount) + 1 ||
      counts[kStoreHost].requests != kFileCount) {
    fail("a share over a long route went wrong");
  }
}

}  // namespace

std::vector<Row> distanceRows(const Workbench& bench) {
  Command share =
      bench.shareCommand({bench.files.small.begin(), bench.files.small.begin() + kFileCount});
  std::ranges::replace(share, bench.server.route(), bench.server.longRoute());
  const auto runs = bench.compare(
      {{"quillbay share", {share}, [&](const auto&) { checkCounts(bench); }}}, kRoundCount);

  Usage ideal;
  ideal.wallSeconds = std::chrono::duration<double>(kRoundTrip * kLeastRoundTripCount).count();
  return {ratioRow("`quillbay share` of 60 files of 4 KiB",
                   "3 × 60 + 2 × 2 + 1 = 185 round trips of 20 ms", kLimit,
                   wallSeconds(runs[0], Runs(kRoundCount, ideal)),
                   "Starting the program, the fingerprints, and what both sides do between two "
                   "messages add to the time of the round trips.")};
}

}  // namespace quillbay::bench
