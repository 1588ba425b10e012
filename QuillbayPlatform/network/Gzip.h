#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace quillbay::platform {

enum class GzipError {
  damaged,   ///< not gzip, incomplete, or with other bytes than its checksums tell
  tooLarge,  ///< more than the caller's limit when unpacked
};

/// Unpacks a gzip file (RFC 1952): its members one after another, at most `maximumByteCount` bytes
/// in all. What follows the last member and does not begin another, such as padding, is ignored.
std::expected<std::string, GzipError> unpackGzip(std::string_view packed,
                                                 std::size_t maximumByteCount);

}  // namespace quillbay::platform
