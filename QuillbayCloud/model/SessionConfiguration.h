#pragma once

#include <QuillbayCloud/model/SessionLinkType.h>
#include <QuillbayPlatform/Date.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>

#include <expected>
#include <optional>
#include <string>

namespace quillbay::cloud {

/// The user's choices for a link. An immutable value that accepts whatever it is given: an empty
/// title or password and a date in the past are kept as they are. Any thread.
///
/// A host may store it as JSON through `platform::JSONEncoder` and `platform::JSONDecoder`:
///
///     {"title": text, "expirationDate": number, "password": text,
///      "linkType": "page" | "download" | "direct", "secret": boolean}
///
/// The first three are left out when absent. The date's number is the one of the encoder's date
/// policy; read it back with the same. It holds the password in clear.
class QUILLBAY_EXPORT SessionConfiguration {
 public:
  /// `title`: shown by the service. `expirationDate`: when the link stops working; absent: never.
  /// A date that is not finite cannot be sent or stored: a run with it ends with `invalidFile`.
  /// `linkType`: absent means `page`. `password`: asked of everyone who opens the link. `secret`:
  /// make a long link that is hard to guess. Texts are UTF-8.
  SessionConfiguration(std::optional<std::string> title,
                       std::optional<platform::Date> expirationDate,
                       std::optional<SessionLinkType> linkType, std::optional<std::string> password,
                       bool secret);

  /// No title, no expiration, no password, `page`, not secret.
  static SessionConfiguration default_();

  /// What the service shows above the files; absent: nothing.
  const std::optional<std::string>& title() const { return title_; }
  /// When the link stops working; absent: never.
  const std::optional<platform::Date>& expirationDate() const { return expirationDate_; }
  /// Needed to open the link; absent: none is. A secret.
  const std::optional<std::string>& password() const { return password_; }
  /// Where the link leads.
  SessionLinkType linkType() const { return linkType_; }
  /// Whether the link is long and hard to guess.
  bool secret() const { return secret_; }

  /// Fails with a `platform::JSONError` at the first of the keys above that does not fit: an
  /// optional one with a wrong type, or "linkType" or "secret" missing, null or wrong.
  static std::expected<SessionConfiguration, platform::ErrorPtr> decode(
      platform::JSONReader& reader);
  /// Writes the form above, the password included.
  void encode(platform::JSONWriter& writer) const;

  /// By value.
  friend bool operator==(const SessionConfiguration&, const SessionConfiguration&) = default;

 private:
  std::optional<std::string> title_;
  std::optional<platform::Date> expirationDate_;
  std::optional<std::string> password_;
  SessionLinkType linkType_;
  bool secret_;
};

}  // namespace quillbay::cloud
