#pragma once

#include <QuillbayCloud/ui/Localized.h>

#include <QString>
#include <string_view>

namespace quillbay::cloud {

/// `Localized`, as the controls take it.
inline QString localizedText(std::string_view key) {
  return QString::fromStdString(Localized(key));
}

}  // namespace quillbay::cloud
