#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/support/Time.h"

namespace quillbay::sandbox {

struct Credentials {
  std::string accessKey;
  std::string secretKey;
};

/// What a presigned address signs: AWS Signature Version 4 with the signature in the query and an
/// unsigned payload.
struct SignedRequest {
  std::string method;
  /// Decoded.
  std::string path;
  /// Decoded, without X-Amz-Signature, in any order.
  std::vector<std::pair<std::string, std::string>> query;
  /// Lower-case names with trimmed values, sorted by name.
  std::vector<std::pair<std::string, std::string>> headers;
  Instant time;
  std::string region;
};

/// "20130524T000000Z"
std::string amazonTime(Instant time);
/// "20130524/us-east-1/s3/aws4_request"
std::string credentialScope(Instant time, std::string_view region);
/// "host;range"
std::string signedHeaderNames(const SignedRequest& request);

/// The signature in hexadecimal digits.
std::string signatureV4(const SignedRequest& request, std::string_view secretKey);

}  // namespace quillbay::sandbox
