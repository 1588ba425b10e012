#pragma once

#include <QuillbayPlatform/HTTPURLResponse.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::platform {

/// Gathers the final reply of a request from header lines and body pieces, up to a limit that holds
/// for the body as it travels and once more for what is packed in it. Every status line begins
/// another reply, in place of the one before: interim replies (status 1xx) precede the final one,
/// and libcurl may repeat a request by itself. Engine thread.
class ReplyCollector {
 public:
  explicit ReplyCollector(std::size_t maximumByteCount) : maximumByteCount_(maximumByteCount) {}

  /// Forgets everything: another request follows.
  void reset();

  /// One line of a reply's head, line end included; the empty line ends the head. False once the
  /// head is over the limit.
  bool appendHeaderLine(std::string_view line);

  /// A piece of the body. False once the body is over the limit.
  bool appendBody(std::string_view bytes);

  bool isOverLimit() const { return overLimit_; }
  /// The status once the final head is complete, else 0.
  int statusCode() const { return headComplete_ ? statusCode_ : 0; }
  /// The final reply's head from `url`; nothing before that is complete.
  std::optional<HTTPURLResponse> response(const URL& url) const;
  /// The body, in whatever content coding it came.
  std::string takeBody() { return std::move(body_); }
  /// The body without its content coding (RFC 9110, section 8.4.1). A body that is damaged or in
  /// another coding than gzip is given as it came: the status tells its meaning all the same, and
  /// who reads it finds that it is not what it should be. Nothing if it is over the limit unpacked.
  std::optional<std::string> takeUnpackedBody(std::string_view coding);

 private:
  void beginReply(std::string_view statusLine);
  void appendField(std::string_view line);

  const std::size_t maximumByteCount_;
  std::size_t headByteCount_ = 0;
  int statusCode_ = 0;
  bool headComplete_ = false;
  bool overLimit_ = false;
  HTTPURLResponse::HeaderFields headerFields_;
  std::string body_;
};

}  // namespace quillbay::platform
