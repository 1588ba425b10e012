#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "benchmarks/runner/TalkingProcess.h"

namespace quillbay::bench {

/// The `bench-server` that all clients talk to.
class ServerProcess {
 public:
  struct HostCounts {
    std::uint64_t connections = 0;
    std::uint64_t requests = 0;
    std::uint64_t bodyByteCount = 0;
  };

  ServerProcess(const std::filesystem::path& program, const std::filesystem::path& folder);

  const std::string& authorityFile() const { return authorityFile_; }
  /// The route to it, for curl's `--connect-to`.
  const std::string& route() const { return route_; }
  /// A route on which it is a round trip away.
  const std::string& longRoute() const { return longRoute_; }

  /// What it saw since the last call, by host.
  std::map<std::string, HostCounts> takeCounts();

 private:
  const std::string authorityFile_;
  TalkingProcess process_;
  std::string route_;
  std::string longRoute_;
};

}  // namespace quillbay::bench
