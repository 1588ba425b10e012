#include "sandbox/http/Target.h"

#include <algorithm>

#include "sandbox/support/PercentCoding.h"

namespace quillbay::sandbox {

namespace {

/// Calls `visit` with each part between separators; an empty text has one empty part.
template <typename Visitor>
void split(std::string_view text, char separator, Visitor visit) {
  while (true) {
    const std::size_t end = text.find(separator);
    visit(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

std::string decode(std::string_view text, bool isForm) {
  std::string copy(text);
  if (isForm) std::ranges::replace(copy, '+', ' ');
  return percentDecode(copy);
}

}  // namespace

Target::Target(std::string_view text) {
  const std::size_t queryStart = text.find('?');
  path = text.substr(0, queryStart);
  if (queryStart != std::string_view::npos) query = text.substr(queryStart + 1);
  std::string_view relative = path;
  if (relative.starts_with('/')) relative.remove_prefix(1);
  split(relative, '/',
        [this](std::string_view segment) { segments.push_back(percentDecode(segment)); });
}

std::vector<std::pair<std::string, std::string>> parseParameters(std::string_view text,
                                                                 bool isForm) {
  std::vector<std::pair<std::string, std::string>> parameters;
  split(text, '&', [&](std::string_view part) {
    if (part.empty()) return;
    const std::size_t equals = part.find('=');
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view() : part.substr(equals + 1);
    parameters.emplace_back(decode(part.substr(0, equals), isForm), decode(value, isForm));
  });
  return parameters;
}

}  // namespace quillbay::sandbox
