#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>

#include <expected>
#include <string>
#include <vector>

namespace quillbay::cloud {

class Session;

/// Internal: one file of a session. An immutable value; any thread.
class Item {
 public:
  Item(std::string identifier, bool uploaded, std::string fingerprint);

  const std::string& identifier() const { return identifier_; }
  /// Whether the service holds the content. Carried along; every item is uploaded.
  bool uploaded() const { return uploaded_; }
  /// SHA-256 of the content in lower-case hexadecimal, as the service tells it.
  const std::string& fingerprint() const { return fingerprint_; }

  /// All three of "id", "is_uploaded" and "fingerprint" are required.
  static std::expected<Item, platform::ErrorPtr> decode(platform::JSONReader& reader);
  void encode(platform::JSONWriter& writer) const;

  friend bool operator==(const Item&, const Item&) = default;

 private:
  std::string identifier_;
  bool uploaded_;
  std::string fingerprint_;
};

/// Internal: the session's items in the service's order, which is the order in which the files
/// were announced. Lives as long as any copy of the session.
const std::vector<Item>& items(const Session& session);

}  // namespace quillbay::cloud
