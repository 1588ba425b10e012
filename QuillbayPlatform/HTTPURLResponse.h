#pragma once

#include <QuillbayPlatform/URL.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillbay::platform {

/// Status and header fields of the final reply to a request. An immutable value.
class HTTPURLResponse {
 public:
  using HeaderFields = std::vector<std::pair<std::string, std::string>>;

  HTTPURLResponse(URL url, int statusCode, HeaderFields headerFields)
      : url_(std::move(url)), statusCode_(statusCode), headerFields_(std::move(headerFields)) {}

  /// The address that answered, after redirects.
  const URL& url() const { return url_; }
  int statusCode() const { return statusCode_; }

  /// The value of the field of this name, compared without regard to case (RFC 9110, section
  /// 5.1); several fields of the name are joined with ", ".
  std::optional<std::string> valueForHTTPHeaderField(std::string_view name) const;

 private:
  URL url_;
  int statusCode_;
  HeaderFields headerFields_;
};

}  // namespace quillbay::platform
