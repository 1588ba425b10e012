#include "sandbox/http/ContentDisposition.h"

#include "sandbox/support/BidiControls.h"
#include "sandbox/support/PercentCoding.h"

namespace quillbay::sandbox {

namespace {

/// U+0080 to U+009F, two bytes in UTF-8: terminals obey them.
bool startsLateControl(std::string_view text) {
  if (text.size() < 2 || text[0] != '\xC2') return false;
  const auto last = static_cast<unsigned char>(text[1]);
  return last >= 0x80 && last <= 0x9F;
}

bool isUnsafe(char c) { return (c >= 0 && c < ' ') || c == '\x7f' || c == '/' || c == '\\'; }

}  // namespace

std::string safeFileName(std::string_view fileName) {
  std::string name = replaceBidiControls(fileName, "_");
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (startsLateControl(std::string_view(name).substr(i))) {
      name.replace(i, 2, "_");
    } else if (isUnsafe(name[i])) {
      name[i] = '_';
    }
  }
  return name;
}

std::string contentDisposition(bool isInline, std::string_view fileName) {
  const std::string name = safeFileName(fileName);
  std::string ascii = name;
  for (char& c : ascii) {
    if (static_cast<unsigned char>(c) > '~' || c == '"' || c == '%') c = '_';
  }
  return std::string(isInline ? "inline" : "attachment") + "; filename=\"" + ascii +
         "\"; filename*=UTF-8''" + percentEncode(name);
}

}  // namespace quillbay::sandbox
