#include <QuillbayCore/Localized.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/StringTable.h>

#include "QuillbayCoreStrings.h"

namespace quillbay::core {

std::string Localized(std::string_view key) {
  static constinit platform::OnFirstUse<const platform::StringTable> table;
  const auto make = [] {
    return std::make_unique<const platform::StringTable>(strings::QuillbayCore());
  };
  return table.get(make).localized(key);
}

}  // namespace quillbay::core
