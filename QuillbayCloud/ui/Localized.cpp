#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/StringTable.h>

#include "QuillbayCloudStrings.h"

namespace quillbay::cloud {

std::string Localized(std::string_view key) {
  static constinit platform::OnFirstUse<const platform::StringTable> table;
  const auto make = [] {
    return std::make_unique<const platform::StringTable>(strings::QuillbayCloud());
  };
  return table.get(make).localized(key);
}

}  // namespace quillbay::cloud
