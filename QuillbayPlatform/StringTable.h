#pragma once

#include <QuillbayPlatform/Export.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::platform {

/// Texts by key, one table a language, compiled into the library that owns it.
///
/// A text that depends on a number has a form for each plural category of its language: "one",
/// "few", "many", "other", as the Unicode CLDR names them. "other" stands for those that are
/// missing, and where no number is known.
class QUILLBAY_EXPORT StringTable {
 public:
  /// `jsonByLanguage`: language tag ("en", "de") to a JSON object of key to text, or to an object
  /// of plural category to text. English is the language of last resort. A table that does not
  /// read is empty, and a value that is neither is missing.
  explicit StringTable(const std::map<std::string, std::string_view>& jsonByLanguage);

  /// The text for `key` in the first preferred language that has the key; else `key` itself.
  std::string localized(std::string_view key) const;
  /// The same in its form for `number`. Placeholders in it stay as they are: see `formatted`.
  std::string localized(std::string_view key, std::int64_t number) const;

 private:
  template <class Value>
  using Map = std::map<std::string, Value, std::less<>>;
  using Forms = Map<std::string>;

  QUILLBAY_HIDDEN std::string form(std::string_view key, std::optional<std::int64_t> number) const;
  /// Null if there is none.
  QUILLBAY_HIDDEN const std::string* find(std::string_view language, std::string_view key,
                                          std::string_view category) const;

  Map<Map<Forms>> languages_;
};

/// The user's languages, best first ("de_AT", "de"): what `setPreferredLanguages` said, else
/// LANGUAGE, LC_ALL, LC_MESSAGES, LANG in gettext's order. Any thread.
QUILLBAY_EXPORT std::vector<std::string> preferredLanguages();

/// Replaces the environment's choice; an empty list returns to it. Any thread.
QUILLBAY_EXPORT void setPreferredLanguages(const std::vector<std::string>& languages);

/// `format` with its first "%d" replaced by `argument`.
QUILLBAY_EXPORT std::string formatted(std::string_view format, int argument);

}  // namespace quillbay::platform
