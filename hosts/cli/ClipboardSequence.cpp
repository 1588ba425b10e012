#include "ClipboardSequence.h"

#include <openssl/evp.h>

namespace quillbay::cli {
namespace {

constexpr std::size_t kLongestTextByteCount = 8 * 1024;

std::string base64Encoded(std::string_view text) {
  // The encoder adds a zero.
  std::string encoded(((text.size() + 2) / 3 * 4) + 1, '\0');
  EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                  reinterpret_cast<const unsigned char*>(text.data()),
                  static_cast<int>(text.size()));
  encoded.pop_back();
  return encoded;
}

std::string withDoubledEscapes(std::string_view sequence) {
  std::string doubled;
  for (const char character : sequence) {
    if (character == '\x1b') doubled += '\x1b';
    doubled += character;
  }
  return doubled;
}

}  // namespace

std::optional<std::string> clipboardSequence(std::string_view text,
                                             const host::Environment& environment) {
  if (text.size() > kLongestTextByteCount) return std::nullopt;
  std::string sequence = "\x1b]52;c;" + base64Encoded(text) + "\a";
  // By its settings, tmux obeys the sequence itself, hands on what is wrapped, both or neither.
  if (environment("TMUX")) return sequence + "\x1bPtmux;" + withDoubledEscapes(sequence) + "\x1b\\";
  if (environment("STY")) return "\x1bP" + sequence + "\x1b\\";
  return sequence;
}

}  // namespace quillbay::cli
