#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/model/SessionContext.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/URL.h>
#include <QuillbayPlatform/URLRequest.h>

#include <expected>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillbay::cloud {

/// Internal: builds every request that the library sends, and sends none. Immutable; any thread.
/// The builders that take files look at their attributes and block on the file system.
class RequestFactory {
 public:
  class ContentDispositionType;
  class Error;

  /// Fingerprint (SHA-256, lower-case hexadecimal) by file URL.
  using Fingerprints = std::unordered_map<platform::URL, std::string>;
  using Result = std::expected<platform::URLRequest, platform::ErrorPtr>;

  static std::shared_ptr<const RequestFactory> create(std::string instanceIdentifier);

  const std::string& instanceIdentifier() const { return instanceIdentifier_; }

  /// Announces the context's files and the configuration. A file without a fingerprint is announced
  /// without. Fails for the first file whose attributes cannot be read (their error) or hold no
  /// size (`Error`), or with a `JSONError` for a text that is not UTF-8 or an expiration date that
  /// is not finite: left out, the link would never expire.
  Result createSessionRequest(const SessionContext& context, const Fingerprints& fingerprints,
                              const SessionConfiguration& configuration) const;

  platform::URLRequest deleteSessionRequest(std::string_view sessionIdentifier,
                                            std::string_view token) const;

  platform::URLRequest uploadUrlRequest(std::string_view sessionIdentifier,
                                        std::string_view itemIdentifier,
                                        std::string_view token) const;

  /// The PUT of a file to the object store, without its body. `Content-Disposition` after RFC 6266.
  /// Fails like `createSessionRequest`.
  Result uploadRequest(const platform::URL& url, const platform::URL& fileURL,
                       ContentDispositionType contentDispositionType) const;

  /// `etag`: the object store's entity tag with whatever quotes it has.
  platform::URLRequest finalizeRequest(std::string_view sessionIdentifier,
                                       std::string_view itemIdentifier, std::string_view token,
                                       std::string_view etag) const;

 private:
  explicit RequestFactory(std::string instanceIdentifier);

  /// The base address, the instance identifier and the components, none of them encoded.
  platform::URL serviceAddress(std::initializer_list<std::string_view> components) const;

  const std::string instanceIdentifier_;
};

/// Whether the object store is to serve a file for saving or for showing (RFC 6266).
class RequestFactory::ContentDispositionType {
 public:
  static constexpr ContentDispositionType attachment() {
    return ContentDispositionType("attachment");
  }
  static constexpr ContentDispositionType inline_() { return ContentDispositionType("inline"); }

  /// "attachment" or "inline", exactly.
  static constexpr std::optional<ContentDispositionType> fromRawValue(std::string_view rawValue) {
    for (const auto type : {attachment(), inline_()}) {
      if (type.rawValue() == rawValue) return type;
    }
    return std::nullopt;
  }
  constexpr std::string_view rawValue() const { return rawValue_; }

  friend bool operator==(const ContentDispositionType&, const ContentDispositionType&) = default;

 private:
  constexpr explicit ContentDispositionType(std::string_view rawValue) : rawValue_(rawValue) {}

  std::string_view rawValue_;
};

class RequestFactory::Error final : public platform::Error {
 public:
  enum class Case {
    invalidFilePath,  ///< part of the type; raised nowhere
    invalidFileSize,  ///< a file has attributes but no size: it is no regular file
  };

  explicit Error(Case value) : value_(value) {}

  Case value() const { return value_; }
  std::string description() const override;

  friend bool operator==(const Error& left, const Error& right) {
    return left.value_ == right.value_;
  }

 private:
  Case value_;
};

}  // namespace quillbay::cloud
