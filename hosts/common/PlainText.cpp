#include "PlainText.h"

#include <utf8proc.h>

#include <array>
#include <cmath>
#include <cstdio>

namespace quillbay::host {
namespace {

constexpr std::size_t kLongestLineCharacters = 500;
constexpr char32_t kReplacement = 0xFFFD;

struct CodePoint {
  char32_t value;
  std::size_t byteCount;
  bool valid;
};

/// The code point at the start of `text`, which is not empty. A byte that starts none stands for
/// itself.
CodePoint firstCodePoint(std::string_view text) {
  const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byteAt(0);
  const CodePoint invalid{kReplacement, 1, false};
  if (lead < 0x80) return {lead, 1, true};

  const std::size_t byteCount = 2U + (lead >= 0xE0 ? 1 : 0) + (lead >= 0xF0 ? 1 : 0);
  if (lead < 0xC2 || lead > 0xF4 || text.size() < byteCount) return invalid;
  char32_t value = lead & (0x7Fu >> byteCount);
  for (std::size_t index = 1; index < byteCount; ++index) {
    if ((byteAt(index) & 0xC0) != 0x80) return invalid;
    value = (value << 6) | (byteAt(index) & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < kSmallest[byteCount] || value > 0x10FFFF || isSurrogate) return invalid;
  return {value, byteCount, true};
}

bool isControl(char32_t value) { return value < 0x20 || (value >= 0x7F && value < 0xA0); }

/// Marks that change the direction of the text around them: with them a name or message can
/// show something other than it says.
bool reordersLine(char32_t value) {
  return value == 0x061C || value == 0x200E || value == 0x200F ||
         (value >= 0x202A && value <= 0x202E) || (value >= 0x2066 && value <= 0x2069);
}

bool breaksLine(char32_t value) {
  return value == '\n' || value == '\r' || value == '\t' || value == 0x85 || value == 0x2028 ||
         value == 0x2029;
}

std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    std::array<char, 8> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "\\x%02x", static_cast<unsigned char>(byte));
    text += buffer.data();
  }
  return text;
}

}  // namespace

std::optional<std::size_t> codePointCount(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    const CodePoint next = firstCodePoint(text);
    if (!next.valid) return std::nullopt;
    text.remove_prefix(next.byteCount);
    ++count;
  }
  return count;
}

std::optional<std::size_t> characterCount(std::string_view text) {
  std::size_t count = 0;
  char32_t previous = 0;
  utf8proc_int32_t state = 0;
  while (!text.empty()) {
    const CodePoint next = firstCodePoint(text);
    if (!next.valid) return std::nullopt;
    text.remove_prefix(next.byteCount);
    const bool isBreak = utf8proc_grapheme_break_stateful(
        static_cast<utf8proc_int32_t>(previous), static_cast<utf8proc_int32_t>(next.value), &state);
    if (count == 0 || isBreak) ++count;
    previous = next.value;
  }
  return count;
}

std::string plainLine(std::string_view text) {
  std::string line;
  std::size_t characterCount = 0;
  while (!text.empty()) {
    const CodePoint next = firstCodePoint(text);
    const std::string_view bytes = text.substr(0, next.byteCount);
    text.remove_prefix(next.byteCount);
    if (breaksLine(next.value)) {
      if (!line.empty() && line.back() != ' ') line += ' ';
    } else if (!next.valid) {
      line += "\uFFFD";
    } else if (!isControl(next.value) && !reordersLine(next.value)) {
      line += bytes;
    }
    if (++characterCount == kLongestLineCharacters && !text.empty()) return line + "...";
  }
  while (line.ends_with(' ')) line.pop_back();
  return line;
}

std::string inQuotes(std::string_view name) {
  std::string text = "'";
  while (!name.empty()) {
    const CodePoint next = firstCodePoint(name);
    const std::string_view bytes = name.substr(0, next.byteCount);
    name.remove_prefix(next.byteCount);
    const bool shown = next.valid && !isControl(next.value) && !breaksLine(next.value) &&
                       !reordersLine(next.value);
    text += shown ? std::string(bytes) : escaped(bytes);
  }
  return text + "'";
}

std::size_t columnCount(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    const CodePoint next = firstCodePoint(text);
    text.remove_prefix(next.byteCount);
    count +=
        static_cast<std::size_t>(utf8proc_charwidth(static_cast<utf8proc_int32_t>(next.value)));
  }
  return count;
}

std::string shortened(const std::string& text, std::size_t columnCount) {
  constexpr std::string_view kDots = "...";
  if (host::columnCount(text) <= columnCount) return text;
  if (columnCount < kDots.size()) return {};
  std::size_t byteCount = 0;
  const std::string_view whole = text;
  for (std::size_t next = 0; next < text.size();) {
    next += firstCodePoint(whole.substr(next)).byteCount;
    if (host::columnCount(whole.substr(0, next)) + kDots.size() > columnCount) break;
    byteCount = next;
  }
  return text.substr(0, byteCount) + std::string(kDots);
}

std::string byteCountText(std::uint64_t byteCount) {
  if (byteCount < 1000) return std::to_string(byteCount) + (byteCount == 1 ? " byte" : " bytes");
  constexpr std::array<const char*, 6> kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
  double amount = static_cast<double>(byteCount) / 1000;
  std::size_t unit = 0;
  // Compared as it will be printed: 999,950 bytes are 1.0 MB, not 1000.0 kB.
  while (std::round(amount * 10) >= 10'000 && unit + 1 < kUnits.size()) {
    amount /= 1000;
    ++unit;
  }
  std::array<char, 32> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.1f %s", amount, kUnits[unit]);
  return buffer.data();
}

std::string capitalized(std::string_view text) {
  if (text.empty()) return {};
  const CodePoint first = firstCodePoint(text);
  if (!first.valid) return std::string(text);
  std::array<utf8proc_uint8_t, 4> capital{};
  const auto byteCount = utf8proc_encode_char(
      utf8proc_toupper(static_cast<utf8proc_int32_t>(first.value)), capital.data());
  std::string result(capital.begin(), capital.begin() + byteCount);
  return result.append(text.substr(first.byteCount));
}

std::string durationText(std::chrono::seconds duration) {
  const long long total = duration.count() < 0 ? 0 : duration.count();
  std::array<char, 64> buffer{};
  if (total < 3600) {
    std::snprintf(buffer.data(), buffer.size(), "%lld:%02lld", total / 60, total % 60);
  } else {
    std::snprintf(buffer.data(), buffer.size(), "%lld:%02lld:%02lld", total / 3600, total / 60 % 60,
                  total % 60);
  }
  return buffer.data();
}

std::string fileCountText(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " file" : " files");
}

}  // namespace quillbay::host
