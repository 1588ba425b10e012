#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/SingleLine.h>

namespace quillbay::cloud {
namespace {

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};

}  // namespace

QuillbayCloudError::QuillbayCloudError(const QuillbayCloudError&) = default;
QuillbayCloudError& QuillbayCloudError::operator=(const QuillbayCloudError&) = default;
QuillbayCloudError::~QuillbayCloudError() = default;

QuillbayCloudError QuillbayCloudError::aws(AmazonError error) {
  return QuillbayCloudError(Aws{std::move(error)});
}

QuillbayCloudError QuillbayCloudError::webservice(std::string localizedMessage,
                                                  std::int64_t status) {
  return QuillbayCloudError(Webservice{std::move(localizedMessage), status});
}

QuillbayCloudError QuillbayCloudError::underlying(platform::ErrorPtr error) {
  return QuillbayCloudError(Underlying{std::move(error)});
}

QuillbayCloudError QuillbayCloudError::invalidFile() { return QuillbayCloudError(InvalidFile{}); }

QuillbayCloudError QuillbayCloudError::invalidResponse() {
  return QuillbayCloudError(InvalidResponse{});
}

QuillbayCloudError QuillbayCloudError::missingItems() { return QuillbayCloudError(MissingItems{}); }

QuillbayCloudError QuillbayCloudError::fingerprintFailure() {
  return QuillbayCloudError(FingerprintFailure{});
}

QuillbayCloudError QuillbayCloudError::from(const platform::ErrorPtr& error) {
  using ServiceError = cloud::Webservice::Error;
  if (const auto* same = dynamic_cast<const QuillbayCloudError*>(error.get())) return *same;
  const auto* serviceError = dynamic_cast<const ServiceError*>(error.get());
  if (!serviceError) return underlying(error);
  return std::visit(
      Overloaded{
          [](const ServiceError::Cloud& cloud) {
            return webservice(cloud.error.message, cloud.error.status);
          },
          [](const ServiceError::Underlying& inner) { return underlying(inner.error); },
          [](const ServiceError::Parse&) { return invalidResponse(); },
      },
      serviceError->value());
}

std::string QuillbayCloudError::description() const {
  return std::visit(
      Overloaded{
          [](const Aws& aws) { return "aws: " + aws.error.description(); },
          [](const Webservice& refusal) {
            return platform::singleLine("webservice: status " + std::to_string(refusal.status) +
                                        ": " + refusal.localizedMessage);
          },
          [](const Underlying& inner) { return "underlying: " + inner.error->description(); },
          [](const InvalidFile&) -> std::string { return "invalidFile"; },
          [](const InvalidResponse&) -> std::string { return "invalidResponse"; },
          [](const MissingItems&) -> std::string { return "missingItems"; },
          [](const FingerprintFailure&) -> std::string { return "fingerprintFailure"; },
      },
      value_);
}

std::optional<std::string> QuillbayCloudError::errorDescription() const {
  using Text = std::optional<std::string>;
  return std::visit(
      Overloaded{
          [](const Aws& aws) { return aws.error.errorDescription(); },
          [](const Webservice& refusal) { return Text(refusal.localizedMessage); },
          [](const Underlying& inner) { return inner.error->errorDescription(); },
          [](const InvalidFile&) { return Text(Localized("error.invalid-file")); },
          [](const InvalidResponse&) { return Text(Localized("error.invalid-response")); },
          [](const MissingItems&) { return Text(Localized("error.missing-items")); },
          [](const FingerprintFailure&) { return Text(Localized("error.invalid-file")); },
      },
      value_);
}

}  // namespace quillbay::cloud
