#pragma once

#include <QuillbayPlatform/Export.h>

#include <string>
#include <string_view>

namespace quillbay::core {

/// The text for `key` in the string table "QuillbayCore", in the user's language (see
/// `platform::preferredLanguages`), else in English; `key` itself if the table lacks it. UTF-8. Any
/// thread.
///
/// "date.minutes", "date.hours", "date.days" and "date.months" are formats that take one integer:
/// see `platform::formatted`.
QUILLBAY_EXPORT std::string Localized(std::string_view key);

}  // namespace quillbay::core
