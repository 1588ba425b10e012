#include <QuillbayCloud/service/MimeTypes.h>
#include <QuillbayCloud/service/RequestFactory.h>
#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/JSONEncoder.h>
#include <QuillbayPlatform/TextEncoding.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace quillbay::cloud {
namespace {

using platform::ErrorPtr;
using platform::JSONError;
using platform::JSONWriter;
using platform::URL;
using platform::URLRequest;

constexpr std::string_view kServiceBaseURL = "https://" QUILLBAY_SERVICE_HOST "/cloud/";
constexpr const char* kTokenField = "X-QUILLBAY-SESSION-TOKEN";
constexpr const char* kUploadUrlField = "X-QUILLBAY-CLOUD-SCP";
constexpr int kUploadTimeoutSeconds = 30;

// Not scientific, and with a fraction even for a whole second: the service reads nothing else.
std::string expirationText(platform::Date date) {
  const double seconds = platform::secondsSince1970(date);
  char buffer[std::numeric_limits<double>::max_exponent10 + 32];
  char* const end =
      std::to_chars(std::begin(buffer), std::end(buffer), seconds, std::chars_format::fixed).ptr;
  std::string text(buffer, end);
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

struct ConfigurationParameters {
  const SessionConfiguration& configuration;

  void encode(JSONWriter& writer) const {
    writer.write("link_type", configuration.linkType());
    writer.write("title", configuration.title());
    if (const auto& date = configuration.expirationDate()) {
      writer.write("expiration", expirationText(*date));
    }
    if (const auto& password = configuration.password()) {
      writer.write("p", platform::base64Encoded(*password));
    }
    if (configuration.secret()) writer.write("is_secret", "1");
  }
};

struct ItemParameters {
  std::string fileName;
  std::string contentLength;
  std::string_view contentType;
  std::optional<std::string> fingerprint;

  void encode(JSONWriter& writer) const {
    writer.write("file_name", fileName);
    writer.write("content_length", contentLength);
    writer.write("content_type", contentType);
    writer.write("f", fingerprint);
  }
};

struct CreateSessionBody {
  std::vector<ItemParameters> items;
  ConfigurationParameters config;

  void encode(JSONWriter& writer) const {
    writer.write("items", items);
    writer.write("config", config);
  }
};

struct FinalizeBody {
  std::string_view etag;

  void encode(JSONWriter& writer) const { writer.write("etag", etag); }
};

std::expected<std::string, ErrorPtr> contentLength(const URL& fileURL) {
  const auto attributes = platform::fileAttributes(fileURL);
  if (!attributes) return std::unexpected(attributes.error());
  if (!attributes->byteCount) {
    return std::unexpected(
        std::make_shared<RequestFactory::Error>(RequestFactory::Error::Case::invalidFileSize));
  }
  return std::to_string(*attributes->byteCount);
}

std::expected<ItemParameters, ErrorPtr> itemParameters(
    const URL& fileURL, const RequestFactory::Fingerprints& fingerprints) {
  auto length = contentLength(fileURL);
  if (!length) return std::unexpected(std::move(length.error()));
  ItemParameters item{.fileName = fileURL.lastPathComponent(),
                      .contentLength = std::move(*length),
                      .contentType = mimeType(fileURL.path()),
                      .fingerprint = std::nullopt};
  if (const auto found = fingerprints.find(fileURL); found != fingerprints.end()) {
    item.fingerprint = found->second;
  }
  return item;
}

// The quoted name is verbatim; the store hands both on with the file.
std::string contentDispositionValue(std::string_view type, const std::string& fileName) {
  std::string escapedName = platform::percentEncoded(fileName, "-._~/ ");
  std::ranges::replace(escapedName, ' ', '+');
  return std::string(type) + "; filename=\"" + fileName + "\"; filename*=UTF-8''" + escapedName;
}

}  // namespace

std::shared_ptr<const RequestFactory> RequestFactory::create(std::string instanceIdentifier) {
  return std::shared_ptr<const RequestFactory>(new RequestFactory(std::move(instanceIdentifier)));
}

RequestFactory::RequestFactory(std::string instanceIdentifier)
    : instanceIdentifier_(std::move(instanceIdentifier)) {}

RequestFactory::Result RequestFactory::createSessionRequest(
    const SessionContext& context, const Fingerprints& fingerprints,
    const SessionConfiguration& configuration) const {
  if (const auto& date = configuration.expirationDate();
      date && !std::isfinite(platform::secondsSince1970(*date))) {
    return std::unexpected(
        std::make_shared<JSONError>(JSONError::Kind::unwritable, "config.expiration"));
  }
  CreateSessionBody body{.items = {}, .config = {configuration}};
  body.items.reserve(context.items().size());
  for (const URL& fileURL : context.items()) {
    auto item = itemParameters(fileURL, fingerprints);
    if (!item) return std::unexpected(std::move(item.error()));
    body.items.push_back(std::move(*item));
  }
  auto json = platform::JSONEncoder().encode(body);
  if (!json) return std::unexpected(std::move(json.error()));

  URLRequest request("POST", serviceAddress({"session"}));
  request.body = std::move(*json);
  return request;
}

URLRequest RequestFactory::deleteSessionRequest(std::string_view sessionIdentifier,
                                                std::string_view token) const {
  URLRequest request("DELETE", serviceAddress({"session", sessionIdentifier}));
  request.headerFields = {{kTokenField, std::string(token)}};
  return request;
}

URLRequest RequestFactory::uploadUrlRequest(std::string_view sessionIdentifier,
                                            std::string_view itemIdentifier,
                                            std::string_view token) const {
  URLRequest request(
      "PUT", serviceAddress({"session", sessionIdentifier, "items", itemIdentifier, "upload_url"}));
  request.headerFields = {{kTokenField, std::string(token)}, {kUploadUrlField, "1"}};
  return request;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): an operation of the factory
RequestFactory::Result RequestFactory::uploadRequest(
    const URL& url, const URL& fileURL, ContentDispositionType contentDispositionType) const {
  auto length = contentLength(fileURL);
  if (!length) return std::unexpected(std::move(length.error()));

  URLRequest request("PUT", url);
  request.timeoutSeconds = kUploadTimeoutSeconds;
  request.headerFields = {
      {"Content-Length", std::move(*length)},
      {"Content-Disposition",
       contentDispositionValue(contentDispositionType.rawValue(), fileURL.lastPathComponent())},
      {"Content-Type", std::string(mimeType(fileURL.path()))},
  };
  return request;
}

URLRequest RequestFactory::finalizeRequest(std::string_view sessionIdentifier,
                                           std::string_view itemIdentifier, std::string_view token,
                                           std::string_view etag) const {
  URLRequest request(
      "PUT", serviceAddress({"session", sessionIdentifier, "items", itemIdentifier, "finalize"}));
  request.headerFields = {{kTokenField, std::string(token)}};
  if (auto json = platform::JSONEncoder().encode(FinalizeBody{etag})) {
    request.body = std::move(*json);
  }
  return request;
}

platform::URL RequestFactory::serviceAddress(
    std::initializer_list<std::string_view> components) const {
  std::string text(kServiceBaseURL);
  text += instanceIdentifier_;
  for (const auto component : components) text.append("/").append(component);
  // Behind a scheme, a host and a slash every text can be encoded; the base alone reaches nothing.
  return URL::parseEncodingInvalid(text)
      .or_else([] { return URL::parse(kServiceBaseURL); })
      .value();
}

std::string RequestFactory::Error::description() const {
  switch (value_) {
    case Case::invalidFilePath:
      return "invalid file path";
    case Case::invalidFileSize:
      return "a file has no size: it is no regular file";
  }
  return "";
}

}  // namespace quillbay::cloud
