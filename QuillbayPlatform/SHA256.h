#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quillbay::platform {

/// SHA-256 (FIPS 180-4). An object computes one digest after the other. One thread at a time.
///
/// The digest is OpenSSL's, under the computer's configuration of it. Where that offers no SHA-256,
/// there are no digests.
class SHA256 {
 public:
  using Digest = std::array<std::byte, 32>;

  SHA256();
  ~SHA256();
  SHA256(SHA256&&) noexcept;
  SHA256& operator=(SHA256&&) noexcept;

  void update(std::span<const std::byte> bytes);

  /// The digest of all bytes since construction or the last call, or nothing if it could not be
  /// computed; then starts anew.
  std::optional<Digest> finalize();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

/// Two lower-case hexadecimal digits a byte, no separator.
std::string lowercaseHexadecimal(std::span<const std::byte> bytes);

}  // namespace quillbay::platform
