#include <QuillbayPlatform/RarelySet.h>
#include <QuillbayPlatform/StringTable.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace quillbay::platform {
namespace {

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

}  // namespace

StringTable::StringTable(const std::map<std::string, std::string_view>& jsonByLanguage) {
  for (const auto& [language, text] : jsonByLanguage) {
    const auto table = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    auto& texts = languages_[language];
    if (!table.is_object()) continue;
    for (const auto& [key, value] : table.items()) {
      if (value.is_string()) texts.emplace(key, value.get<std::string>());
    }
  }
}

std::string StringTable::localized(std::string_view key) const {
  std::vector<std::string> languages = preferredLanguages();
  languages.emplace_back("en");
  for (const std::string& language : languages) {
    const auto table = languages_.find(language);
    if (table == languages_.end()) continue;
    const auto text = table->second.find(key);
    if (text != table->second.end()) return text->second;
  }
  return std::string(key);
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
