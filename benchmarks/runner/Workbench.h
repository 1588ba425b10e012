#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "benchmarks/runner/ChildProcess.h"
#include "benchmarks/runner/Comparison.h"
#include "benchmarks/runner/DataFiles.h"
#include "benchmarks/runner/Machine.h"
#include "benchmarks/runner/ServerProcess.h"
#include "benchmarks/support/Addresses.h"

namespace quillbay::bench {

/// What every measurement needs.
struct Workbench {
  std::filesystem::path programs;  ///< folder of the bench-* programs
  std::filesystem::path quillbay;  ///< the command-line host
  std::filesystem::path folder;    ///< for files on the way
  DataFiles files;
  Machine machine;
  ServerProcess& server;

  std::string program(const std::string& name) const { return programs / name; }

  std::vector<Runs> compare(const std::vector<Contender>& contenders, int roundCount) const;

  /// What the program printed.
  std::string output(const Command& command) const;

  /// `quillbay share` of these files by way of the server.
  Command shareCommand(const std::vector<std::filesystem::path>& shared,
                       const std::string& instance = kUsualInstance) const;

  /// `curl -T` of the file to the store.
  Command curlUploadCommand(const std::filesystem::path& file) const;

 private:
  std::filesystem::path outputFile() const { return folder / "output"; }
};

}  // namespace quillbay::bench
