#pragma once

#include <QuillbayPlatform/Export.h>

#include <compare>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::platform {

/// A URL reference in the syntax of RFC 3986. An immutable value; two URLs are equal when their
/// texts are. May be used from any thread.
class QUILLBAY_EXPORT URL {
 public:
  /// The URL whose text is `text`, kept byte for byte; nothing if it is empty or does not parse.
  static std::optional<URL> parse(std::string_view text);

  /// The URL whose text is `text` with the bytes that RFC 3986 does not allow percent-encoded in
  /// place. A text that parses is kept as it is. For addresses composed from identifiers that are
  /// inserted without encoding. Still nothing if no encoding can make the text parse.
  static std::optional<URL> parseEncodingInvalid(std::string_view text);

  /// The `file:` URL of a local file. A relative path is taken against the current folder, now;
  /// links are not resolved; "." and repeated slashes fall away. The path's bytes need not be
  /// UTF-8.
  static URL fileURL(const std::filesystem::path& path);

  /// The whole text.
  const std::string& absoluteString() const { return text_; }

  /// Lower-cased scheme without the colon; empty in a relative reference.
  std::string scheme() const;
  /// Lower-cased host without brackets; empty if there is none.
  std::string host() const;
  /// The port as written, else the scheme's own (443 for https, 80 for http), else 0; also 0 for
  /// a number beyond 65535.
  int port() const;
  /// Whether the host has a user name or password before it.
  bool hasUserInfo() const;

  /// The path with percent-encoding removed, as raw bytes. For a file URL: the local path.
  std::string path() const;
  /// The last component of path(): the file name with its extension.
  std::string lastPathComponent() const;

  /// Whether the scheme is `file`.
  bool isFileURL() const;

  /// Scheme, host, port and path: what may be shown. The query of a presigned address is a secret.
  std::string redacted() const;

  /// `reference` resolved against this URL (RFC 3986, section 5.2); nothing if it does not parse
  /// or this URL has no scheme. What need not change keeps its bytes.
  std::optional<URL> resolve(std::string_view reference) const;

  /// By text, byte for byte.
  friend bool operator==(const URL&, const URL&) = default;
  /// By text, byte for byte, so that a URL may be a key.
  friend std::strong_ordering operator<=>(const URL&, const URL&) = default;

 private:
  explicit URL(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

}  // namespace quillbay::platform

template <>
struct std::hash<quillbay::platform::URL> {
  std::size_t operator()(const quillbay::platform::URL& url) const noexcept {
    return std::hash<std::string>()(url.absoluteString());
  }
};
