#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::fuzz {

/// A final reply as a strict client reads it.
struct HttpReply {
  int status = 0;
  /// By their names in lower case.
  std::map<std::string, std::string> headers;
  std::string body;

  std::string header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "" : found->second;
  }
};

/// Takes one reply to a request with this method off the front of `bytes`, with the interim replies
/// before it. Absent unless it is well-formed and whole (RFC 9112).
std::optional<HttpReply> takeReply(std::string_view& bytes, std::string_view method);

/// How many bytes the request at the front of `bytes` has, by its Content-Length. Absent for what a
/// server must refuse or cannot know the end of (RFC 9112, sections 5 and 6), and for transfer
/// codings.
std::optional<std::size_t> requestByteCount(std::string_view bytes);

}  // namespace quillbay::fuzz
