// bench-runner --programs FOLDER --quillbay PROGRAM --folder FOLDER [--only GROUP] [--report FILE]
// [--history FILE]: measures, prints the tables, writes the page, and adds to the history.

#include <fstream>
#include <iostream>
#include <map>
#include <ranges>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/History.h"
#include "benchmarks/runner/Report.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

using Options = std::map<std::string, std::string>;

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options = {{"--programs", ""}, {"--quillbay", ""}, {"--folder", ""},
                     {"--only", ""},     {"--report", ""},   {"--history", ""}};
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const auto option = options.find(arguments[i]);
    if (option == options.end() || i + 1 == arguments.size()) fail("unknown: " + arguments[i]);
    option->second = arguments[i + 1];
  }
  return options;
}

std::vector<MeasuredGroup> measure(const Workbench& bench, const std::string& only) {
  std::vector<MeasuredGroup> measured;
  for (const Group& group : groups()) {
    if (only.empty() || only == group.name) measured.push_back({&group, {}});
  }
  if (measured.empty()) fail("no such group: " + only);
  // Memory, the last, first: what this program has used by then counts as its children's, too.
  for (auto& [group, rows] : measured | std::views::reverse) {
    std::cerr << "measuring: " << group->name << '\n';
    rows = group->measure(bench);
  }
  return measured;
}

void run(const std::vector<std::string>& arguments) {
  Options options = parseOptions(arguments);
  const std::filesystem::path folder = options["--folder"];
  const std::filesystem::path programs = options["--programs"];
  ServerProcess server(programs / "bench-server", folder / "server");
  std::cerr << "making files" << '\n';
  const Workbench bench{programs,
                        options["--quillbay"],
                        folder,
                        makeDataFiles(folder),
                        describeMachine(folder / "output"),
                        server};
  const auto measured = measure(bench, options["--only"]);
  writeGroups(std::cout, measured);
  if (!options["--report"].empty()) {
    std::ofstream page(options["--report"]);
    writePage(page, bench.machine, measured);
  }
  if (!options["--history"].empty()) {
    addToHistory(options["--history"], QUILLBAY_VERSION, bench.machine, measured);
  }
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-runner", argumentCount, arguments,
                                     quillbay::bench::run);
}
