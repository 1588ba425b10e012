#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// A salted scrypt hash, the only form in which a link's password is kept.
class PasswordHash {
 public:
  static PasswordHash of(std::string_view password);
  static PasswordHash fromText(std::string_view text);

  /// Salt and hash, for storing.
  std::string text() const;
  /// Takes some 50 ms by design.
  bool matches(std::string_view password) const;

 private:
  PasswordHash(std::string salt, std::string hash);

  std::string salt_;
  std::string hash_;
};

}  // namespace quillbay::sandbox
