#include "benchmarks/runner/Workbench.h"

#include "benchmarks/support/SessionText.h"

namespace quillbay::bench {

std::vector<Runs> Workbench::compare(const std::vector<Contender>& contenders,
                                     int roundCount) const {
  return bench::compare(contenders, roundCount, outputFile());
}

std::string Workbench::output(const Command& command) const {
  runCommand(command, outputFile());
  return readText(outputFile());
}

Command Workbench::shareCommand(const std::vector<std::filesystem::path>& shared,
                                const std::string& instance) const {
  Command command = {quillbay,       "share",        "--quiet",  "--instance",          instance,
                     "--connect-to", server.route(), "--cacert", server.authorityFile()};
  command.insert(command.end(), shared.begin(), shared.end());
  return command;
}

Command Workbench::curlUploadCommand(const std::filesystem::path& file) const {
  return {"curl",
          "--silent",
          "--show-error",
          "--fail",
          "--connect-to",
          server.route(),
          "--cacert",
          server.authorityFile(),
          "--upload-file",
          file,
          storeAddress(itemIdentifier(0))};
}

}  // namespace quillbay::bench
