#include <QuillbayPlatform/network/AddressPolicy.h>
#include <QuillbayPlatform/network/RedirectPolicy.h>

#include <optional>

namespace quillbay::platform {
namespace {

constexpr int kMaximumRedirectCount = 10;
constexpr const char* kBodyFields[] = {"Content-Disposition", "Content-Encoding", "Content-Length",
                                       "Content-Type"};
constexpr const char* kSessionTokenField = "X-QUILLBAY-SESSION-TOKEN";

std::optional<URL> target(const URL& base, const HTTPURLResponse& response) {
  const auto location = response.valueForHTTPHeaderField("Location");
  if (!location || location->empty()) return std::nullopt;
  const auto reference = URL::parseEncodingInvalid(*location);
  return reference ? base.resolve(reference->absoluteString()) : std::nullopt;
}

bool becomesGet(const std::string& method, int statusCode) {
  if (statusCode == 303) return method != "GET" && method != "HEAD";
  return (statusCode == 301 || statusCode == 302) && method == "POST";
}

URLRequest redirected(const URLRequest& request, int statusCode, const URL& url) {
  URLRequest next = request;
  next.url = url;
  if (becomesGet(request.method, statusCode)) {
    next.method = "GET";
    next.body.reset();
    for (const char* field : kBodyFields) next.headerFields.erase(field);
  }
  // The token authorises calls to the service that issued it and to no other origin.
  if (!haveSameOrigin(request.url, url)) next.headerFields.erase(kSessionTokenField);
  return next;
}

}  // namespace

RedirectPolicy::Decision RedirectPolicy::decide(const URLRequest& request,
                                                const HTTPURLResponse& response) {
  if (!follows(response.statusCode())) return FinalReply();
  const auto url = target(request.url, response);
  if (!url) return FinalReply();

  if (!isAllowedAddress(*url)) {
    return std::make_shared<const URLError>(
        URLError::Code::unsupportedURL,
        request.url.redacted() + ": redirect to an address that is not https: " + url->redacted());
  }
  if (++redirectCount_ > kMaximumRedirectCount) {
    return std::make_shared<const URLError>(URLError::Code::tooManyRedirects,
                                            request.url.redacted() + ": too many redirects");
  }
  return redirected(request, response.statusCode(), *url);
}

bool RedirectPolicy::follows(int statusCode) const {
  if (statusCode == 307 || statusCode == 308) return true;
  return kind_ == Kind::data && (statusCode == 301 || statusCode == 302 || statusCode == 303);
}

}  // namespace quillbay::platform
