#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include "QuillbayCloudStrings.h"

namespace quillbay::cloud {

std::string Localized(std::string_view key) {
  // Never destroyed: a host may ask while it exits.
  static const auto& table = *new platform::StringTable(strings::QuillbayCloud());
  return table.localized(key);
}

}  // namespace quillbay::cloud
