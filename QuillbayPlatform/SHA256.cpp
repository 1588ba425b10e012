#include <QuillbayPlatform/SHA256.h>

#include <openssl/evp.h>

#include <cstdlib>
#include <string_view>

namespace quillbay::platform {
namespace {

/// Fetched once: a fetch searches the providers and takes longer than hashing a small file.
const EVP_MD* sha256Algorithm() {
  static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  return algorithm;
}

/// Only exhausted memory or a broken OpenSSL set-up fails here, and a wrong digest must not pass.
void require(bool succeeded) {
  if (!succeeded) std::abort();
}

}  // namespace

struct SHA256::Context {
  void restart() const {
    require(EVP_DigestInit_ex2(digest.get(), sha256Algorithm(), nullptr) == 1);
  }

  struct Deleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Deleter> digest{EVP_MD_CTX_new()};
};

SHA256::SHA256() : context_(std::make_unique<Context>()) {
  require(context_->digest != nullptr);
  context_->restart();
}

SHA256::~SHA256() = default;
SHA256::SHA256(SHA256&&) noexcept = default;
SHA256& SHA256::operator=(SHA256&&) noexcept = default;

void SHA256::update(std::span<const std::byte> bytes) {
  require(EVP_DigestUpdate(context_->digest.get(), bytes.data(), bytes.size()) == 1);
}

SHA256::Digest SHA256::finalize() {
  Digest digest;
  require(EVP_DigestFinal_ex(context_->digest.get(),
                             reinterpret_cast<unsigned char*>(digest.data()), nullptr) == 1);
  context_->restart();
  return digest;
}

std::string lowercaseHexadecimal(std::span<const std::byte> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::byte byte : bytes) {
    text += kDigits[std::to_integer<unsigned>(byte) >> 4];
    text += kDigits[std::to_integer<unsigned>(byte) & 15];
  }
  return text;
}

}  // namespace quillbay::platform
