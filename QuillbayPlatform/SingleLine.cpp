#include <QuillbayPlatform/SingleLine.h>
#include <simdjson.h>

#include <cstddef>

namespace quillbay::platform {
namespace {

std::size_t sequenceByteCount(unsigned char lead) {
  if (lead < 0xC0) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

/// The character that a well-formed UTF-8 sequence encodes.
char32_t characterOf(std::string_view sequence) {
  const auto lead = static_cast<unsigned char>(sequence.front());
  if (sequence.size() == 1) return lead;
  char32_t character = lead & (0x7FU >> sequence.size());
  for (const char byte : sequence.substr(1)) {
    character = (character << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

bool isBetween(char32_t first, char32_t character, char32_t last) {
  return first <= character && character <= last;
}

bool isControl(char32_t character) { return character < 0x20 || isBetween(0x7F, character, 0x9F); }

/// Line and paragraph separator lie next to the embeddings and overrides.
bool breaksOrReorders(char32_t character) {
  return character == 0x061C || isBetween(0x200E, character, 0x200F) ||
         isBetween(0x2028, character, 0x202E) || isBetween(0x2066, character, 0x2069);
}

}  // namespace

std::string singleLine(std::string_view text) {
  constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::string_view sequence = text.substr(0, sequenceByteCount(lead));
    const bool isWellFormed = simdjson::validate_utf8(sequence);
    if (!isWellFormed) sequence = text.substr(0, 1);
    text.remove_prefix(sequence.size());
    if (!isWellFormed) {
      line += kReplacementCharacter;
      continue;
    }
    const char32_t character = characterOf(sequence);
    if (isControl(character) || breaksOrReorders(character)) sequence = " ";
    line += sequence;
  }
  return line;
}

}  // namespace quillbay::platform
