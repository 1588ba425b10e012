#include "Requests.h"

#include <algorithm>
#include <charconv>

namespace quillbay::fuzz {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeadEnd = "\r\n\r\n";

std::string_view trimmed(std::string_view text) {
  const auto first = std::min(text.find_first_not_of(' '), text.size());
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

bool equalsInLowerCase(std::string_view text, std::string_view lowerCase) {
  return std::ranges::equal(text, lowerCase, {}, [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
  });
}

}  // namespace

std::string_view Request::method() const {
  return std::string_view(head).substr(0, head.find(' '));
}

std::vector<std::string_view> Request::values(std::string_view name) const {
  std::vector<std::string_view> values;
  std::string_view rest = head;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find(kLineEnd));
    rest.remove_prefix(line.size() + kLineEnd.size());
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !equalsInLowerCase(line.substr(0, colon), name))
      continue;
    values.push_back(trimmed(line.substr(colon + 1)));
  }
  return values;
}

std::size_t Request::bodyByteCount() const {
  std::size_t byteCount = 0;
  const auto lengths = values("content-length");
  if (lengths.empty()) return 0;
  std::from_chars(lengths.front().data(), lengths.front().data() + lengths.front().size(),
                  byteCount);
  return byteCount;
}

std::vector<Request> requestsIn(std::string_view received) {
  std::vector<Request> requests;
  while (!received.empty() && received.front() >= 'A' && received.front() <= 'Z') {
    const std::size_t headEnd = received.find(kHeadEnd);
    if (headEnd == std::string_view::npos) break;
    const std::size_t headByteCount = headEnd + kLineEnd.size();
    Request request{std::string(received.substr(0, headByteCount)), {}};
    received.remove_prefix(headEnd + kHeadEnd.size());
    request.body = received.substr(0, request.bodyByteCount());
    received.remove_prefix(request.body.size());
    requests.push_back(std::move(request));
  }
  return requests;
}

}  // namespace quillbay::fuzz
