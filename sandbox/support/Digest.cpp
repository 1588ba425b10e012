#include "sandbox/support/Digest.h"

#include <openssl/crypto.h>
#include <openssl/hmac.h>

#include <stdexcept>

namespace quillbay::sandbox {

Digest::Digest(const EVP_MD* algorithm) : context_(EVP_MD_CTX_new()) {
  if (!context_ || EVP_DigestInit_ex(context_.get(), algorithm, nullptr) != 1) {
    throw std::runtime_error("the message digest is not available");
  }
}

Digest Digest::sha256() { return Digest(EVP_sha256()); }

Digest Digest::md5() { return Digest(EVP_md5()); }

void Digest::update(std::string_view bytes) {
  EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
}

std::string Digest::finish() {
  std::string value(EVP_MAX_MD_SIZE, '\0');
  unsigned int length = 0;
  EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(value.data()), &length);
  value.resize(length);
  return value;
}

std::string sha256(std::string_view bytes) {
  Digest digest = Digest::sha256();
  digest.update(bytes);
  return digest.finish();
}

std::string hmacSha256(std::string_view key, std::string_view bytes) {
  std::string value(EVP_MAX_MD_SIZE, '\0');
  unsigned int length = 0;
  HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
       reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
       reinterpret_cast<unsigned char*>(value.data()), &length);
  value.resize(length);
  return value;
}

bool constantTimeEquals(std::string_view left, std::string_view right) {
  return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace quillbay::sandbox
