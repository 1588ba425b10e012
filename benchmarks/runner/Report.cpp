#include "benchmarks/runner/Report.h"

#include <algorithm>

namespace quillbay::bench {
namespace {

// More than that is not what preparing the run leaves behind.
constexpr double kCalmLoad = 1.5;

constexpr const char* kIntroduction = R"(# Benchmarks

`scripts/bench` measures the library and its command against the programs and libraries that do the
same work, and writes this page. [Earlier releases](benchmarks-history.md) have a page of their own.

## How to read it

Every row compares two things in one run. They take turns, at least five times each after one
unmeasured turn, and another one begins in every round. *Ratio* is ours divided by theirs: of times
the median of the rounds, and *best* divides the two best times; counts and sizes are exact. Less is
better in every row, and a row is reached when its ratio is no greater than its limit. The reason for
a row that is not reached follows its table.

The server is `bench-server`: a sharing service with ready-made replies and an object store that throws
away what it gets, over TLS on loopback. The files hold random bytes and are in the page cache.
`quillbay` runs installed, as a user runs it, without a terminal.

## How to repeat it

`scripts/bench` installs what is missing, builds the `release` preset, makes its data in a temporary
folder and leaves nothing running. It takes several minutes, about 1.2 GiB of disk and 3 GiB of memory.
`scripts/bench --only WORD` prints one table and leaves this page alone; the word is beside the heading.
)";

void writeMachine(std::ostream& page, const Machine& machine) {
  page << "\n## The machine of this run\n\n"
       << "- " << machine.processor << ", " << machine.coreCount
       << " cores, SHA instructions: " << (machine.hasShaInstructions ? "yes" : "no") << "; "
       << machine.memory << " of memory\n"
       << "- " << machine.kernel << "; load when the run began: " << numberText(machine.load)
       << (machine.load > kCalmLoad ? ", so other work disturbed the times" : "") << '\n'
       << "- " << machine.compiler << ", `-O3`\n"
       << "- " << machine.curl << '\n'
       << "- " << machine.openssl << '\n'
       << "- " << machine.coreutils << '\n';
}

/// The number of the row's reason among `reasons`, counted from 1; rows may share one.
std::size_t reasonNumber(std::vector<std::string>& reasons, const Row& row) {
  const std::string reason =
      row.reasonIfMissed.empty() ? std::string("Not explained.") : row.reasonIfMissed;
  const auto found = std::ranges::find(reasons, reason);
  const auto index = static_cast<std::size_t>(found - reasons.begin());
  if (found == reasons.end()) reasons.push_back(reason);
  return index + 1;
}

void writeTable(std::ostream& page, const std::vector<Row>& rows) {
  page << "\n| what | against | ratio | limit | reached | best | figures |\n"
       << "|---|---|---|---|---|---|---|\n";
  std::vector<std::string> reasons;
  for (const Row& row : rows) {
    page << "| " << row.work << " | " << row.against << " | " << row.valueText() << " | "
         << row.limitText() << " | ";
    if (row.isReached()) {
      page << "yes";
    } else {
      page << "**no**, see " << reasonNumber(reasons, row);
    }
    page << " | " << (row.isOfTimes() ? ratioText(*row.ratioOfMinima) : "") << " | " << row.figures
         << " |\n";
  }
  if (!reasons.empty()) page << '\n';
  for (std::size_t i = 0; i < reasons.size(); ++i) page << i + 1 << ". " << reasons[i] << '\n';
}

}  // namespace

void writePage(std::ostream& page, const Machine& machine,
               const std::vector<MeasuredGroup>& groups) {
  page << kIntroduction;
  writeMachine(page, machine);
  writeGroups(page, groups);
}

void writeGroups(std::ostream& page, const std::vector<MeasuredGroup>& groups) {
  for (const auto& [group, rows] : groups) {
    page << "\n## " << group->title << " (`" << group->name << "`)\n\n" << group->text << '\n';
    writeTable(page, rows);
  }
}

}  // namespace quillbay::bench
