// bench-fingerprint FILE...: the library's fingerprints as a whole process, printed as sha256sum
// prints its digests.

#include <iostream>

#include "benchmarks/support/FileFingerprints.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

void run(const std::vector<std::string>& paths) {
  const auto fingerprints = fileFingerprints(paths);
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
