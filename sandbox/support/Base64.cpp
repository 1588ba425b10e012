#include "sandbox/support/Base64.h"

#include <openssl/evp.h>

namespace quillbay::sandbox {

std::string base64Encode(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                     reinterpret_cast<const unsigned char*>(bytes.data()),
                                     static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::optional<std::string> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes(text.size() / 4 * 3, '\0');
  const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                     reinterpret_cast<const unsigned char*>(text.data()),
                                     static_cast<int>(text.size()));
  if (length < 0) return std::nullopt;
  // The decoder counts padding as zero bytes.
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
  bytes.resize(static_cast<std::size_t>(length) - padding);
  // It also skips white space and accepts stray bits; only the one canonical form comes back equal.
  if (base64Encode(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace quillbay::sandbox
