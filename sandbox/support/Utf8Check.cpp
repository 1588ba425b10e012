#include "sandbox/support/Utf8Check.h"

#include <openssl/asn1.h>

#include <algorithm>

namespace quillbay::sandbox {

namespace {

constexpr int isCutOff = -1;

bool isBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 0x80; }

/// The length of the first character, `isCutOff`, or another negative number for what is none.
int characterLength(std::string_view text) {
  constexpr std::size_t longest = 4;
  unsigned long character = 0;
  return UTF8_getc(reinterpret_cast<const unsigned char*>(text.data()),
                   static_cast<int>(std::min(text.size(), longest)), &character);
}

}  // namespace

void Utf8Check::update(std::string_view bytes) {
  if (!isWellFormed_) return;
  std::string joined;
  if (!cutOff_.empty()) {
    joined = cutOff_.append(bytes);
    bytes = joined;
    cutOff_.clear();
  }
  while (true) {
    // Most text is ASCII, which needs no look at single characters.
    bytes.remove_prefix(
        static_cast<std::size_t>(std::ranges::find_if(bytes, isBeyondAscii) - bytes.begin()));
    if (bytes.empty()) return;
    const int length = characterLength(bytes);
    if (length == isCutOff) {
      cutOff_ = bytes;
      return;
    }
    isWellFormed_ = length > 0;
    if (!isWellFormed_) return;
    hasBeyondAscii_ = true;
    bytes.remove_prefix(static_cast<std::size_t>(length));
  }
}

}  // namespace quillbay::sandbox
