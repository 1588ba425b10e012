#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/SHA256.h>
#include <openssl/evp.h>

#include <string_view>

namespace quillbay::platform {
namespace {

/// Fetched once: a fetch searches the providers and takes longer than hashing a small file. Null
/// where OpenSSL is configured without a provider of it.
struct Algorithm {
  struct Deleter {
    void operator()(EVP_MD* algorithm) const { EVP_MD_free(algorithm); }
  };
  std::unique_ptr<EVP_MD, Deleter> sha256{EVP_MD_fetch(nullptr, "SHA256", nullptr)};
};

constinit OnFirstUse<Algorithm> algorithm;

}  // namespace

struct SHA256::Context {
  void restart() {
    const EVP_MD* const sha256 = algorithm.get().sha256.get();
    isSound = digest && EVP_DigestInit_ex2(digest.get(), sha256, nullptr) == 1;
  }

  struct Deleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Deleter> digest{EVP_MD_CTX_new()};
  /// Whether nothing has failed since the last start: a wrong digest must not pass.
  bool isSound = false;
};

SHA256::SHA256() : context_(std::make_unique<Context>()) { context_->restart(); }

SHA256::~SHA256() = default;
SHA256::SHA256(SHA256&&) noexcept = default;
SHA256& SHA256::operator=(SHA256&&) noexcept = default;

void SHA256::update(std::span<const std::byte> bytes) {
  context_->isSound = context_->isSound &&
                      EVP_DigestUpdate(context_->digest.get(), bytes.data(), bytes.size()) == 1;
}

std::optional<SHA256::Digest> SHA256::finalize() {
  Digest digest;
  auto* const bytes = reinterpret_cast<unsigned char*>(digest.data());
  const bool isComplete =
      context_->isSound && EVP_DigestFinal_ex(context_->digest.get(), bytes, nullptr) == 1;
  context_->restart();
  if (!isComplete) return std::nullopt;
  return digest;
}

std::string lowercaseHexadecimal(std::span<const std::byte> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text(bytes.size() * 2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text[2 * i] = kDigits[std::to_integer<unsigned>(bytes[i]) >> 4];
    text[2 * i + 1] = kDigits[std::to_integer<unsigned>(bytes[i]) & 15];
  }
  return text;
}

}  // namespace quillbay::platform
