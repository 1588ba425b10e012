#include "benchmarks/server/Counts.h"

#include <utility>

namespace quillbay::bench {

void Counts::addConnection(const std::string& host) {
  const std::lock_guard lock(mutex_);
  ++hosts_[host].connections;
}

void Counts::addRequest(const std::string& host, std::uint64_t bodyByteCount) {
  const std::lock_guard lock(mutex_);
  Host& counts = hosts_[host];
  ++counts.requests;
  counts.bodyByteCount += bodyByteCount;
}

void Counts::writeAndReset(std::ostream& stream) {
  const std::lock_guard lock(mutex_);
  for (const auto& [name, host] : std::exchange(hosts_, {})) {
    stream << name << ' ' << host.connections << ' ' << host.requests << ' ' << host.bodyByteCount
           << '\n';
  }
}

}  // namespace quillbay::bench
