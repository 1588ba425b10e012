#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillbay::sandbox {

struct ByteRange {
  std::uint64_t offset = 0;
  std::uint64_t byteCount = 0;
};

enum class RangeRequest { whole, part, unsatisfiable };

/// What a Range header asks of content with the given length. Several ranges, other units and
/// malformed headers ask for the whole, as RFC 9110 allows. `range` is set for a part.
RangeRequest evaluateRange(std::string_view header, std::uint64_t contentByteCount,
                           ByteRange& range);

}  // namespace quillbay::sandbox
