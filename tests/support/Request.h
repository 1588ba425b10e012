#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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

  /// The request line's parts.
  std::string method() const;
  std::string target() const;

  /// The field lines, verbatim, without their line ends.
  std::vector<std::string> fieldLines() const;
  /// The value of the first field of this name, compared without regard to case.
  std::optional<std::string> field(std::string_view name) const;
  /// As "Content-Length" says; 0 without one.
  std::uint64_t announcedByteCount() const;
};

}  // namespace quillbay::test
