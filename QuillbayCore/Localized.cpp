#include <QuillbayCore/Localized.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/StringTable.h>

#include "QuillbayCoreStrings.h"

namespace quillbay::core {
namespace {

const platform::StringTable& table() {
  static constinit platform::OnFirstUse<const platform::StringTable> table;
  return table.get(
      [] { return std::make_unique<const platform::StringTable>(strings::QuillbayCore()); });
}

}  // namespace

std::string Localized(std::string_view key) { return table().localized(key); }

std::string Localized(std::string_view key, std::int64_t number) {
  return table().localized(key, number);
}

}  // namespace quillbay::core
