#pragma once

#include <filesystem>
#include <string>

namespace quillbay::bench {

/// The machine and the programs that stand on it, as far as they matter for the figures.
struct Machine {
  std::string processor;
  long coreCount = 0;
  bool hasShaInstructions = false;
  std::string memory;
  std::string kernel;
  /// Programs that wanted to run, on average of the last minute: other work disturbs the figures.
  double load = 0;
  std::string compiler;
  std::string curl;
  std::string openssl;
  std::string coreutils;
};

/// Looks; `outputFile` is overwritten.
Machine describeMachine(const std::filesystem::path& outputFile);

}  // namespace quillbay::bench
