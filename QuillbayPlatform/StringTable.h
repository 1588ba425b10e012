#pragma once

#include <QuillbayPlatform/Export.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::platform {

/// Texts by key, one table a language, compiled into the library that owns it.
class QUILLBAY_EXPORT StringTable {
 public:
  /// `jsonByLanguage`: language tag ("en", "de") to a JSON object of key to text. English is the
  /// language of last resort. A table that does not read is empty.
  explicit StringTable(const std::map<std::string, std::string_view>& jsonByLanguage);

  /// The text for `key` in the first preferred language that has the key; else `key` itself.
  std::string localized(std::string_view key) const;

 private:
  std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>> languages_;
};

/// The user's languages, best first ("de_AT", "de"): what `setPreferredLanguages` said, else
/// LANGUAGE, LC_ALL, LC_MESSAGES, LANG in gettext's order. Any thread.
QUILLBAY_EXPORT std::vector<std::string> preferredLanguages();

/// Replaces the environment's choice; an empty list returns to it. Any thread.
QUILLBAY_EXPORT void setPreferredLanguages(const std::vector<std::string>& languages);

/// `format` with its first "%d" replaced by `argument`.
QUILLBAY_EXPORT std::string formatted(std::string_view format, int argument);

}  // namespace quillbay::platform
