#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

using std::filesystem::path;

constexpr double kDigestLimit = 1.10;
constexpr double kDigestLimitWithInstructions = 1.35;
constexpr std::array kMediumFileLimits = {1.03, 0.60};
constexpr std::array kLargeFileLimits = {1.05, 0.60};
constexpr std::array kManyFilesLimits = {0.95, 0.70};

Row digestRow(const Workbench& bench, const std::string& size, const path& file, int roundCount) {
  const double limit =
      bench.machine.hasShaInstructions ? kDigestLimitWithInstructions : kDigestLimit;
  const auto pairs =
      parsePairs(bench.output({bench.program("bench-digest"), file, std::to_string(roundCount)}));
  return ratioRow("Fingerprint of " + size, "OpenSSL's digest of the same bytes in memory", limit,
                  pairs, "The copy out of the page cache adds to a digest this fast.");
}

/// One line a file, else the program has not done the work.
std::function<void(const std::string&)> expectLines(std::size_t count) {
  return [count](const std::string& output) {
    const auto lines = std::ranges::count(output, '\n');
    if (!std::cmp_equal(lines, count)) fail("a digest program printed too few lines");
  };
}

std::vector<Row> processRows(const Workbench& bench, const std::string& work,
                             const std::vector<path>& files, std::span<const double> limits,
                             int roundCount) {
  const auto contender = [&](Command command) {
    command.insert(command.end(), files.begin(), files.end());
    return Contender{command[0], {command}, expectLines(files.size())};
  };
  const auto runs =
      bench.compare({contender({bench.program("bench-fingerprint")}),
                     contender({"openssl", "dgst", "-sha256"}), contender({"sha256sum"})},
                    roundCount);
  return {ratioRow(work, "`openssl dgst -sha256`", limits[0], wallSeconds(runs[0], runs[1]),
                   "The library brings libcurl and some forty shared libraries with it, openssl "
                   "five; loading them costs a few milliseconds at the start."),
          ratioRow(work, "`sha256sum`", limits[1], wallSeconds(runs[0], runs[2]),
                   "Opening small files costs more than hashing them; and without SHA instructions "
                   "the two digests differ little.")};
}

void append(std::vector<Row>& rows, std::vector<Row> more) {
  std::ranges::move(more, std::back_inserter(rows));
}

}  // namespace

std::vector<Row> fingerprintRows(const Workbench& bench) {
  const auto& files = bench.files;
  std::vector<Row> rows = {digestRow(bench, "64 MiB", files.medium, 15),
                           digestRow(bench, "1 GiB", files.large, 7)};
  append(rows, processRows(bench, "Fingerprint of 64 MiB, whole process", {files.medium},
                           kMediumFileLimits, 15));
  append(rows, processRows(bench, "Fingerprint of 1 GiB, whole process", {files.large},
                           kLargeFileLimits, 7));
  append(rows, processRows(bench, "Fingerprints of 10,000 files of 4 KiB, whole process",
                           files.small, kManyFilesLimits, 11));
  return rows;
}

}  // namespace quillbay::bench
