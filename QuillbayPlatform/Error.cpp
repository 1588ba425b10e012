#include <QuillbayPlatform/Error.h>

namespace quillbay::platform {

// Here, so that the class has one type information, in the library.
Error::~Error() = default;

}  // namespace quillbay::platform
