#include <QuillbayCore/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include "QuillbayCoreStrings.h"

namespace quillbay::core {

std::string Localized(std::string_view key) {
  // Never destroyed: a host may ask while it exits.
  static const auto& table = *new platform::StringTable(strings::QuillbayCore());
  return table.localized(key);
}

}  // namespace quillbay::core
