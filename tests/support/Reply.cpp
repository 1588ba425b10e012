#include "Reply.h"

namespace quillbay::test {

Reply Reply::json(std::string text, int status) {
  return {.status = status,
          .headerFields = {{"Content-Type", "application/json"}},
          .body = std::move(text)};
}

Reply Reply::empty(int status) { return {.status = status}; }

Reply Reply::redirect(int status, std::string location) {
  return {.status = status, .headerFields = {{"Location", std::move(location)}}};
}

Reply Reply::none() { return {.status = 0}; }

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
