#include "benchmarks/runner/ServerProcess.h"

#include <sstream>

#include "benchmarks/support/Addresses.h"

namespace quillbay::bench {

ServerProcess::ServerProcess(const std::filesystem::path& program,
                             const std::filesystem::path& folder)
    : authorityFile_(folder / "ca.pem"), process_({program, folder}) {
  std::string word;
  std::string nearPort;
  std::string farPort;
  std::istringstream(process_.readLine()) >> word >> nearPort >> farPort;
  route_ = loopbackRoute(nearPort);
  longRoute_ = loopbackRoute(farPort);
}

std::map<std::string, ServerProcess::HostCounts> ServerProcess::takeCounts() {
  process_.writeLine("counts");
  std::map<std::string, HostCounts> counts;
  for (std::string line = process_.readLine(); line != "end"; line = process_.readLine()) {
    std::istringstream words(line);
    std::string host;
    words >> host;
    HostCounts& entry = counts[host];
    words >> entry.connections >> entry.requests >> entry.bodyByteCount;
  }
  return counts;
}

}  // namespace quillbay::bench
