#include "Request.h"

#include <strings.h>

#include <cstdlib>

namespace quillbay::test {
namespace {

std::string wordOfFirstLine(const std::string& head, int index) {
  const std::string line = head.substr(0, head.find("\r\n"));
  std::size_t begin = 0;
  for (; index > 0 && begin != std::string::npos; --index) {
    const std::size_t space = line.find(' ', begin);
    begin = space == std::string::npos ? space : space + 1;
  }
  if (begin == std::string::npos) return {};
  return line.substr(begin, line.find(' ', begin) - begin);
}

}  // namespace

std::string Request::method() const { return wordOfFirstLine(head, 0); }
std::string Request::target() const { return wordOfFirstLine(head, 1); }
std::string Request::version() const { return wordOfFirstLine(head, 2); }

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

std::vector<std::string> Request::fields(std::string_view name) const {
  std::vector<std::string> values;
  for (const std::string& line : fieldLines()) {
    if (line.size() <= name.size() || line[name.size()] != ':') continue;
    if (::strncasecmp(line.data(), name.data(), name.size()) != 0) continue;
    const std::size_t begin = line.find_first_not_of(" \t", name.size() + 1);
    values.push_back(begin == std::string::npos ? std::string() : line.substr(begin));
  }
  return values;
}

std::optional<std::string> Request::field(std::string_view name) const {
  const auto values = fields(name);
  if (values.empty()) return std::nullopt;
  return values.front();
}

std::uint64_t Request::announcedByteCount() const {
  const auto value = field("Content-Length");
  return value ? std::strtoull(value->c_str(), nullptr, 10) : 0;
}

}  // namespace quillbay::test
