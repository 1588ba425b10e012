#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/model/LinkType.h"
#include "sandbox/support/Time.h"

namespace quillbay::sandbox {

/// One file as its owner announced it.
struct AnnouncedFile {
  std::string name;
  std::string contentType;
  std::uint64_t byteCount = 0;
  /// SHA-256 in lower-case hexadecimal digits, when the client sent it.
  std::optional<std::string> fingerprint;
};

/// The checked body of a create-session request.
struct CreateRequest {
  static constexpr std::size_t bodyByteLimit = std::size_t{64} << 20;

  std::vector<AnnouncedFile> files;
  LinkType linkType = LinkType::page;
  std::optional<std::string> title;
  std::optional<Instant> expiration;
  std::optional<std::string> password;
  bool isSecret = false;

  /// Throws InvalidRequest, naming the member that is wrong.
  static CreateRequest parse(std::string_view body, Instant now);
};

/// The client's mistake, in words meant for a person.
class InvalidRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quillbay::sandbox
