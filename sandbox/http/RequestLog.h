#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace quillbay::sandbox {

/// Takes one finished line.
using LogSink = std::function<void(const std::string&)>;

struct FinishedRequest {
  std::string method;
  /// Without the query: it may hold a signature.
  std::string path;
  int status = 0;
  std::uint64_t receivedByteCount = 0;
  std::uint64_t sentByteCount = 0;
  std::chrono::steady_clock::duration duration{};
};

/// "2026-01-01T00:00:00Z TLS handshake failed: no shared cipher"
std::string failedHandshakeLine(const std::string& reason);

/// "2026-01-01T00:00:00Z PUT /objects/a/b 200 in=1048700 out=180 12.3ms"
std::string logLine(const FinishedRequest& request);

}  // namespace quillbay::sandbox
