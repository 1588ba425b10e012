#include "sandbox/support/PercentCoding.h"

#include <charconv>

namespace quillbay::sandbox {

namespace {

bool isUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~").contains(c);
}

}  // namespace

std::string percentEncode(std::string_view text, std::string_view alsoKept) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (isUnreserved(c) || alsoKept.contains(c)) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    encoded += digits[byte >> 4];
    encoded += digits[byte & 15];
  }
  return encoded;
}

std::string percentDecode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned int byte = 0;
    if (text[i] == '%' && i + 2 < text.size()) {
      const char* first = text.data() + i + 1;
      const auto [end, error] = std::from_chars(first, first + 2, byte, 16);
      if (error == std::errc() && end == first + 2) {
        decoded += static_cast<char>(byte);
        i += 2;
        continue;
      }
    }
    decoded += text[i];
  }
  return decoded;
}

}  // namespace quillbay::sandbox
