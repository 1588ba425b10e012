#include "ClipboardSequence.h"

#include <QuillbayPlatform/TextEncoding.h>

namespace quillbay::cli {
namespace {

constexpr std::size_t kLongestTextByteCount = 8 * 1024;

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
  std::string sequence = "\x1b]52;c;" + platform::base64Encoded(text) + "\a";
  // By its settings, tmux obeys the sequence itself, hands on what is wrapped, both or neither.
  if (environment("TMUX")) return sequence + "\x1bPtmux;" + withDoubledEscapes(sequence) + "\x1b\\";
  if (environment("STY")) return "\x1bP" + sequence + "\x1b\\";
  return sequence;
}

}  // namespace quillbay::cli
