#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillbay::sandbox {

/// A request target taken apart: "/a%20b/c?x=1".
struct Target {
  explicit Target(std::string_view text);

  /// As it came, still encoded, without the query.
  std::string path;
  /// As it came, without the question mark.
  std::string query;
  /// The path between its slashes, decoded after the split.
  std::vector<std::string> segments;
};

/// "a=1&b=%20" as decoded pairs in their order. '+' means a space only in submitted forms.
std::vector<std::pair<std::string, std::string>> parseParameters(std::string_view text,
                                                                 bool isForm = false);

}  // namespace quillbay::sandbox
