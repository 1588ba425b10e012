#pragma once

#include <QuillbayPlatform/HTTPFieldName.h>
#include <QuillbayPlatform/URL.h>

#include <map>
#include <optional>
#include <string>

namespace quillbay::platform {

/// An HTTP request as a plain value.
struct URLRequest {
  URLRequest(std::string requestMethod, URL requestURL)
      : method(std::move(requestMethod)), url(std::move(requestURL)) {}

  std::string method;
  URL url;
  /// Name to value, verbatim; names go out as written and compare without regard to case. A
  /// value's CR, LF and NUL go out as spaces.
  std::map<std::string, std::string, HTTPFieldNameLess> headerFields;
  std::optional<std::string> body;
  /// How long nothing may move, connecting included; never a limit on the whole transfer.
  int timeoutSeconds = 60;
};

}  // namespace quillbay::platform
