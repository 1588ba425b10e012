#include <QuillbayPlatform/PluralRules.h>
#include <QuillbayPlatform/StringTable.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace quillbay::platform {
namespace {

class StringTableTest : public testing::Test {
 protected:
  using Environment = std::map<std::string, std::string>;

  ~StringTableTest() override {
    setPreferredLanguages({});
    setEnvironment({});
  }

  static void setEnvironment(const Environment& values) {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(name);
    for (const auto& [name, value] : values) setenv(name.c_str(), value.c_str(), 1);
  }
};

TEST_F(StringTableTest, FollowsTheEnvironmentInGettextsOrderUnlessTheHostChooses) {
  const std::tuple<const char*, Environment, std::vector<std::string>> rows[] = {
      {"region and codeset", {{"LANG", "de_AT.UTF-8"}}, {"de_AT", "de"}},
      {"LC_ALL over all", {{"LC_ALL", "it"}, {"LC_MESSAGES", "fr"}, {"LANG", "de"}}, {"it"}},
      {"LC_MESSAGES over LANG", {{"LANG", "de_DE"}, {"LC_MESSAGES", "fr"}}, {"fr"}},
      {"empty is unset", {{"LC_ALL", ""}, {"LANGUAGE", ""}, {"LANG", "de"}}, {"de"}},
      {"list", {{"LANG", "it_IT"}, {"LANGUAGE", "de_AT::fr:de"}}, {"de_AT", "de", "fr"}},
      {"C switches translation off", {{"LC_ALL", "C"}, {"LANGUAGE", "de"}}, {}},
  };
  for (const auto& [name, environment, languages] : rows) {
    setEnvironment(environment);
    EXPECT_EQ(preferredLanguages(), languages) << name;
  }
  setPreferredLanguages({"sr-RS"});
  EXPECT_EQ(preferredLanguages(), (std::vector<std::string>{"sr_RS", "sr"}));
}

TEST_F(StringTableTest, KnowsTheCategoryOfANumberInEachLanguage) {
  const std::tuple<const char*, const char*, std::vector<std::int64_t>> rows[] = {
      {"en", "one", {1, -1}},
      {"de", "other", {0, 2, 21, 1'000'000}},
      {"es", "one", {1}},
      {"es", "many", {1'000'000, -2'000'000}},
      {"es", "other", {0, 2, 1'000'001}},
      {"fr_CA", "one", {0, 1}},
      {"fr", "many", {1'000'000}},
      {"fr", "other", {2, 101}},
      {"pl", "one", {1}},
      {"pl", "few", {2, 4, 22, 104, -33}},
      {"pl", "many", {0, 5, 11, 12, 14, 21, 112, std::numeric_limits<std::int64_t>::min()}},
      {"xx", "other", {1}},
  };
  for (const auto& [language, category, numbers] : rows) {
    for (const std::int64_t number : numbers) {
      EXPECT_EQ(pluralCategory(language, number), category) << language << number;
    }
  }
}

TEST_F(StringTableTest, TakesTheFormForANumberAndLeavesOutWhatIsNoText) {
  const StringTable table({{"en", R"({"a": "a %d", "b": "b", "c": "c", "d": "d"})"},
                           {"pl", R"({"a": {"one": "a1", "few": "a2", "other": "a5"},
                                      "b": 1, "c": {}, "d": {"few": "d2", "one": null}})"}});
  setPreferredLanguages({"pl_PL"});
  const std::tuple<const char*, std::int64_t, const char*> rows[] = {
      {"a", 1, "a1"}, {"a", -3, "a2"}, {"a", 5, "a5"}, {"b", 1, "b"},
      {"c", 1, "c"},  {"d", 2, "d2"},  {"d", 1, "d"},  {"e", 1, "e"}};
  for (const auto& [key, number, text] : rows) EXPECT_EQ(table.localized(key, number), text);
  EXPECT_EQ(table.localized("a"), "a5");
  setPreferredLanguages({"en-XA"});
  EXPECT_EQ(table.localized("a", 1), "[a %d ~~~~~]");
}

TEST_F(StringTableTest, PutsTheNumberInAndTouchesNothingElse) {
  EXPECT_EQ(formatted("%s in %d days, %d", -3), "%s in -3 days, %d");
}

}  // namespace
}  // namespace quillbay::platform
