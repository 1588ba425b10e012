#include "sandbox/http/HeadCheck.h"

#include <strings.h>

#include <algorithm>
#include <string>
#include <utility>

#include "sandbox/support/FieldText.h"

namespace quillbay::sandbox {

namespace {

bool isVisibleAscii(char c) { return c >= ' ' && c <= '~'; }

bool isControl(char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7f'; }

bool isLength(std::string_view text) {
  // So many digits fit into 64 bits.
  constexpr std::size_t mostDigits = 18;
  return !text.empty() && text.size() <= mostDigits &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Names are alike in capitals and small letters.
bool isNamed(std::string_view name, const char* expected) {
  return ::strcasecmp(std::string(name).c_str(), expected) == 0;
}

}  // namespace

bool HeadCheck::accepts(std::string_view line) {
  if (!line.ends_with("\r\n")) return false;
  line.remove_suffix(2);
  if (!hasRequestLine_) {
    hasRequestLine_ = true;
    return std::ranges::all_of(line, isVisibleAscii);
  }
  if (line.empty()) return true;
  const std::size_t colon = line.find(':');
  return colon != std::string_view::npos &&
         acceptsHeader(line.substr(0, colon), trimmed(line.substr(colon + 1)));
}

bool HeadCheck::acceptsHeader(std::string_view name, std::string_view value) {
  if (name.empty() || !std::ranges::all_of(name, isTokenCharacter)) return false;
  if (std::ranges::any_of(value, isControl)) return false;
  // The library drops one that is empty, and then sees no body.
  if (isNamed(name, "Transfer-Encoding")) return !value.empty();
  if (!isNamed(name, "Content-Length")) return true;
  return !std::exchange(hasLength_, true) && isLength(value);
}

}  // namespace quillbay::sandbox
