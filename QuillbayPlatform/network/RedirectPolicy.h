#pragma once

#include <QuillbayPlatform/HTTPURLResponse.h>
#include <QuillbayPlatform/URLError.h>
#include <QuillbayPlatform/URLRequest.h>

#include <memory>
#include <variant>

namespace quillbay::platform {

/// Decides what a redirect does to a request (RFC 9110, section 15.4). One object a task; engine
/// thread.
class RedirectPolicy {
 public:
  enum class Kind {
    data,    ///< as browsers do
    upload,  ///< only where the method and the body stay: 307 and 308
  };

  explicit RedirectPolicy(Kind kind) : kind_(kind) {}

  struct FinalReply {};
  using Decision = std::variant<FinalReply, URLRequest, std::shared_ptr<const URLError>>;

  /// That the reply is the final one, or the request that follows it, or why it must not be
  /// followed.
  Decision decide(const URLRequest& request, const HTTPURLResponse& response);

 private:
  bool follows(int statusCode) const;

  Kind kind_;
  int redirectCount_ = 0;
};

}  // namespace quillbay::platform
