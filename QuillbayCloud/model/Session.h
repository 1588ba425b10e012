#pragma once

#include <QuillbayPlatform/Date.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>
#include <QuillbayPlatform/URL.h>

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillbay::cloud {

class Item;
class Session;

/// By value, the items included.
QUILLBAY_EXPORT bool operator==(const Session& left, const Session& right);

/// A sharing session as the service describes it. An immutable value whose copies share their
/// contents; any thread. Sessions come from the service or from a host's own storage, by reading:
///
///     {"id": text, "token": text, "url": text, "title": text, "expiration": number,
///      "items": [{"id": text, "is_uploaded": boolean, "fingerprint": text}, ...]}
class QUILLBAY_EXPORT Session {
 public:
  /// Copies share their contents; there is no move that would leave an empty session.
  Session(const Session&) = default;
  /// As for the copy above.
  Session& operator=(const Session&) = default;

  /// Names the session in later calls, such as `SessionController::deleteSession`.
  const std::string& identifier() const;
  /// Authorises later calls: a secret.
  const std::optional<std::string>& token() const;
  /// The link to pass on.
  const platform::URL& url() const;
  /// What the service shows above the files; absent: nothing.
  const std::optional<std::string>& title() const;
  /// When the link stops working; absent: never.
  const std::optional<platform::Date>& expirationDate() const;
  /// Always absent: the service does not tell it.
  const std::optional<std::string>& password() const;

  /// Reads the form above. "id", "url" and "items" are required, and every item must read; fails
  /// with a `platform::JSONError` otherwise. "token", "title" and "expiration" are absent whenever
  /// they are not a text or, for "expiration", an integer: seconds since 1970-01-01T00:00:00Z,
  /// whatever the decoder's date policy.
  static std::expected<Session, platform::ErrorPtr> decode(platform::JSONReader& reader);

  /// Writes the form above without what is absent, and never a password. "expiration" is the
  /// number of the encoder's date policy; `decode` takes it back only if that number is a whole one
  /// since 1970 and written without a fraction.
  void encode(platform::JSONWriter& writer) const;

  friend bool operator==(const Session& left, const Session& right);

 private:
  struct QUILLBAY_HIDDEN Contents;
  friend const std::vector<Item>& items(const Session& session);

  QUILLBAY_HIDDEN explicit Session(std::shared_ptr<const Contents> contents);

  // Shared and without a move that empties it: as many copies as items, and not N times N items.
  std::shared_ptr<const Contents> contents_;
};

}  // namespace quillbay::cloud
