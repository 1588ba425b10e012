#include <QuillbayCloud/model/Item.h>

#include <utility>

namespace quillbay::cloud {

Item::Item(std::string identifier, bool uploaded, std::string fingerprint)
    : identifier_(std::move(identifier)),
      uploaded_(uploaded),
      fingerprint_(std::move(fingerprint)) {}

std::expected<Item, platform::ErrorPtr> Item::decode(platform::JSONReader& reader) {
  auto identifier = reader.required<std::string>("id");
  const auto uploaded = reader.required<bool>("is_uploaded");
  auto fingerprint = reader.required<std::string>("fingerprint");
  return reader.finish(
      [&] { return Item(std::move(*identifier), *uploaded, std::move(*fingerprint)); });
}

void Item::encode(platform::JSONWriter& writer) const {
  writer.write("id", identifier_);
  writer.write("is_uploaded", uploaded_);
  writer.write("fingerprint", fingerprint_);
}

}  // namespace quillbay::cloud
