#pragma once

#include <QuillbayPlatform/Export.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace quillbay::core {

/// The text for `key` in the string table "QuillbayCore", in the user's language (see
/// `platform::preferredLanguages`), else in English; `key` itself if the table lacks it. UTF-8. Any
/// thread.
QUILLBAY_EXPORT std::string Localized(std::string_view key);

/// The same in the plural form that `number` takes in that language. "date.minutes", "date.hours",
/// "date.days" and "date.months" are formats for it: see `platform::formatted`.
QUILLBAY_EXPORT std::string Localized(std::string_view key, std::int64_t number);

}  // namespace quillbay::core
