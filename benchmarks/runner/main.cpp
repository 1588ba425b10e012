// bench-runner --programs FOLDER --quillbay PROGRAM --folder FOLDER [--report FILE] [--only GROUP]:
// measures everything, prints the table, and writes the page.

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <utility>

#include "benchmarks/runner/Report.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

using Options = std::map<std::string, std::string>;

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options = {
      {"--programs", ""}, {"--quillbay", ""}, {"--folder", ""}, {"--report", ""}, {"--only", ""}};
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const auto option = options.find(arguments[i]);
    if (option == options.end() || i + 1 == arguments.size()) fail("unknown: " + arguments[i]);
    option->second = arguments[i + 1];
  }
  return options;
}

std::vector<Row> measure(const Workbench& bench, const std::string& only) {
  using Group = std::pair<const char*, std::vector<Row> (*)(const Workbench&)>;
  std::vector<Row> rows;
  bool known = false;
  std::size_t memoryRowCount = 0;
  // Memory first: what this program has used by then counts as its children's, too.
  for (const auto& [name, measureGroup] :
       {Group("memory", memoryRows), Group("fingerprint", fingerprintRows),
        Group("upload", uploadRows), Group("session", sessionRows),
        Group("activity", activityRows)}) {
    if (!only.empty() && only != name) continue;
    known = true;
    std::cerr << "measuring: " << name << '\n';
    for (auto& row : measureGroup(bench)) rows.push_back(std::move(row));
    if (measureGroup == memoryRows) memoryRowCount = rows.size();
  }
  if (!known) fail("no such group: " + only);
  std::ranges::rotate(rows, rows.begin() + static_cast<std::ptrdiff_t>(memoryRowCount));
  return rows;
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
  const auto rows = measure(bench, options["--only"]);
  writeTable(std::cout, rows);
  if (options["--report"].empty()) return;
  std::ofstream page(options["--report"]);
  writePage(page, bench.machine, rows);
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-runner", argumentCount, arguments,
                                     quillbay::bench::run);
}
