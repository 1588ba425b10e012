#include "sandbox/support/MediaType.h"

#include <algorithm>

#include "sandbox/support/FieldText.h"

namespace quillbay::sandbox {

namespace {

/// Takes the text apart from left to right; what was asked for and is not there is not taken.
class MediaTypeScanner {
 public:
  explicit MediaTypeScanner(std::string_view text) : rest_(text) {}

  bool isAtEnd() const { return rest_.empty(); }

  bool skip(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

  /// In lower case; empty when there is none.
  std::string token() {
    std::string token;
    for (; !rest_.empty() && isTokenCharacter(rest_.front()); rest_.remove_prefix(1)) {
      const char c = rest_.front();
      token += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return token;
  }

  /// From behind the opening quote to behind the closing one.
  bool skipQuotedRest() {
    while (!rest_.empty()) {
      if (skip('"')) return true;
      skip('\\');
      rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
    }
    return false;
  }

 private:
  std::string_view rest_;
};

bool readParameter(MediaTypeScanner& scanner, MediaType& type) {
  const std::string name = scanner.token();
  // The grammar allows a semicolon with nothing behind it.
  if (name.empty()) return true;
  if (!scanner.skip('=')) return false;
  type.hasCharset = type.hasCharset || name == "charset";
  if (!scanner.skip('"')) return !scanner.token().empty();
  type.hasQuotedValue = true;
  return scanner.skipQuotedRest();
}

}  // namespace

std::optional<MediaType> parseMediaType(std::string_view text) {
  MediaTypeScanner scanner(text);
  const std::string type = scanner.token();
  if (type.empty() || !scanner.skip('/')) return std::nullopt;
  const std::string subtype = scanner.token();
  if (subtype.empty()) return std::nullopt;
  MediaType parsed{.essence = type + "/" + subtype};
  while (!scanner.isAtEnd()) {
    scanner.skipBlanks();
    if (!scanner.skip(';')) return std::nullopt;
    scanner.skipBlanks();
    if (!readParameter(scanner, parsed)) return std::nullopt;
  }
  return parsed;
}

}  // namespace quillbay::sandbox
