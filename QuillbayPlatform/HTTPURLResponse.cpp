#include <QuillbayPlatform/ASCIICase.h>
#include <QuillbayPlatform/HTTPURLResponse.h>

namespace quillbay::platform {

std::optional<std::string> HTTPURLResponse::valueForHTTPHeaderField(std::string_view name) const {
  std::optional<std::string> joined;
  for (const auto& [fieldName, value] : headerFields_) {
    if (!equalsIgnoringASCIICase(fieldName, name)) continue;
    joined = joined ? *joined + ", " + value : value;
  }
  return joined;
}

}  // namespace quillbay::platform
