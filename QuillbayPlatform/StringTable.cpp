#include <QuillbayPlatform/PluralRules.h>
#include <QuillbayPlatform/PseudoLocale.h>
#include <QuillbayPlatform/RarelySet.h>
#include <QuillbayPlatform/StringTable.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace quillbay::platform {
namespace {

constexpr std::string_view kLastResort = "en";
/// The plural category of what has one form alone.
constexpr std::string_view kOther = "other";

constinit RarelySet<std::vector<std::string>> hostChoice;

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// The locale for messages, as `setlocale` would choose it.
std::string environmentLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (std::string value = environmentValue(name); !value.empty()) return value;
  }
  return "C";
}

bool isUntranslated(std::string_view locale) { return locale == "C" || locale == "POSIX"; }

/// "de_AT.UTF-8@euro" adds "de_AT" and "de"; so does "de-AT".
void append(std::vector<std::string>& languages, std::string_view locale) {
  std::string tag(locale.substr(0, locale.find_first_of(".@")));
  std::ranges::replace(tag, '-', '_');
  while (!tag.empty()) {
    if (std::ranges::find(languages, tag) == languages.end()) languages.push_back(tag);
    const std::size_t lastPart = tag.rfind('_');
    tag.resize(lastPart == std::string_view::npos ? 0 : lastPart);
  }
}

std::vector<std::string> environmentLanguages() {
  const std::string locale = environmentLocale();
  if (isUntranslated(locale)) return {};
  std::string list = environmentValue("LANGUAGE");
  if (list.empty()) list = locale;
  std::vector<std::string> languages;
  for (std::string_view rest = list; !rest.empty();) {
    const std::string_view entry = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(entry.size() + 1, rest.size()));
    const std::string_view name = entry.substr(0, entry.find('.'));
    if (isUntranslated(name)) break;
    append(languages, entry);
  }
  return languages;
}

/// Plural category to text; empty if `value` holds no text.
std::map<std::string, std::string, std::less<>> formsOf(const nlohmann::json& value) {
  std::map<std::string, std::string, std::less<>> forms;
  if (value.is_string()) forms.emplace(kOther, value.get<std::string>());
  if (!value.is_object()) return forms;
  for (const auto& [category, form] : value.items()) {
    if (form.is_string()) forms.emplace(category, form.get<std::string>());
  }
  return forms;
}

}  // namespace

StringTable::StringTable(const std::map<std::string, std::string_view>& jsonByLanguage) {
  for (const auto& [language, text] : jsonByLanguage) {
    const auto table = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    auto& texts = languages_[language];
    if (!table.is_object()) continue;
    for (const auto& [key, value] : table.items()) texts.emplace(key, formsOf(value));
  }
}

std::string StringTable::localized(std::string_view key) const { return form(key, std::nullopt); }

std::string StringTable::localized(std::string_view key, std::int64_t number) const {
  return form(key, number);
}

std::string StringTable::form(std::string_view key, std::optional<std::int64_t> number) const {
  std::vector<std::string> languages = preferredLanguages();
  languages.emplace_back(kLastResort);
  for (const std::string& language : languages) {
    const bool isPseudo = language == kPseudoLanguage;
    const std::string_view tag = isPseudo ? kLastResort : language;
    const std::string* text = find(tag, key, number ? pluralCategory(tag, *number) : kOther);
    if (text != nullptr) return isPseudo ? pseudoLocalized(*text) : *text;
  }
  return std::string(key);
}

const std::string* StringTable::find(std::string_view language, std::string_view key,
                                     std::string_view category) const {
  const auto table = languages_.find(language);
  if (table == languages_.end()) return nullptr;
  const auto forms = table->second.find(key);
  if (forms == table->second.end()) return nullptr;
  auto form = forms->second.find(category);
  if (form == forms->second.end()) form = forms->second.find(kOther);
  return form == forms->second.end() ? nullptr : &form->second;
}

std::vector<std::string> preferredLanguages() {
  auto languages = hostChoice.get();
  return languages.empty() ? environmentLanguages() : languages;
}

void setPreferredLanguages(const std::vector<std::string>& languages) {
  std::vector<std::string> expanded;
  for (const std::string& language : languages) append(expanded, language);
  hostChoice.set(std::move(expanded));
}

std::string formatted(std::string_view format, int argument) {
  constexpr std::string_view kPlaceholder = "%d";
  std::string text(format);
  const std::size_t place = text.find(kPlaceholder);
  if (place == std::string_view::npos) return text;
  return text.replace(place, kPlaceholder.size(), std::to_string(argument));
}

}  // namespace quillbay::platform
