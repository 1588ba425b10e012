#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::fuzz {

/// A request as it arrived.
struct Request {
  std::string head;  ///< request line and fields, with their line ends
  std::string body;  ///< what arrived of it

  std::string_view method() const;
  /// The values of the fields of that name, in lower case here.
  std::vector<std::string_view> values(std::string_view name) const;
  /// As announced.
  std::size_t bodyByteCount() const;
  bool isWhole() const { return body.size() == bodyByteCount(); }
};

/// The requests at the beginning of what was received. Bytes that are no request, such as those of
/// TLS, and a head that is not complete end the list.
std::vector<Request> requestsIn(std::string_view received);

}  // namespace quillbay::fuzz
