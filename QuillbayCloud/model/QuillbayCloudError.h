#pragma once

#include <QuillbayCloud/service/AmazonError.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace quillbay::cloud {

/// Why a run or a deletion failed: the only error type that reaches a host. An immutable value;
/// copies share the error inside `underlying`. Any thread.
///
///     if (const auto* refused = error.as<QuillbayCloudError::Webservice>()) ... refused->status
class QUILLBAY_EXPORT QuillbayCloudError final : public platform::Error {
 public:
  /// The object store refused a file with an XML error document.
  struct Aws {
    AmazonError error;  ///< what the document says
    /// By value.
    friend bool operator==(const Aws&, const Aws&) = default;
  };
  /// The service refused, with a message for the user in the user's language and a status.
  struct Webservice {
    std::string localizedMessage;  ///< plain text from a server, never markup
    std::int64_t status;           ///< as the reply's body has it: mostly the HTTP status
    /// By value.
    friend bool operator==(const Webservice&, const Webservice&) = default;
  };
  /// Any other failure: network, reading of JSON, a file. Equal when it is the same error object.
  struct Underlying {
    platform::ErrorPtr error;  ///< never null
    /// By identity of the error object.
    friend bool operator==(const Underlying&, const Underlying&) = default;
  };
  /// A file is missing, unreadable, no regular file, or its name cannot be sent.
  struct InvalidFile {
    /// Always equal.
    friend bool operator==(const InvalidFile&, const InvalidFile&) = default;
  };
  /// A reply of the service or of the object store could not be understood, or none came.
  struct InvalidResponse {
    /// Always equal.
    friend bool operator==(const InvalidResponse&, const InvalidResponse&) = default;
  };
  /// The session has no items to upload.
  struct MissingItems {
    /// Always equal.
    friend bool operator==(const MissingItems&, const MissingItems&) = default;
  };
  /// A file could not be read to its end, or is in the list twice.
  struct FingerprintFailure {
    /// Always equal.
    friend bool operator==(const FingerprintFailure&, const FingerprintFailure&) = default;
  };

  /// One of the cases above.
  using Case = std::variant<Aws, Webservice, Underlying, InvalidFile, InvalidResponse, MissingItems,
                            FingerprintFailure>;

  /// Copies share what they hold.
  QuillbayCloudError(const QuillbayCloudError&);
  /// Copies share what they hold.
  QuillbayCloudError& operator=(const QuillbayCloudError&);
  ~QuillbayCloudError() override;

  /// An error of the case `Aws`.
  static QuillbayCloudError aws(AmazonError error);
  /// An error of the case `Webservice`.
  static QuillbayCloudError webservice(std::string localizedMessage, std::int64_t status);
  /// An error of the case `Underlying`. `error` must not be null.
  static QuillbayCloudError underlying(platform::ErrorPtr error);
  /// An error of the case `InvalidFile`.
  static QuillbayCloudError invalidFile();
  /// An error of the case `InvalidResponse`.
  static QuillbayCloudError invalidResponse();
  /// An error of the case `MissingItems`.
  static QuillbayCloudError missingItems();
  /// An error of the case `FingerprintFailure`.
  static QuillbayCloudError fingerprintFailure();

  /// `error` itself if it is a `QuillbayCloudError`; the matching case for an error of the service
  /// client; `underlying(error)` for all else. Looks at the outermost error only, which must not
  /// be null.
  static QuillbayCloudError from(const platform::ErrorPtr& error);

  /// The same for an error held by value.
  template <std::derived_from<platform::Error> E>
  static QuillbayCloudError from(const E& error) {
    return from(platform::ErrorPtr(std::make_shared<const E>(error)));
  }

  /// For `std::visit` over all cases.
  const Case& value() const { return value_; }

  /// The values of this case, or null if the error is another one.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }

  std::string description() const override;

  /// The store's message, the service's message, what the underlying error says of itself (maybe
  /// nothing), or a text of the library's own in the user's language.
  std::optional<std::string> errorDescription() const override;

  /// By case and values.
  friend bool operator==(const QuillbayCloudError& left, const QuillbayCloudError& right) {
    return left.value_ == right.value_;
  }

 private:
  explicit QuillbayCloudError(Case value) : value_(std::move(value)) {}

  Case value_;
};

}  // namespace quillbay::cloud
