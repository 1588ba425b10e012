#include "sandbox/store/PresignedAddress.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <map>

#include "sandbox/store/StoreError.h"
#include "sandbox/support/Digest.h"
#include "sandbox/support/FieldText.h"
#include "sandbox/support/PercentCoding.h"

namespace quillbay::sandbox {

namespace {

constexpr std::string_view region = "local";
constexpr std::string_view algorithm = "AWS4-HMAC-SHA256";
constexpr std::chrono::seconds validity{3600};
constexpr std::chrono::seconds longestValidity = std::chrono::days(7);
// How far the signer's clock may be ahead of ours.
constexpr std::chrono::minutes clockSkew{15};

using Parameters = std::vector<std::pair<std::string, std::string>>;

[[noreturn]] void refuseParameters(const std::string& message) {
  throw StoreError(400, "AuthorizationQueryParametersError", message);
}

[[noreturn]] void denyAccess(const std::string& message) {
  throw StoreError(403, "AccessDenied", message);
}

const std::string& parameter(const Parameters& parameters, std::string_view name) {
  const auto hasName = [&](const auto& entry) { return entry.first == name; };
  const auto found = std::ranges::find_if(parameters, hasName);
  if (found == parameters.end()) denyAccess("The request carries no valid signature.");
  if (std::ranges::count_if(parameters, hasName) > 1) {
    refuseParameters(std::string(name) + " is in the query twice.");
  }
  return found->second;
}

Instant parseAmazonTime(const std::string& text) {
  std::tm parts{};
  const char* end = strptime(text.c_str(), "%Y%m%dT%H%M%SZ", &parts);
  const Instant time{std::chrono::seconds(timegm(&parts))};
  if (end == nullptr || *end != '\0' || amazonTime(time) != text) {
    refuseParameters("X-Amz-Date must be in the form YYYYMMDD'T'HHMMSS'Z'.");
  }
  return time;
}

std::chrono::seconds parseValidity(const std::string& text) {
  std::int64_t seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds < 1 ||
      seconds > longestValidity.count()) {
    refuseParameters("X-Amz-Expires must be a number of seconds from 1 to 604800.");
  }
  return std::chrono::seconds(seconds);
}

void checkTime(Instant now, Instant signedAt, std::chrono::seconds validFor) {
  if (signedAt > now + clockSkew) denyAccess("The request is not valid yet.");
  if (now > signedAt + validFor) denyAccess("The request has expired.");
}

Parameters signedHeaders(const Call& call, std::string_view names) {
  std::map<std::string, std::string> headers;
  while (!names.empty()) {
    const std::string name(names.substr(0, names.find(';')));
    names.remove_prefix(std::min(names.size(), name.size() + 1));
    if (!call.request.has_header(name))
      denyAccess("There were headers not present in the request.");
    headers[name] = trimmed(call.header(name.c_str()));
  }
  if (!headers.contains("host")) refuseParameters("The host header must be signed.");
  return {headers.begin(), headers.end()};
}

Parameters authenticationParameters(const SignedRequest& request, const std::string& accessKey,
                                    std::chrono::seconds validFor) {
  return {{"X-Amz-Algorithm", std::string(algorithm)},
          {"X-Amz-Credential", accessKey + "/" + credentialScope(request.time, region)},
          {"X-Amz-Date", amazonTime(request.time)},
          {"X-Amz-Expires", std::to_string(validFor.count())},
          {"X-Amz-SignedHeaders", signedHeaderNames(request)}};
}

}  // namespace

PresignedAddress::PresignedAddress(Credentials credentials, Clock clock)
    : credentials_(std::move(credentials)), clock_(std::move(clock)) {}

std::string PresignedAddress::make(std::string_view method, std::string_view host,
                                   std::string_view path, std::string_view contentType) const {
  SignedRequest request{
      .method = std::string(method),
      .path = std::string(path),
      .query = {},
      .headers = {{"content-type", std::string(contentType)}, {"host", std::string(host)}},
      .time = clock_(),
      .region = std::string(region)};
  request.query = authenticationParameters(request, credentials_.accessKey, validity);
  std::string address = "https://" + std::string(host) + percentEncode(path, "/") + "?";
  for (const auto& [name, value] : request.query) {
    address += name + "=" + percentEncode(value) + "&";
  }
  return address + "X-Amz-Signature=" + signatureV4(request, credentials_.secretKey);
}

void PresignedAddress::verify(const Call& call) const {
  Parameters parameters = parseParameters(call.target.query);
  const std::string signature = parameter(parameters, "X-Amz-Signature");
  if (parameter(parameters, "X-Amz-Algorithm") != algorithm) {
    refuseParameters("X-Amz-Algorithm must be " + std::string(algorithm) + ".");
  }
  SignedRequest request;
  request.method = call.request.method;
  request.path = percentDecode(call.target.path);
  request.time = parseAmazonTime(parameter(parameters, "X-Amz-Date"));
  request.region = region;
  request.headers = signedHeaders(call, parameter(parameters, "X-Amz-SignedHeaders"));
  const std::string credential =
      credentials_.accessKey + "/" + credentialScope(request.time, region);
  if (!parameter(parameters, "X-Amz-Credential").starts_with(credentials_.accessKey + "/")) {
    throw StoreError(403, "InvalidAccessKeyId", "The access key is not known here.");
  }
  if (parameter(parameters, "X-Amz-Credential") != credential) {
    refuseParameters("X-Amz-Credential does not belong to this date, region and service.");
  }
  const auto validFor = parseValidity(parameter(parameters, "X-Amz-Expires"));
  std::erase_if(parameters, [](const auto& entry) { return entry.first == "X-Amz-Signature"; });
  request.query = std::move(parameters);
  if (!constantTimeEquals(signature, signatureV4(request, credentials_.secretKey))) {
    throw StoreError(
        403, "SignatureDoesNotMatch",
        "The signature does not match the method, address and headers of the request.");
  }
  checkTime(clock_(), request.time, validFor);
}

}  // namespace quillbay::sandbox
