#include <QuillbayPlatform/URLError.h>

namespace quillbay::platform {

std::string URLError::description() const { return reason_; }

}  // namespace quillbay::platform
