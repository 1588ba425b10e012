#pragma once

#include <string_view>

namespace quillbay::sandbox {

/// Checks the head of a request, line by line, as RFC 9112 has a server do. The HTTP library skips
/// a line that it does not understand; were that the length of a body, the body would be taken for
/// the next request.
class HeadCheck {
 public:
  /// Whether this line, with the end that it has, may come next. The first is the request line.
  bool accepts(std::string_view line);

 private:
  bool acceptsHeader(std::string_view name, std::string_view value);

  bool hasRequestLine_ = false;
  bool hasLength_ = false;
};

}  // namespace quillbay::sandbox
