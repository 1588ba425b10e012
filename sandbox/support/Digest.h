#pragma once

#include <openssl/evp.h>

#include <memory>
#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// A running message digest.
class Digest {
 public:
  static Digest sha256();
  static Digest md5();

  void update(std::string_view bytes);
  /// The digest's raw bytes; the object is spent afterwards.
  std::string finish();

 private:
  explicit Digest(const EVP_MD* algorithm);

  struct Free {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Free> context_;
};

std::string sha256(std::string_view bytes);
std::string hmacSha256(std::string_view key, std::string_view bytes);

/// Compares without telling by its duration where the texts differ.
bool constantTimeEquals(std::string_view left, std::string_view right);

}  // namespace quillbay::sandbox
