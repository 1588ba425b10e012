#pragma once

#include <cstdint>
#include <string_view>

namespace quillbay::platform {

/// Internal: the plural category of `number` in a language: "one", "few", "many" or "other", by
/// the cardinal rules for integers of the Unicode CLDR (UTS #35, part 3, "Language Plural Rules").
/// The sign plays no part. `language`: a tag such as "pl" or "pl_PL"; one without a rule of its
/// own here has "other" alone. Any thread.
std::string_view pluralCategory(std::string_view language, std::int64_t number);

}  // namespace quillbay::platform
