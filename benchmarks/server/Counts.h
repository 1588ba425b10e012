#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <ostream>
#include <string>

namespace quillbay::bench {

/// What a server saw, host by host. Any thread.
class Counts {
 public:
  void addConnection(const std::string& host);
  void addRequest(const std::string& host, std::uint64_t bodyByteCount);

  /// Writes one line a host, `HOST CONNECTIONS REQUESTS BODY-BYTES`, and starts anew.
  void writeAndReset(std::ostream& stream);

 private:
  struct Host {
    std::uint64_t connections = 0;
    std::uint64_t requests = 0;
    std::uint64_t bodyByteCount = 0;
  };

  std::mutex mutex_;
  std::map<std::string, Host> hosts_;  // guarded by mutex_
};

}  // namespace quillbay::bench
