#include <QuillbayCloud/service/CloudError.h>

namespace quillbay::cloud {

std::expected<CloudError, platform::ErrorPtr> CloudError::decode(platform::JSONReader& reader) {
  auto message = reader.required<std::string>("message");
  const auto status = reader.required<std::int64_t>("status");
  return reader.finish([&] { return CloudError{std::move(*message), *status}; });
}

}  // namespace quillbay::cloud
