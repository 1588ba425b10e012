#include "sandbox/http/ContentDisposition.h"

#include "sandbox/support/BidiControls.h"
#include "sandbox/support/PercentCoding.h"

namespace quillbay::sandbox {

std::string safeFileName(std::string_view fileName) {
  std::string name = replaceBidiControls(fileName, "_");
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f' || c == '/' || c == '\\') c = '_';
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
