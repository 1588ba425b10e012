// Texts for people: tables of texts, the choice of a language from the environment, plural forms,
// placeholders, and names that strangers chose.
#include <QuillbayPlatform/PluralRules.h>
#include <QuillbayPlatform/PseudoLocale.h>
#include <QuillbayPlatform/SingleLine.h>
#include <QuillbayPlatform/StringTable.h>
#include <fuzz/support/Expect.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>

using namespace quillbay;
using fuzz::expect;

namespace {

/// A variable of the environment that changes in place: what `setenv` replaces is never freed.
class Variable {
 public:
  explicit Variable(std::string_view name) : nameLength_(name.size() + 1) {
    (std::string(name) + "=").copy(text_.data(), text_.size() - 1);
    putenv(text_.data());
  }

  void set(const std::string& value) {
    const auto length = std::min(std::strlen(value.c_str()), text_.size() - nameLength_ - 1);
    std::memcpy(text_.data() + nameLength_, value.data(), length);
    text_[nameLength_ + length] = '\0';
  }

 private:
  const std::size_t nameLength_;
  std::array<char, 128> text_ = {};
};

bool isUTF8(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) ==
         nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore);
}

void expectSingleLine(const std::string& text) {
  const std::string line = platform::singleLine(text);
  expect(isUTF8(line), "a line is UTF-8");
  expect(platform::singleLine(line) == line, "a line stays as it is");
  expect(std::ranges::none_of(line, [](unsigned char c) { return c < ' ' || c == 0x7F; }),
         "a line has no control character");
  for (const char* mark : {"\xC2\x80", "\xC2\x9F", "\xD8\x9C", "\xE2\x80\x8E", "\xE2\x80\xA8",
                           "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
    expect(line.find(mark) == std::string::npos, "a line has no mark that changes its direction");
  }
}

void expectFormatted(const std::string& format, int argument) {
  const std::string text = platform::formatted(format, argument);
  const std::size_t place = format.find("%d");
  if (place == std::string::npos) return expect(text == format, "no placeholder, no number");
  expect(text == format.substr(0, place) + std::to_string(argument) + format.substr(place + 2),
         "the first placeholder becomes the number");
}

void expectPluralForm(const std::string& language, std::int64_t number) {
  const auto category = platform::pluralCategory(language, number);
  expect(std::set<std::string_view>{"one", "few", "many", "other"}.contains(category),
         "a plural category is one of the CLDR's");
  expect(platform::pluralCategory(language + "_XX", number) == category,
         "a region has the rule of its language");
  if (number == std::numeric_limits<std::int64_t>::min()) return;
  expect(platform::pluralCategory(language, -number) == category, "the sign plays no part");
}

void expectLanguages(const std::vector<std::string>& languages) {
  for (std::size_t i = 0; i < languages.size(); ++i) {
    const std::string& tag = languages[i];
    expect(!tag.empty() && tag.find_first_of(".@-:") == std::string::npos, "a tag is a tag");
    expect(std::ranges::count(languages, tag) == 1, "no language is tried twice");
    const std::size_t region = tag.rfind('_');
    if (region == std::string::npos || region == 0) continue;
    expect(std::ranges::find(languages, tag.substr(0, region)) != languages.end(),
           "a region falls back to its language");
  }
}

void expectTable(const std::string& json, const std::string& key, std::int64_t number) {
  const auto languages = platform::preferredLanguages();
  const std::string language = languages.empty() ? "en" : languages.front();
  const platform::StringTable alone({{language, json}});
  const platform::StringTable withKey({{"en", json}, {language, R"({"k":{"other":"text"}})"}});
  expect(!withKey.localized("k").empty(), "a language that has the key is enough");
  const auto value = nlohmann::json::parse(json, nullptr, false);
  const bool mayHaveText = value.is_object() && value.contains(key);
  if (!mayHaveText) expect(alone.localized(key, number) == key, "an unknown key is its own text");
  if (!mayHaveText || !value[key].is_string() || language == platform::kPseudoLanguage) return;
  const auto text = value[key].get<std::string>();
  expect(alone.localized(key) == text, "a plain text is shown as it is");
  expect(alone.localized(key, number) == text, "for every number");
}

void expectPseudoLocalized(const std::string& english) {
  const std::string text = platform::pseudoLocalized(english);
  if (text == english) return;
  expect(text.starts_with("[" + english) && text.ends_with(']'), "brackets show a text's ends");
  expect(2 * text.size() >= 3 * english.size(), "it is longer by half");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  static std::array<Variable, 4> variables = {Variable("LANGUAGE"), Variable("LC_ALL"),
                                              Variable("LC_MESSAGES"), Variable("LANG")};
  FuzzedDataProvider input(bytes, byteCount);
  for (Variable& variable : variables) variable.set(input.ConsumeRandomLengthString(64));
  const auto number = input.ConsumeIntegral<std::int64_t>();
  const std::string key = input.ConsumeRandomLengthString(16);
  const std::string text = input.ConsumeRemainingBytesAsString();
  const auto languages = platform::preferredLanguages();
  expectLanguages(languages);
  expectPluralForm(languages.empty() ? key : languages.front(), number);
  expectTable(text, key, number);
  expectFormatted(text, static_cast<int>(number));
  expectSingleLine(text);
  expectPseudoLocalized(text);
  return 0;
}
