#include "Localized.h"

#include <QuillbayPlatform/StringTable.h>

#include "QuillbayDesktopStrings.h"

namespace quillbay::desktop {
namespace {

const platform::StringTable& table() {
  static const platform::StringTable table(strings::QuillbayDesktop());
  return table;
}

}  // namespace

QString localized(const char* key) { return QString::fromStdString(table().localized(key)); }

QString localized(const char* key, std::int64_t number) {
  return QString::fromStdString(table().localized(key, number));
}

}  // namespace quillbay::desktop
