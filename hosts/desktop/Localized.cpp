#include "Localized.h"

#include <QuillbayPlatform/StringTable.h>

#include "QuillbayDesktopStrings.h"

namespace quillbay::desktop {

QString localized(const char* key) {
  static const platform::StringTable table(strings::QuillbayDesktop());
  return QString::fromStdString(table.localized(key));
}

}  // namespace quillbay::desktop
