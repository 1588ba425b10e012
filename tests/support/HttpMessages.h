#pragma once

#include "Gate.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

  std::string method() const;
  std::string target() const;
  /// The field lines, verbatim, without their line ends.
  std::vector<std::string> fieldLines() const;
  /// The value of the first field of this name, compared without regard to case.
  std::optional<std::string> field(std::string_view name) const;
  /// As "Content-Length" says; 0 without one.
  std::uint64_t announcedByteCount() const;
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

  static Reply json(std::string text, int status = 200);
  static Reply empty(int status) { return {.status = status}; }
  static Reply redirect(int status, std::string location);
  static Reply none() { return {.status = 0}; }

  std::string bytes() const;
};

}  // namespace quillbay::test
