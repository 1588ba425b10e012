#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace quillbay::platform {

/// SHA-256 (FIPS 180-4). An object computes one digest after the other. One thread at a time.
class SHA256 {
 public:
  using Digest = std::array<std::byte, 32>;

  SHA256();
  ~SHA256();
  SHA256(SHA256&&) noexcept;
  SHA256& operator=(SHA256&&) noexcept;

  void update(std::span<const std::byte> bytes);

  /// The digest of all bytes since construction or the last call; then starts anew.
  Digest finalize();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

/// Two lower-case hexadecimal digits a byte, no separator.
std::string lowercaseHexadecimal(std::span<const std::byte> bytes);

}  // namespace quillbay::platform
