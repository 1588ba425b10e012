#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/SingleLine.h>
#include <QuillbayPlatform/URLSession.h>

#include <optional>

namespace quillbay::cloud {
namespace {

using platform::ErrorPtr;
using platform::HTTPURLResponse;

Webservice::RawResult classified(std::optional<std::string> data,
                                 const std::optional<HTTPURLResponse>& response,
                                 const ErrorPtr& error) {
  if (error) return std::unexpected(Webservice::Error::underlying(error));
  if (!data || !response) return std::unexpected(Webservice::Error::parseError());
  if (response->statusCode() >= 200 && response->statusCode() <= 299) return std::move(*data);
  auto refusal = platform::JSONDecoder().decode<CloudError>(*data);
  if (!refusal) return std::unexpected(Webservice::Error::parseError());
  return std::unexpected(Webservice::Error::cloudError(std::move(*refusal)));
}

}  // namespace

std::shared_ptr<const Webservice> Webservice::create(
    std::shared_ptr<const RequestFactory> requestFactory) {
  return std::shared_ptr<const Webservice>(new Webservice(std::move(requestFactory)));
}

Webservice::Webservice(std::shared_ptr<const RequestFactory> requestFactory)
    : requestFactory_(std::move(requestFactory)) {}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): an operation of the client
std::shared_ptr<platform::Progress> Webservice::perform(platform::URLRequest request,
                                                        RawCompletion completion) const {
  const auto task = platform::URLSession::shared().dataTask(
      std::move(request),
      [completion = std::move(completion)](std::optional<std::string> data,
                                           const std::optional<HTTPURLResponse>& response,
                                           const ErrorPtr& error) mutable {
        auto result = classified(std::move(data), response, error);
        if (result) return completion(std::move(result));
        platform::DispatchQueue::main().async(
            [result = std::move(result), completion = std::move(completion)]() mutable {
              completion(std::move(result));
            });
      });
  task->resume();
  return task->progress();
}

Webservice::Error::Error(const Error&) = default;
Webservice::Error& Webservice::Error::operator=(const Error&) = default;
Webservice::Error::~Error() = default;

std::string Webservice::Error::description() const {
  if (const auto* cloud = as<Cloud>()) {
    return platform::singleLine("the service refused with status " +
                                std::to_string(cloud->error.status) + ": " + cloud->error.message);
  }
  if (const auto* underlying = as<Underlying>()) return underlying->error->description();
  return "the service's reply could not be understood";
}

}  // namespace quillbay::cloud
