#include "benchmarks/runner/Report.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace quillbay::bench {
namespace {

// More than that is not what preparing the run leaves behind.
constexpr double kCalmLoad = 1.5;

constexpr const char* kIntroduction = R"(# Benchmarks

`scripts/bench` installs what is missing, builds the `release` preset, makes its data in a temporary
folder, starts a TLS server on loopback, measures, prints the table below and writes this page. It
takes a few minutes, about 1.2 GiB of disk and 3 GiB of memory, and leaves nothing running.
`scripts/bench --only WORD` prints the rows of one group (`fingerprint`, `upload`, `session`,
`activity`, `memory`) and leaves this page alone.

Every row compares two things in one run. They take turns, at least five times each after one
unmeasured turn, and another one begins in every round. For times, *ratio* is the median of the
ratios of the rounds, and *of minima* the ratio of the two best times; counts and sizes are exact.
Less is better in every row, and a row is reached when the ratio is no greater than the limit.

The server is `bench-server`: a sharing service with ready-made replies (a finalize reply holds the
whole session, compressed for those who ask) and an object store that throws away what it gets. The
files hold random bytes and are in the page cache. *Whole process* means a program from start to end,
with its start-up; `quillbay share` runs as a user runs it, without a terminal.
)";

std::string number(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(value == std::floor(value) ? 0 : 2) << value;
  return text.str();
}

std::string ratioText(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(value < 0.1 ? 3 : 2) << value;
  return text.str();
}

void writeMachine(std::ostream& page, const Machine& machine) {
  page << "\n## The machine of this run\n\n"
       << "- " << machine.processor << ", " << machine.coreCount
       << " cores, SHA instructions: " << (machine.hasShaInstructions ? "yes" : "no") << "; "
       << machine.memory << " of memory\n"
       << "- " << machine.kernel << "; load when the run began: " << number(machine.load)
       << (machine.load > kCalmLoad ? ", so other work disturbed the times" : "") << '\n'
       << "- " << machine.compiler << ", `-O3`\n"
       << "- " << machine.curl << '\n'
       << "- " << machine.openssl << '\n'
       << "- " << machine.coreutils << '\n';
}

void writeReasons(std::ostream& page, const std::vector<Row>& rows) {
  if (std::ranges::all_of(rows, &Row::isReached)) return;
  page << "\n## Rows not reached\n\n";
  for (const Row& row : rows) {
    if (row.isReached()) continue;
    page << "- " << row.work << ", against " << row.against << ": "
         << (row.reasonIfMissed.empty() ? "not explained." : row.reasonIfMissed) << '\n';
  }
}

}  // namespace

void writePage(std::ostream& page, const Machine& machine, const std::vector<Row>& rows) {
  page << kIntroduction;
  writeMachine(page, machine);
  page << "\n## The table\n\n";
  writeTable(page, rows);
  writeReasons(page, rows);
}

void writeTable(std::ostream& page, const std::vector<Row>& rows) {
  page << "| work | against | limit | ratio | of minima | figures | reached |\n"
       << "|---|---|---|---|---|---|---|\n";
  for (const Row& row : rows) {
    const bool isTime = row.ratioOfMinima.has_value();
    page << "| " << row.work << " | " << row.against << " | " << number(row.limit) << " | "
         << (isTime ? ratioText(row.value) : number(row.value)) << " | "
         << (isTime ? ratioText(*row.ratioOfMinima) : "") << " | " << row.figures << " | "
         << (row.isReached() ? "yes" : "**no**") << " |\n";
  }
}

}  // namespace quillbay::bench
