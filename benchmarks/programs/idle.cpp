// bench-idle AUTHORITY-FILE ROUTE [FILE...]: shares the files, if any, prints `idle`, and runs the
// main queue, as a host does that waits for its user, until standard input ends.

#include <iostream>
#include <thread>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/Share.h"

namespace quillbay::bench {
namespace {

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 2) fail("usage: bench-idle AUTHORITY-FILE ROUTE [FILE...]");
  useServer(arguments[0], arguments[1]);
  const std::vector<std::string> paths(arguments.begin() + 2, arguments.end());
  const auto controller = shareController(paths);
  if (!paths.empty()) share(*controller);
  const std::jthread input([] {
    for (std::string line; std::getline(std::cin, line);) continue;
    platform::stopMainQueue();
  });
  std::cout << "idle" << '\n' << std::flush;
  platform::runMainQueue();
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-idle", argumentCount, arguments, quillbay::bench::run);
}
