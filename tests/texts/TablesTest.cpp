#include <QuillbayPlatform/PluralRules.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Languages.h"
#include "TemporaryFolder.h"

namespace quillbay {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Keys = std::set<std::string>;

struct Table {
  std::string folder;
  std::string name;
};

/// Tables by who looks texts up in them: the sheet shows texts of the core, too.
const std::vector<Table> kRooms[] = {
    {{"QuillbayCore", "QuillbayCore"}, {"QuillbayCloud", "QuillbayCloud"}},
    {{"hosts/common", "QuillbayHosts"}},
    {{"hosts/desktop", "QuillbayDesktop"}}};

fs::path resourcesOf(const Table& table) {
  return fs::path(QUILLBAY_SOURCES) / table.folder / "resources";
}

json textsOf(const Table& table, const std::string& language) {
  return json::parse(test::readFile(resourcesOf(table) / language / (table.name + ".json")));
}

Keys keysOf(const json& texts) {
  Keys keys;
  for (const auto& [key, text] : texts.items()) keys.insert(key);
  return keys;
}

/// Terminals are spoken to in English alone.
bool isForTerminals(const std::string& key) { return key.ends_with(".terminal"); }

/// A text's forms by category.
std::map<std::string, std::string> formsOf(const json& text) {
  if (text.is_string()) return {{"", text}};
  return text;
}

/// Which integers tell apart, and "other".
Keys categoriesOf(const std::string& language) {
  Keys categories = {"other"};
  for (int number = 0; number < 1000; ++number) {
    categories.emplace(platform::pluralCategory(language, number));
  }
  categories.emplace(platform::pluralCategory(language, 1'000'000));
  return categories;
}

/// All that `pattern` matches: its first group.
std::multiset<std::string> matches(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::multiset<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    found.insert(match->str(1));
  }
  return found;
}

/// What code or people look for in a text: places for values, line ends, the letter for Alt.
std::multiset<std::string> marksOf(const std::string& text) {
  return matches(text, R"((%[d0-9]|\{[a-z]+\}|\n|&))");
}

void expectAllTexts(const Table& table, const std::string& language) {
  const json english = textsOf(table, "en");
  const json texts = textsOf(table, language);
  Keys keys = keysOf(english);
  if (language != "en") std::erase_if(keys, isForTerminals);
  EXPECT_EQ(keysOf(texts), keys) << language;
  for (const auto& [key, text] : texts.items()) {
    SCOPED_TRACE(language + " " + key);
    if (text.is_object()) {
      EXPECT_EQ(keysOf(text), categoriesOf(language));
    }
    const json original = english.value(key, json(""));
    for (const auto& [category, form] : formsOf(text)) {
      EXPECT_NE(form, "") << category;
      EXPECT_EQ(marksOf(form), marksOf(formsOf(original).begin()->second)) << category;
    }
  }
}

TEST(Tables, HoldEveryTextInEveryLanguageInAllItsForms) {
  for (const auto& room : kRooms) {
    for (const Table& table : room) {
      SCOPED_TRACE(table.name);
      const fs::directory_iterator languages(resourcesOf(table));
      EXPECT_EQ(std::distance(begin(languages), end(languages)), std::ssize(test::kLanguages));
      for (const char* const language : test::kLanguages) expectAllTexts(table, language);
    }
  }
}

/// Without the lines that are comments.
std::string codeOf(const std::vector<Table>& room) {
  std::string code;
  for (const Table& table : room) {
    const fs::path folder = fs::path(QUILLBAY_SOURCES) / table.folder;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const auto extension = entry.path().extension();
      if (extension != ".cpp" && extension != ".h") continue;
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);) {
        const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
        if (!line.substr(start).starts_with("//")) code += line + '\n';
      }
    }
  }
  return code;
}

/// `key` is always followed by the number that decides on the form.
bool isUsedWithNumber(const std::string& key, const std::string& code) {
  const std::string literal = '"' + key + '"';
  for (auto place = code.find(literal); place != std::string::npos;) {
    place += literal.size();
    if (code[place] != ',') return false;
    place = code.find(literal, place);
  }
  return true;
}

TEST(Tables, HoldWhatTheSourcesLookUpAndNothingElse) {
  constexpr const char* kWord = R"x("([a-z0-9]+(?:[-.][a-z0-9]+)*)")x";
  constexpr const char* kKey = R"x("([a-z0-9]+(?:-[a-z0-9]+)*(?:\.[a-z0-9]+(?:-[a-z0-9]+)*)+)")x";
  constexpr const char* kLookUp = R"x(ocalized(?:Text)?\(\s*"([^"]*)")x";
  // Put behind the name of a cause.
  const std::regex endings(R"(\.what$|\.do$|\.do\.terminal$)");
  for (const auto& room : kRooms) {
    const std::string code = codeOf(room);
    const auto words = matches(code, kWord);
    // The place of a value in JSON.
    Keys keys = {"config.expiration"};
    for (const Table& table : room) {
      for (const std::string& key : keysOf(textsOf(table, "en"))) {
        EXPECT_TRUE(words.contains(std::regex_replace(key, endings, ""))) << key << " is unused";
        keys.insert(key);
      }
      for (const char* const language : test::kLanguages) {
        const json texts = textsOf(table, language);
        for (const auto& [key, text] : texts.items()) {
          EXPECT_TRUE(text.is_string() || isUsedWithNumber(key, code)) << key;
        }
      }
    }
    for (const char* const pattern : {kKey, kLookUp}) {
      for (const auto& key : matches(code, pattern)) {
        EXPECT_TRUE(keys.contains(key)) << key << " is in no table";
      }
    }
  }
}

}  // namespace
}  // namespace quillbay
