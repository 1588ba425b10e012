#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONDecoder.h>

#include <expected>
#include <optional>
#include <string>
#include <utility>

namespace quillbay::cloud {

/// What an S3-style object store says when it refuses a file. An immutable value; any thread.
class QUILLBAY_EXPORT AmazonError final : public platform::Error {
 public:
  /// `type`: the store's machine-readable name, such as "AccessDenied". `message`: a sentence, as
  /// the store sent it; show it as plain text only.
  AmazonError(std::string type, std::string message)
      : type_(std::move(type)), message_(std::move(message)) {}

  /// The store's machine-readable name of the refusal, such as "AccessDenied".
  const std::string& type() const { return type_; }
  /// The store's sentence, in its language. Plain text from a server, never markup.
  const std::string& message() const { return message_; }

  std::string description() const override;
  /// Always the message.
  std::optional<std::string> errorDescription() const override { return message_; }

  /// Reads {"type": text, "message": text}; both are required.
  static std::expected<AmazonError, platform::ErrorPtr> decode(platform::JSONReader& reader);

  /// By type and message.
  friend bool operator==(const AmazonError& left, const AmazonError& right) {
    return left.type_ == right.type_ && left.message_ == right.message_;
  }

 private:
  std::string type_;
  std::string message_;
};

}  // namespace quillbay::cloud
