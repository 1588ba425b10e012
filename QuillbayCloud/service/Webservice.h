#pragma once

#include <QuillbayCloud/service/CloudError.h>
#include <QuillbayCloud/service/RequestFactory.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/Progress.h>
#include <QuillbayPlatform/URLRequest.h>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace quillbay::cloud {

/// Internal: runs requests to the sharing service and classifies the replies. Immutable; any
/// thread. Requests may run side by side and outlive the client. None is retried here;
/// URLSession.h says what the transport may send again.
class Webservice {
 public:
  class Error;

  /// The body of a success reply.
  using RawResult = std::expected<std::string, Error>;
  using RawCompletion = std::move_only_function<void(RawResult)>;
  template <class T>
  using Completion = std::move_only_function<void(std::expected<T, Error>)>;

  static std::shared_ptr<const Webservice> create(
      std::shared_ptr<const RequestFactory> requestFactory);

  const RequestFactory& requestFactory() const { return *requestFactory_; }

  /// Sends `request`. `completion` is called exactly once: for a status of 200 to 299 with the
  /// body, on a background queue; for everything else with the error, on the main queue. It is
  /// destroyed on the main queue. Returns the progress of the transfer.
  std::shared_ptr<platform::Progress> perform(platform::URLRequest request,
                                              RawCompletion completion) const;

  /// Turns a raw result into a record: to be called from the completion of `perform`. Decodes on
  /// the calling thread, calls `completion` on the main queue, later, and destroys it there.
  template <platform::JSONDecodable T>
  static void decode(const RawResult& result, Completion<T> completion);

  /// `perform` with `decode`: every result on the main queue.
  template <platform::JSONDecodable T>
  void perform(platform::URLRequest request, Completion<T> completion) const;

 private:
  explicit Webservice(std::shared_ptr<const RequestFactory> requestFactory);

  const std::shared_ptr<const RequestFactory> requestFactory_;
};

/// Why a service call failed. An immutable value with no text for the user.
class Webservice::Error final : public platform::Error {
 public:
  /// The service refused and said why.
  struct Cloud {
    CloudError error;
  };
  /// No reply came, or a success reply did not read as its record.
  struct Underlying {
    platform::ErrorPtr error;
  };
  /// The reply makes no sense.
  struct Parse {};

  using Case = std::variant<Cloud, Underlying, Parse>;

  Error(const Error&);
  Error& operator=(const Error&);
  ~Error() override;

  static Error cloudError(CloudError error) { return Error(Cloud{std::move(error)}); }
  static Error underlying(platform::ErrorPtr error) { return Error(Underlying{std::move(error)}); }
  static Error parseError() { return Error(Parse{}); }

  const Case& value() const { return value_; }
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }

  std::string description() const override;

 private:
  explicit Error(Case value) : value_(std::move(value)) {}

  Case value_;
};

template <platform::JSONDecodable T>
void Webservice::decode(const RawResult& result, Completion<T> completion) {
  std::expected<T, Error> record = [&]() -> std::expected<T, Error> {
    if (!result) return std::unexpected(result.error());
    auto decoded = platform::JSONDecoder().decode<T>(*result);
    if (!decoded) return std::unexpected(Error::underlying(std::move(decoded.error())));
    return std::move(*decoded);
  }();
  platform::DispatchQueue::main().async(
      [record = std::move(record), completion = std::move(completion)]() mutable {
        completion(std::move(record));
      });
}

template <platform::JSONDecodable T>
void Webservice::perform(platform::URLRequest request, Completion<T> completion) const {
  perform(std::move(request),
          [completion = std::move(completion)](const RawResult& result) mutable {
            decode<T>(result, std::move(completion));
          });
}

}  // namespace quillbay::cloud
