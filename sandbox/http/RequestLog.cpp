#include "sandbox/http/RequestLog.h"

#include <array>
#include <cstdio>

#include "sandbox/support/Time.h"

namespace quillbay::sandbox {

namespace {

std::string timeStamp() { return formatTime(systemTime(), "%Y-%m-%dT%H:%M:%SZ "); }

/// Bytes that could steer a terminal or forge a line.
std::string printable(std::string text) {
  for (char& c : text) {
    if (c <= ' ' || c == '\x7f') c = '?';
  }
  return text;
}

}  // namespace

std::string failedHandshakeLine(const std::string& reason) {
  return timeStamp() + "TLS handshake failed: " + reason;
}

std::string logLine(const FinishedRequest& request) {
  std::array<char, 32> milliseconds{};
  std::snprintf(milliseconds.data(), milliseconds.size(), "%.1fms",
                std::chrono::duration<double, std::milli>(request.duration).count());
  return timeStamp() + printable(request.method) + " " + printable(request.path) + " " +
         std::to_string(request.status) + " in=" + std::to_string(request.receivedByteCount) +
         " out=" + std::to_string(request.sentByteCount) + " " + milliseconds.data();
}

}  // namespace quillbay::sandbox
