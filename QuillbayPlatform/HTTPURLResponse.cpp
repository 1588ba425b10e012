#include <QuillbayPlatform/HTTPURLResponse.h>
#include <strings.h>

namespace quillbay::platform {

std::optional<std::string> HTTPURLResponse::valueForHTTPHeaderField(std::string_view name) const {
  const std::string wanted(name);
  std::optional<std::string> joined;
  for (const auto& [fieldName, value] : headerFields_) {
    if (strcasecmp(fieldName.c_str(), wanted.c_str()) != 0) continue;
    joined = joined ? *joined + ", " + value : value;
  }
  return joined;
}

}  // namespace quillbay::platform
