#include <QuillbayPlatform/StringTable.h>
#include <gtest/gtest.h>

#include <cstdlib>

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
  struct Case {
    const char* name;
    Environment environment;
    std::vector<std::string> languages;
  };
  const Case cases[] = {
      {"nothing set", {}, {}},
      {"region and codeset", {{"LANG", "de_AT.UTF-8"}}, {"de_AT", "de"}},
      {"LC_ALL over all", {{"LC_ALL", "it"}, {"LC_MESSAGES", "fr"}, {"LANG", "de"}}, {"it"}},
      {"LC_MESSAGES over LANG", {{"LANG", "de_DE"}, {"LC_MESSAGES", "fr"}}, {"fr"}},
      {"empty is unset", {{"LC_ALL", ""}, {"LANGUAGE", ""}, {"LANG", "de"}}, {"de"}},
      {"list", {{"LANG", "it_IT"}, {"LANGUAGE", "de_AT::fr:de"}}, {"de_AT", "de", "fr"}},
      {"C switches translation off", {{"LC_ALL", "C"}, {"LANGUAGE", "de"}}, {}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    setEnvironment(row.environment);
    EXPECT_EQ(preferredLanguages(), row.languages);
    setPreferredLanguages({"sr-RS"});
    EXPECT_EQ(preferredLanguages(), (std::vector<std::string>{"sr_RS", "sr"}));
    setPreferredLanguages({});
  }
}

TEST_F(StringTableTest, FindsEachKeyInTheBestTableThatHasItElseGivesTheKey) {
  const StringTable table({{"en", R"({"hello": "Hello", "only-english": "English"})"},
                           {"de", R"({"hello": "Hallo", "number": 5})"},
                           {"fr", "no JSON"}});
  setPreferredLanguages({"fr", "de_AT"});
  EXPECT_EQ(table.localized("hello"), "Hallo");
  EXPECT_EQ(table.localized("only-english"), "English");
  EXPECT_EQ(table.localized("number"), "number");
  setPreferredLanguages({"en_GB", "de"});
  EXPECT_EQ(table.localized("hello"), "Hello");
}

TEST_F(StringTableTest, PutsTheNumberInAndTouchesNothingElse) {
  EXPECT_EQ(formatted("%s in %d days, %d", -3), "%s in -3 days, %d");
}

}  // namespace
}  // namespace quillbay::platform
