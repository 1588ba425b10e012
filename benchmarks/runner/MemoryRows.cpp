#include <sys/resource.h>

#include <algorithm>
#include <sstream>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr int kPeakRoundCount = 5;
constexpr int kDecodeRoundCount = 15;
constexpr int kUploaderCount = 1'000;

double peak(const Runs& runs) {
  std::vector<double> kibibytes;
  for (const Usage& run : runs) kibibytes.push_back(static_cast<double>(run.peakKibibytes));
  // A program's peak includes what its parent had when it started the program.
  rusage own = {};
  getrusage(RUSAGE_SELF, &own);
  if (std::ranges::min(kibibytes) <= static_cast<double>(own.ru_maxrss))
    fail("the runner is too big");
  return median(kibibytes);
}

Row peakRow(std::string work, std::string against, double limit, double ours, double theirs) {
  Row row;
  row.work = std::move(work);
  row.against = std::move(against);
  row.limit = limit;
  row.value = ours / theirs;
  std::ostringstream figures;
  figures << ours << " KiB / " << theirs << " KiB";
  row.figures = figures.str();
  return row;
}

std::vector<Row> peakRows(const Workbench& bench) {
  const auto runs = bench.compare({{"large", {bench.shareCommand({bench.files.large})}},
                                   {"small", {bench.shareCommand({bench.files.small.front()})}},
                                   {"curl -T", {bench.curlUploadCommand(bench.files.large)}}},
                                  kPeakRoundCount);
  bench.server.takeCounts();
  const std::string work = "Peak memory of `quillbay share` of 1 GiB";
  return {peakRow(work, "the same with 4 KiB", 1.05, peak(runs[0]), peak(runs[1])),
          peakRow(work, "`curl -T` of 1 GiB", 1.6, peak(runs[0]), peak(runs[2]))};
}

Row heapRow(const Workbench& bench) {
  std::istringstream words(
      bench.output({bench.program("bench-heap"), std::to_string(kUploaderCount)}));
  double all = 0;
  double one = 0;
  double queue = 0;
  words >> all >> one >> queue;
  Row row;
  row.work = "Heap of the sessions that 1,000 uploaders hold";
  row.against = "one session of 1,000 items";
  row.limit = 1.5;
  row.value = all / one;
  std::ostringstream figures;
  figures << all << " / " << one << " bytes; the queue of uploaders takes "
          << queue / kUploaderCount << " a file";
  row.figures = figures.str();
  return row;
}

}  // namespace

std::vector<Row> memoryRows(const Workbench& bench) {
  std::vector<Row> rows = peakRows(bench);
  rows.push_back(ratioRow("Handling one finalize reply of 10,000 items", "one of 1,000 items", 12,
                          parsePairs(bench.output({bench.program("bench-decode"),
                                                   std::to_string(kDecodeRoundCount)}))));
  rows.push_back(heapRow(bench));
  return rows;
}

}  // namespace quillbay::bench
