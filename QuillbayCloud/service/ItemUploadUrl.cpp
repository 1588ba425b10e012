#include <QuillbayCloud/service/ItemUploadUrl.h>

namespace quillbay::cloud {

std::expected<ItemUploadUrl, platform::ErrorPtr> ItemUploadUrl::decode(
    platform::JSONReader& reader) {
  auto url = reader.required<platform::URL>("url");
  return reader.finish([&] { return ItemUploadUrl(std::move(*url)); });
}

void ItemUploadUrl::encode(platform::JSONWriter& writer) const { writer.write("url", url_); }

}  // namespace quillbay::cloud
