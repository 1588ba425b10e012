#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sandbox/model/CreateRequest.h"
#include "sandbox/support/PasswordHash.h"

namespace quillbay::sandbox {

struct Item {
  std::string identifier;
  AnnouncedFile file;
};

/// What is fixed when a session is created. Token and password are known as hashes only.
struct SessionRecord {
  std::string identifier;
  std::string instance;
  std::string tokenHash;
  /// The last part of the link.
  std::string slug;
  LinkType linkType = LinkType::page;
  std::optional<std::string> title;
  std::optional<Instant> expiration;
  std::optional<PasswordHash> passwordHash;
  std::vector<Item> items;

  bool isExpired(Instant now) const { return expiration && *expiration <= now; }
  bool isTokenRight(std::string_view token) const;

  /// The form on disk.
  std::string toJson() const;
  static SessionRecord fromJson(std::string_view text);
};

/// A new record with its token, which exists nowhere else afterwards.
struct NewSession {
  SessionRecord record;
  std::string token;
};
NewSession makeSession(std::string instance, CreateRequest request);

}  // namespace quillbay::sandbox
