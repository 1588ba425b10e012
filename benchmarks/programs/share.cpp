// bench-share AUTHORITY-FILE ROUTE observe|ignore FILE...: shares the files by the library, with or
// without an observer of its activity.

#include "benchmarks/support/Share.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 4) {
    fail("usage: bench-share AUTHORITY-FILE ROUTE observe|ignore FILE...");
  }
  useServer(arguments[0], arguments[1]);
  const auto controller = shareController({arguments.begin() + 3, arguments.end()});
  std::size_t finishedFileCount = 0;
  platform::Observation observation;
  if (arguments[2] == "observe") {
    observation = controller->observeActivity([&](const cloud::SessionActivity& activity) {
      finishedFileCount = activity.finishedFileCount;
    });
  }
  share(*controller);
  if (arguments[2] == "observe" && finishedFileCount == 0) fail("nothing was observed");
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-share", argumentCount, arguments, quillbay::bench::run);
}
