#include "sandbox/store/SignatureV4.h"

#include <algorithm>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Hex.h"
#include "sandbox/support/PercentCoding.h"

namespace quillbay::sandbox {

namespace {

std::string canonicalQuery(const SignedRequest& request) {
  std::vector<std::pair<std::string, std::string>> encoded;
  encoded.reserve(request.query.size());
  for (const auto& [name, value] : request.query) {
    encoded.emplace_back(percentEncode(name), percentEncode(value));
  }
  std::ranges::sort(encoded);
  std::string query;
  for (const auto& [name, value] : encoded) {
    if (!query.empty()) query += '&';
    query += name + "=" + value;
  }
  return query;
}

std::string canonicalRequest(const SignedRequest& request) {
  std::string text = request.method + "\n" + percentEncode(request.path, "/") + "\n" +
                     canonicalQuery(request) + "\n";
  for (const auto& [name, value] : request.headers) text += name + ":" + value + "\n";
  return text + "\n" + signedHeaderNames(request) + "\nUNSIGNED-PAYLOAD";
}

std::string signingKey(const SignedRequest& request, std::string_view secretKey) {
  std::string key = "AWS4" + std::string(secretKey);
  const std::string date = formatTime(request.time, "%Y%m%d");
  for (const std::string_view part : {std::string_view(date), std::string_view(request.region),
                                      std::string_view("s3"), std::string_view("aws4_request")}) {
    key = hmacSha256(key, part);
  }
  return key;
}

}  // namespace

std::string amazonTime(Instant time) { return formatTime(time, "%Y%m%dT%H%M%SZ"); }

std::string credentialScope(Instant time, std::string_view region) {
  return formatTime(time, "%Y%m%d/") + std::string(region) + "/s3/aws4_request";
}

std::string signedHeaderNames(const SignedRequest& request) {
  std::string names;
  for (const auto& [name, value] : request.headers) {
    if (!names.empty()) names += ';';
    names += name;
  }
  return names;
}

std::string signatureV4(const SignedRequest& request, std::string_view secretKey) {
  const std::string text = "AWS4-HMAC-SHA256\n" + amazonTime(request.time) + "\n" +
                           credentialScope(request.time, request.region) + "\n" +
                           hexEncode(sha256(canonicalRequest(request)));
  return hexEncode(hmacSha256(signingKey(request, secretKey), text));
}

}  // namespace quillbay::sandbox
