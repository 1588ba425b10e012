#include <QuillbayPlatform/JSONError.h>

namespace quillbay::platform {
namespace {

std::string reason(JSONError::Kind kind) {
  switch (kind) {
    case JSONError::Kind::missingKey:
      return "is missing";
    case JSONError::Kind::nullValue:
      return "is null";
    case JSONError::Kind::wrongType:
      return "has another type than expected";
    case JSONError::Kind::corruptValue:
      return "holds a value that makes no sense";
    case JSONError::Kind::invalidSyntax:
      return "is not well-formed";
    case JSONError::Kind::unwritable:
      return "cannot be written as JSON";
  }
  return "is unusable";
}

}  // namespace

std::string JSONError::description() const {
  const std::string subject = keyPath_.empty() ? "The JSON document" : "JSON key " + keyPath_;
  return subject + " " + reason(kind_);
}

}  // namespace quillbay::platform
