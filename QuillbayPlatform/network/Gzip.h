#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::platform {

/// The size that a gzip file says it has when unpacked, modulo 2^32 (RFC 1952, ISIZE); 0 of one
/// that is too short to say so.
std::size_t gzipUnpackedByteCount(std::string_view packed);

/// Unpacks a gzip file of one member (RFC 1952) in one go, into as much memory as it says it needs.
/// Nothing if it is damaged, incomplete or of another size than it says.
std::optional<std::string> unpackGzip(std::string_view packed);

}  // namespace quillbay::platform
