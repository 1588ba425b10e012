#include "sandbox/support/Random.h"

#include <openssl/rand.h>

#include <stdexcept>
#include <string_view>

namespace quillbay::sandbox {

std::string randomBytes(std::size_t byteCount) {
  std::string bytes(byteCount, '\0');
  if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(byteCount)) !=
      1) {
    throw std::runtime_error("the system gives no random numbers");
  }
  return bytes;
}

std::string randomText(std::size_t length) {
  constexpr std::string_view alphabet =
      "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::string text;
  text.reserve(length);
  while (text.size() < length) {
    for (const char c : randomBytes(length + length / 2)) {
      // Six bits reach 64; dropping the two values beyond the alphabet keeps every character
      // equally likely.
      const auto index = static_cast<std::size_t>(static_cast<unsigned char>(c) & 63);
      if (index < alphabet.size() && text.size() < length) text += alphabet[index];
    }
  }
  return text;
}

}  // namespace quillbay::sandbox
