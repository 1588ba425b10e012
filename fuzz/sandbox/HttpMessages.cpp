#include "fuzz/sandbox/HttpMessages.h"

#include <algorithm>
#include <charconv>

namespace quillbay::fuzz {

namespace {

using Headers = std::map<std::string, std::string>;

/// Without its CR LF; absent when there is none, or a control character before it.
std::optional<std::string_view> takeLine(std::string_view& bytes) {
  const std::size_t end = bytes.find("\r\n");
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view line = bytes.substr(0, end);
  bytes.remove_prefix(end + 2);
  if (line.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos)
    return std::nullopt;
  return line;
}

bool isTokenCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         std::string_view("!#$%&'*+-.^_`|~").contains(c);
}

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// The values of equal names are joined, as RFC 9110, section 5.3, does.
std::optional<Headers> takeHeaders(std::string_view& bytes) {
  Headers headers;
  while (const auto line = takeLine(bytes)) {
    if (line->empty()) return headers;
    const std::size_t colon = line->find(':');
    if (colon == 0 || colon == std::string_view::npos) return std::nullopt;
    std::string name(line->substr(0, colon));
    if (!std::ranges::all_of(name, isTokenCharacter)) return std::nullopt;
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const auto [place, isNew] = headers.emplace(name, trimmed(line->substr(colon + 1)));
    if (!isNew) place->second += ", " + std::string(trimmed(line->substr(colon + 1)));
  }
  return std::nullopt;
}

std::optional<std::size_t> number(std::string_view text, int base = 10) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<std::string> takeBytes(std::string_view& bytes, std::size_t count) {
  if (count > bytes.size()) return std::nullopt;
  std::string taken(bytes.substr(0, count));
  bytes.remove_prefix(count);
  return taken;
}

std::optional<std::string> takeChunks(std::string_view& bytes) {
  std::string body;
  while (const auto line = takeLine(bytes)) {
    const auto count = number(*line, 16);
    const auto chunk = count ? takeBytes(bytes, *count) : std::nullopt;
    if (!chunk || takeLine(bytes) != "") return std::nullopt;
    if (chunk->empty()) return body;
    body += *chunk;
  }
  return std::nullopt;
}

std::optional<std::string> takeBody(std::string_view& bytes, const HttpReply& reply) {
  if (reply.headers.contains("transfer-encoding")) {
    const bool isChunked =
        reply.header("transfer-encoding") == "chunked" && !reply.headers.contains("content-length");
    return isChunked ? takeChunks(bytes) : std::nullopt;
  }
  const auto count = number(reply.header("content-length"));
  return count ? takeBytes(bytes, *count) : std::nullopt;
}

}  // namespace

std::optional<HttpReply> takeReply(std::string_view& bytes, std::string_view method) {
  HttpReply reply;
  while (reply.status < 200) {
    const auto line = takeLine(bytes);
    if (!line || !line->starts_with("HTTP/1.1 ") || line->size() < 13) return std::nullopt;
    reply.status = static_cast<int>(number(line->substr(9, 3)).value_or(0));
    auto headers = takeHeaders(bytes);
    if (!headers || reply.status < 100 || reply.status > 599) return std::nullopt;
    reply.headers = *std::move(headers);
  }
  if (method == "HEAD" || reply.status == 204 || reply.status == 304) return reply;
  auto body = takeBody(bytes, reply);
  if (!body) return std::nullopt;
  reply.body = *std::move(body);
  return reply;
}

std::optional<std::size_t> requestByteCount(std::string_view bytes) {
  const std::size_t whole = bytes.size();
  if (!takeLine(bytes)) return std::nullopt;
  const auto headers = takeHeaders(bytes);
  if (!headers || headers->contains("transfer-encoding")) return std::nullopt;
  const std::size_t headByteCount = whole - bytes.size();
  const auto length = headers->find("content-length");
  if (length == headers->end()) return headByteCount;
  const auto bodyByteCount = number(length->second);
  if (!bodyByteCount || *bodyByteCount > bytes.size()) return std::nullopt;
  return headByteCount + *bodyByteCount;
}

}  // namespace quillbay::fuzz
