#include "sandbox/support/PasswordHash.h"

#include <openssl/evp.h>

#include <stdexcept>

#include "sandbox/support/Base64.h"
#include "sandbox/support/Digest.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t saltByteCount = 16;
constexpr std::size_t hashByteCount = 32;

std::string scrypt(std::string_view password, std::string_view salt) {
  constexpr std::uint64_t costFactor = 1 << 14;
  constexpr std::uint64_t blockSize = 8;
  constexpr std::uint64_t parallelism = 1;
  constexpr std::uint64_t memoryLimitByteCount = 64 << 20;
  std::string hash(hashByteCount, '\0');
  if (EVP_PBE_scrypt(password.data(), password.size(),
                     reinterpret_cast<const unsigned char*>(salt.data()), salt.size(), costFactor,
                     blockSize, parallelism, memoryLimitByteCount,
                     reinterpret_cast<unsigned char*>(hash.data()), hash.size()) != 1) {
    throw std::runtime_error("the password could not be hashed");
  }
  return hash;
}

}  // namespace

PasswordHash::PasswordHash(std::string salt, std::string hash)
    : salt_(std::move(salt)), hash_(std::move(hash)) {}

PasswordHash PasswordHash::of(std::string_view password) {
  std::string salt = randomBytes(saltByteCount);
  std::string hash = scrypt(password, salt);
  return {std::move(salt), std::move(hash)};
}

PasswordHash PasswordHash::fromText(std::string_view text) {
  const auto bytes = base64Decode(text);
  if (!bytes || bytes->size() != saltByteCount + hashByteCount) {
    throw std::runtime_error("a stored password hash is damaged");
  }
  return {bytes->substr(0, saltByteCount), bytes->substr(saltByteCount)};
}

std::string PasswordHash::text() const { return base64Encode(salt_ + hash_); }

bool PasswordHash::matches(std::string_view password) const {
  return constantTimeEquals(scrypt(password, salt_), hash_);
}

}  // namespace quillbay::sandbox
