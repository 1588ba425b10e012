#include <QuillbayPlatform/JSONEncoder.h>
#include <simdjson.h>

#include <cmath>
#include <nlohmann/json.hpp>

namespace quillbay::platform {

using nlohmann::ordered_json;

/// One object under construction. A nested writer lives only while its parent waits, so the node
/// that it points to does not move.
struct JSONWriter::Target {
  Target(JSONDatePolicy policy) : datePolicy(policy), object(&root) {}
  Target(Target& parentTarget, ordered_json& node, std::string nodeKeyPath)
      : parent(&parentTarget),
        datePolicy(parentTarget.datePolicy),
        object(&node),
        keyPath(std::move(nodeKeyPath)) {
    node = ordered_json::object();
  }

  std::string keyPathOf(std::string_view key) const {
    return keyPath.empty() ? std::string(key) : keyPath + '.' + std::string(key);
  }

  ordered_json& member(std::string_view key) const { return (*object)[std::string(key)]; }

  /// The first failure is kept, at the root.
  void fail(std::string_view key) {
    Target* target = this;
    while (target->parent != nullptr) target = target->parent;
    if (target->failure) return;
    target->failure = std::make_shared<JSONError>(JSONError::Kind::unwritable, keyPathOf(key));
  }

  Target* parent = nullptr;
  JSONDatePolicy datePolicy;
  ordered_json root = ordered_json::object();
  ordered_json* object;
  std::string keyPath;
  ErrorPtr failure;
};

JSONWriter::JSONWriter(std::unique_ptr<Target> target) : target_(std::move(target)) {}
JSONWriter::~JSONWriter() = default;

void JSONWriter::writeString(std::string_view key, std::string_view text) {
  if (!simdjson::validate_utf8(text)) return target_->fail(key);
  target_->member(key) = text;
}

void JSONWriter::writeBoolean(std::string_view key, bool value) { target_->member(key) = value; }

void JSONWriter::writeInteger(std::string_view key, std::int64_t value) {
  target_->member(key) = value;
}

void JSONWriter::writeDate(std::string_view key, Date date) {
  const bool countsFrom2001 = target_->datePolicy == JSONDatePolicy::secondsSince2001;
  const double seconds = countsFrom2001 ? secondsSince2001(date) : secondsSince1970(date);
  if (!std::isfinite(seconds)) return target_->fail(key);
  // Whole seconds since 1970 are what readers of integers expect.
  constexpr double kLargestExactInteger = 9007199254740992.0;
  const bool isInteger =
      std::trunc(seconds) == seconds && std::abs(seconds) <= kLargestExactInteger;
  if (isInteger && !countsFrom2001) {
    target_->member(key) = static_cast<std::int64_t>(seconds);
    return;
  }
  target_->member(key) = seconds;
}

std::unique_ptr<JSONWriter> JSONWriter::beginObject(std::string_view key) {
  return std::unique_ptr<JSONWriter>(new JSONWriter(
      std::make_unique<Target>(*target_, target_->member(key), target_->keyPathOf(key))));
}

void JSONWriter::beginArray(std::string_view key) { target_->member(key) = ordered_json::array(); }

std::unique_ptr<JSONWriter> JSONWriter::beginElement(std::string_view arrayKey) {
  ordered_json& array = target_->member(arrayKey);
  const std::string keyPath = target_->keyPathOf(arrayKey) + '.' + std::to_string(array.size());
  array.emplace_back();
  return std::unique_ptr<JSONWriter>(
      new JSONWriter(std::make_unique<Target>(*target_, array.back(), keyPath)));
}

std::unique_ptr<JSONWriter> JSONEncoder::makeRoot() const {
  return std::unique_ptr<JSONWriter>(
      new JSONWriter(std::make_unique<JSONWriter::Target>(datePolicy_)));
}

std::expected<std::string, ErrorPtr> JSONEncoder::text(const JSONWriter& root) {
  if (root.target_->failure) return std::unexpected(root.target_->failure);
  try {
    return root.target_->root.dump();
  } catch (const ordered_json::exception&) {
    // A key that is no UTF-8: values were looked at when they were written.
    return std::unexpected<ErrorPtr>(
        std::make_shared<JSONError>(JSONError::Kind::unwritable, std::string()));
  }
}

}  // namespace quillbay::platform
