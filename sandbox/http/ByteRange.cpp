#include "sandbox/http/ByteRange.h"

#include <algorithm>
#include <charconv>

namespace quillbay::sandbox {

namespace {

std::optional<std::uint64_t> number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

RangeRequest evaluateRange(std::string_view header, std::uint64_t contentByteCount,
                           ByteRange& range) {
  constexpr std::string_view unit = "bytes=";
  const std::size_t dash = header.find('-');
  if (!header.starts_with(unit) || dash == std::string_view::npos) return RangeRequest::whole;
  const std::string_view firstText = header.substr(unit.size(), dash - unit.size());
  const std::string_view lastText = header.substr(dash + 1);
  const auto first = number(firstText);
  const auto last = number(lastText);
  if ((!first && !firstText.empty()) || (!last && !lastText.empty()) || (!first && !last)) {
    return RangeRequest::whole;
  }
  if (!first) {
    if (*last == 0 || contentByteCount == 0) return RangeRequest::unsatisfiable;
    range.byteCount = std::min(*last, contentByteCount);
    range.offset = contentByteCount - range.byteCount;
    return RangeRequest::part;
  }
  if (last && *last < *first) return RangeRequest::whole;
  if (*first >= contentByteCount) return RangeRequest::unsatisfiable;
  range.offset = *first;
  range.byteCount =
      std::min(last.value_or(contentByteCount - 1), contentByteCount - 1) - *first + 1;
  return RangeRequest::part;
}

}  // namespace quillbay::sandbox
