#pragma once

#include "Gate.h"

#include <strings.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillbay::test {

/// A request as it arrived, byte for byte.
struct Request {
  /// Bytes of a body that are kept; of a longer one `body` is the beginning.
  static constexpr std::size_t keptBodyByteCount = 16 * 1024 * 1024;

  /// From the request line to the empty line, both included.
  std::string head = {};
  std::string body = {};
  /// Body bytes read so far, kept or not.
  std::uint64_t bodyByteCount = 0;

  std::string method() const { return head.substr(0, head.find(' ')); }
  std::string target() const {
    const std::size_t begin = head.find(' ') + 1;
    return head.substr(begin, head.find(' ', begin) - begin);
  }
  /// The field lines, verbatim, without their line ends.
  std::vector<std::string> fieldLines() const {
    std::vector<std::string> lines;
    std::istringstream text(head.substr(head.find('\n') + 1));
    for (std::string line; std::getline(text, line) && line != "\r";) {
      lines.push_back(line.substr(0, line.size() - 1));
    }
    return lines;
  }
  /// The value of the first field of this name, compared without regard to case.
  std::optional<std::string> field(std::string_view name) const {
    for (const std::string& line : fieldLines()) {
      if (line.size() <= name.size() || line[name.size()] != ':') continue;
      if (::strncasecmp(line.data(), name.data(), name.size()) != 0) continue;
      const std::size_t begin = line.find_first_not_of(" \t", name.size() + 1);
      return begin == std::string::npos ? std::string() : line.substr(begin);
    }
    return std::nullopt;
  }
  /// As "Content-Length" says; 0 without one.
  std::uint64_t announcedByteCount() const {
    return std::stoull(field("Content-Length").value_or("0"));
  }
};

/// An ordinary reply. "Content-Length" is added where it belongs.
struct Reply {
  /// 0: none; the connection closes without a byte of reply.
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headerFields = {};
  std::string body = {};
  /// Holds the reply back until the gate opens.
  std::shared_ptr<Gate> sendAfter = {};
  /// Goes out in place of status, fields and body; then the connection closes.
  std::string raw = {};

  static Reply json(std::string text, int status = 200) {
    return {.status = status,
            .headerFields = {{"Content-Type", "application/json"}},
            .body = std::move(text)};
  }
  static Reply empty(int status) { return {.status = status}; }
  static Reply redirect(int status, std::string location) {
    return {.status = status, .headerFields = {{"Location", std::move(location)}}};
  }
  static Reply none() { return {.status = 0}; }

  std::string bytes() const {
    if (!raw.empty() || status == 0) return raw;
    std::string text = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n";
    for (const auto& [name, value] : headerFields) text += name + ": " + value + "\r\n";
    if (status >= 200 && status != 204 && status != 304) {
      text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    }
    return text + "\r\n" + body;
  }
};

}  // namespace quillbay::test
