#pragma once

#include <QuillbayPlatform/Export.h>

#include <string>
#include <string_view>

namespace quillbay::cloud {

/// The text for `key` in the string table "QuillbayCloud", in the user's language (see
/// `platform::preferredLanguages`), else in English; `key` itself if the table lacks it. UTF-8. Any
/// thread.
QUILLBAY_EXPORT std::string Localized(std::string_view key);

}  // namespace quillbay::cloud
