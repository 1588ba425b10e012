#include <QuillbayPlatform/TextEncoding.h>

#include <openssl/evp.h>

namespace quillbay::platform {
namespace {

// Not <cctype>: what is a letter must not depend on the host's locale.
bool isAlphanumeric(char character) {
  return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
         (character >= 'a' && character <= 'z');
}

int hexadecimalValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return -1;
}

}  // namespace

std::string base64Encoded(std::string_view bytes) {
  // Whole triplets, so that no padding arises inside, and few enough for the encoder's int.
  constexpr std::size_t kPieceByteCount = std::size_t{3} << 20;
  std::string text(((bytes.size() + 2) / 3 * 4) + 1, '\0');
  std::size_t length = 0;
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, kPieceByteCount);
    length += static_cast<std::size_t>(EVP_EncodeBlock(
        reinterpret_cast<unsigned char*>(text.data() + length),
        reinterpret_cast<const unsigned char*>(piece.data()), static_cast<int>(piece.size())));
    bytes.remove_prefix(piece.size());
  }
  text.resize(length);
  return text;
}

std::string percentEncoded(std::string_view text, std::string_view unescaped) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char character : text) {
    if (isAlphanumeric(character) || unescaped.find(character) != std::string_view::npos) {
      encoded += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    encoded += '%';
    encoded += kDigits[byte >> 4];
    encoded += kDigits[byte & 15];
  }
  return encoded;
}

std::string percentDecoded(std::string_view text) {
  // Most paths have none.
  std::string decoded(text.substr(0, text.find('%')));
  decoded.reserve(text.size());
  for (std::size_t i = decoded.size(); i < text.size(); ++i) {
    const bool isTripletPossible = text[i] == '%' && i + 2 < text.size();
    const int high = isTripletPossible ? hexadecimalValue(text[i + 1]) : -1;
    const int low = isTripletPossible ? hexadecimalValue(text[i + 2]) : -1;
    if (high < 0 || low < 0) {
      decoded += text[i];
      continue;
    }
    decoded += static_cast<char>((high << 4) | low);
    i += 2;
  }
  return decoded;
}

}  // namespace quillbay::platform
