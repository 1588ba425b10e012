// bench-fingerprint [--observe] FILE...: the library's fingerprints as a whole process, printed as
// sha256sum prints its digests; with `--observe`, an observer is told of the activity meanwhile.

#include <iostream>

#include "benchmarks/support/FileFingerprints.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

void run(std::vector<std::string> paths) {
  const bool observes = std::erase(paths, "--observe") > 0;
  const auto fingerprints = observes ? observedFileFingerprints(paths) : fileFingerprints(paths);
  std::string output;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    output.append(fingerprints[i]).append("  ").append(paths[i]).append("\n");
  }
  std::cout << output;
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-fingerprint", argumentCount, arguments,
                                     quillbay::bench::run);
}
