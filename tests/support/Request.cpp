#include "Request.h"

#include <strings.h>

#include <sstream>

namespace quillbay::test {

std::string Request::method() const { return head.substr(0, head.find(' ')); }

std::string Request::target() const {
  std::string method, target;
  std::istringstream(head) >> method >> target;
  return target;
}

std::vector<std::string> Request::fieldLines() const {
  std::vector<std::string> lines;
  std::size_t begin = head.find("\r\n");
  while (begin != std::string::npos) {
    begin += 2;
    const std::size_t end = head.find("\r\n", begin);
    if (end == std::string::npos || end == begin) break;
    lines.push_back(head.substr(begin, end - begin));
    begin = end;
  }
  return lines;
}

std::optional<std::string> Request::field(std::string_view name) const {
  for (const std::string& line : fieldLines()) {
    if (line.size() <= name.size() || line[name.size()] != ':') continue;
    if (::strncasecmp(line.data(), name.data(), name.size()) != 0) continue;
    const std::size_t begin = line.find_first_not_of(" \t", name.size() + 1);
    return begin == std::string::npos ? std::string() : line.substr(begin);
  }
  return std::nullopt;
}

std::uint64_t Request::announcedByteCount() const {
  const auto value = field("Content-Length");
  return value ? std::stoull(*value) : 0;
}

}  // namespace quillbay::test
