#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>
#include <QuillbayPlatform/URL.h>

#include <expected>
#include <utility>

namespace quillbay::cloud {

/// The presigned address that takes one file by PUT. An immutable value; any thread. Its JSON form
/// is {"url": text}. The address permits to write: its query is a secret.
class QUILLBAY_EXPORT ItemUploadUrl {
 public:
  /// `url`: an absolute https address.
  explicit ItemUploadUrl(platform::URL url) : url_(std::move(url)) {}

  /// The address with its query, a secret.
  const platform::URL& url() const { return url_; }

  /// Fails with a `platform::JSONError` when "url" is missing, no text, or no URL (RFC 3986).
  static std::expected<ItemUploadUrl, platform::ErrorPtr> decode(platform::JSONReader& reader);
  /// Writes the form above, the secret included.
  void encode(platform::JSONWriter& writer) const;

  /// By address.
  friend bool operator==(const ItemUploadUrl&, const ItemUploadUrl&) = default;

 private:
  platform::URL url_;
};

}  // namespace quillbay::cloud
