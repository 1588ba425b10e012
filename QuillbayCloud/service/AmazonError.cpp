#include <QuillbayCloud/service/AmazonError.h>
#include <QuillbayPlatform/SingleLine.h>

namespace quillbay::cloud {

std::string AmazonError::description() const {
  return platform::singleLine(type_ + ": " + message_);
}

std::expected<AmazonError, platform::ErrorPtr> AmazonError::decode(platform::JSONReader& reader) {
  auto type = reader.required<std::string>("type");
  auto message = reader.required<std::string>("message");
  return reader.finish([&] { return AmazonError(std::move(*type), std::move(*message)); });
}

}  // namespace quillbay::cloud
