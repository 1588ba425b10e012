#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace quillbay::bench {

/// The `bench-server` that all clients talk to. It ends with this object, and by itself when this
/// program does.
class ServerProcess {
 public:
  struct HostCounts {
    std::uint64_t connections = 0;
    std::uint64_t requests = 0;
    std::uint64_t bodyByteCount = 0;
  };

  ServerProcess(const std::filesystem::path& program, const std::filesystem::path& folder);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  const std::string& authorityFile() const { return authorityFile_; }
  /// The route to it, for curl's `--connect-to`.
  const std::string& route() const { return route_; }

  /// What it saw since the last call, by host.
  std::map<std::string, HostCounts> takeCounts();

 private:
  using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  std::string readLine();

  const std::string authorityFile_;
  std::string route_;
  Stream toServer_;
  Stream fromServer_;
  pid_t pid_ = -1;
};

}  // namespace quillbay::bench
