#include "HttpMessages.h"

#include <strings.h>

#include <sstream>

namespace quillbay::test {

std::string Request::method() const { return head.substr(0, head.find(' ')); }

std::string Request::target() const {
  const std::size_t begin = head.find(' ') + 1;
  return head.substr(begin, head.find(' ', begin) - begin);
}

std::vector<std::string> Request::fieldLines() const {
  std::vector<std::string> lines;
  std::istringstream text(head.substr(head.find('\n') + 1));
  for (std::string line; std::getline(text, line) && line != "\r";) {
    lines.push_back(line.substr(0, line.size() - 1));
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
  return std::stoull(field("Content-Length").value_or("0"));
}

Reply Reply::json(std::string text, int status) {
  return {.status = status,
          .headerFields = {{"Content-Type", "application/json"}},
          .body = std::move(text)};
}

Reply Reply::redirect(int status, std::string location) {
  return {.status = status, .headerFields = {{"Location", std::move(location)}}};
}

std::string Reply::bytes() const {
  if (!raw.empty() || status == 0) return raw;
  std::string text = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n";
  for (const auto& [name, value] : headerFields) text += name + ": " + value + "\r\n";
  if (status >= 200 && status != 204 && status != 304) {
    text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  return text + "\r\n" + body;
}

}  // namespace quillbay::test
