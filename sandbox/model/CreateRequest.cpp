#include "sandbox/model/CreateRequest.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "sandbox/support/Base64.h"
#include "sandbox/support/MediaType.h"

namespace quillbay::sandbox {

namespace {

using nlohmann::json;

constexpr int depthLimit = 8;
constexpr std::size_t itemLimit = 100'000;
constexpr std::size_t nameByteLimit = 1024;
constexpr std::size_t contentTypeByteLimit = 255;
constexpr std::size_t titleByteLimit = 4096;
constexpr std::size_t passwordByteLimit = 1024;
constexpr std::uint64_t fileByteLimit = std::uint64_t{1} << 50;
// The end of the year 9999.
constexpr double latestExpirationSeconds = 253'402'300'799.0;

[[noreturn]] void refuse(const std::string& message) { throw InvalidRequest(message); }

/// An object of the request that knows its place, so that a message can name it.
class Reader {
 public:
  Reader(const json& object, std::string place) : object_(object), place_(std::move(place)) {
    if (!object.is_object()) refuse(place_ + " must be an object.");
  }

  std::optional<std::string> optionalText(const char* key, std::size_t byteLimit) const {
    const auto found = object_.find(key);
    if (found == object_.end()) return std::nullopt;
    if (!found->is_string()) refuse(name(key) + " must be a string.");
    auto text = found->get<std::string>();
    if (text.size() > byteLimit) refuse(name(key) + " is too long.");
    return text;
  }

  std::string text(const char* key, std::size_t byteLimit) const {
    auto found = optionalText(key, byteLimit);
    if (!found) refuse(name(key) + " is missing.");
    return *std::move(found);
  }

  std::string name(const char* key) const { return place_ + "." + key; }

 private:
  const json& object_;
  std::string place_;
};

json parseJson(std::string_view body) {
  const auto boundDepth = [](int depth, json::parse_event_t, json&) {
    if (depth > depthLimit) refuse("The request body is nested too deeply.");
    return true;
  };
  try {
    return json::parse(body, boundDepth);
  } catch (const json::exception&) {
    refuse("The request body is not JSON.");
  }
}

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string readFileName(const Reader& item) {
  std::string name = item.text("file_name", nameByteLimit);
  if (name.empty() || name == "." || name == ".." || name.contains('/') || name.contains('\0')) {
    refuse(item.name("file_name") + " must be a file name without a path.");
  }
  return name;
}

std::uint64_t readContentLength(const Reader& item) {
  const std::string text = item.text("content_length", 20);
  std::uint64_t byteCount = 0;
  const auto error = std::from_chars(text.data(), text.data() + text.size(), byteCount).ec;
  if (!isDigits(text) || error != std::errc() || byteCount > fileByteLimit) {
    refuse(item.name("content_length") + " must be a number of bytes in decimal digits.");
  }
  return byteCount;
}

std::string readContentType(const Reader& item) {
  std::string type = item.text("content_type", contentTypeByteLimit);
  const auto isVisible = [](char c) { return c >= ' ' && c <= '~'; };
  if (!parseMediaType(type) || !std::ranges::all_of(type, isVisible)) {
    refuse(item.name("content_type") + " must be a MIME type.");
  }
  return type;
}

std::optional<std::string> readFingerprint(const Reader& item) {
  auto text = item.optionalText("f", 64);
  if (text &&
      (text->size() != 64 || text->find_first_not_of("0123456789abcdef") != std::string::npos)) {
    refuse(item.name("f") + " must be 64 lower-case hexadecimal digits.");
  }
  return text;
}

std::vector<AnnouncedFile> readFiles(const json& root) {
  const auto items = root.find("items");
  if (items == root.end() || !items->is_array()) refuse("items must be an array.");
  if (items->size() > itemLimit) refuse("A session cannot hold so many files.");
  std::vector<AnnouncedFile> files;
  files.reserve(items->size());
  for (std::size_t i = 0; i < items->size(); ++i) {
    const Reader item((*items)[i], "items[" + std::to_string(i) + "]");
    files.push_back({readFileName(item), readContentType(item), readContentLength(item),
                     readFingerprint(item)});
  }
  return files;
}

LinkType readLinkType(const Reader& config) {
  const auto type = linkTypeFromText(config.text("link_type", 16));
  if (!type) refuse(config.name("link_type") + " must be \"page\", \"download\" or \"direct\".");
  return *type;
}

std::optional<Instant> readExpiration(const Reader& config, Instant now) {
  const auto text = config.optionalText("expiration", 64);
  if (!text) return std::nullopt;
  const std::size_t point = text->find('.');
  double seconds = 0;
  const bool isDecimal =
      isDigits(std::string_view(*text).substr(0, point)) &&
      (point == std::string::npos || isDigits(std::string_view(*text).substr(point + 1)));
  std::from_chars(text->data(), text->data() + text->size(), seconds);
  if (!isDecimal || seconds > latestExpirationSeconds) {
    refuse(config.name("expiration") + " must be seconds since 1970 as decimal text.");
  }
  const Instant instant{std::chrono::seconds(static_cast<std::int64_t>(std::floor(seconds)))};
  if (instant <= now) refuse("The expiration date has already passed.");
  return instant;
}

std::optional<std::string> readPassword(const Reader& config) {
  const auto encoded = config.optionalText("p", passwordByteLimit * 2);
  if (!encoded) return std::nullopt;
  auto password = base64Decode(*encoded);
  if (!password) refuse(config.name("p") + " must be standard Base64.");
  if (password->size() > passwordByteLimit) refuse(config.name("p") + " is too long.");
  // An empty password protects nothing; asking for it would only puzzle.
  if (password->empty()) return std::nullopt;
  return password;
}

bool readIsSecret(const Reader& config) {
  const auto text = config.optionalText("is_secret", 16);
  if (text && *text != "1") refuse(config.name("is_secret") + " can only be \"1\".");
  return text.has_value();
}

}  // namespace

CreateRequest CreateRequest::parse(std::string_view body, Instant now) {
  const json root = parseJson(body);
  if (!root.is_object()) refuse("The request body must be an object.");
  const auto configObject = root.find("config");
  if (configObject == root.end()) refuse("config is missing.");
  const Reader config(*configObject, "config");
  CreateRequest request;
  request.files = readFiles(root);
  request.linkType = readLinkType(config);
  request.title = config.optionalText("title", titleByteLimit);
  request.expiration = readExpiration(config, now);
  request.password = readPassword(config);
  request.isSecret = readIsSecret(config);
  return request;
}

}  // namespace quillbay::sandbox
