#include <QuillbayPlatform/StringTable.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace quillbay::platform {
namespace {

class StringTableTest : public testing::Test {
 protected:
  ~StringTableTest() override {
    setPreferredLanguages({});
    for (const char* name : kNames) unsetenv(name);
  }

  static void setEnvironment(const std::map<std::string, std::string>& values) {
    for (const char* name : kNames) unsetenv(name);
    for (const auto& [name, value] : values) setenv(name.c_str(), value.c_str(), 1);
  }

  static constexpr const char* kNames[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
  const StringTable table_{{{"en", R"({"hello": "Hello", "only-english": "English"})"},
                            {"de", R"({"hello": "Hallo", "number": 5})"},
                            {"fr", "no JSON"}}};
};

TEST_F(StringTableTest, FollowsTheEnvironmentInGettextsOrder) {
  using Languages = std::vector<std::string>;
  struct Case {
    const char* name;
    std::map<std::string, std::string> environment;
    Languages languages;
  };
  const Case cases[] = {
      {"nothing set", {}, {}},
      {"region and codeset", {{"LANG", "de_AT.UTF-8"}}, {"de_AT", "de"}},
      {"modifier", {{"LANG", "sr_RS@latin"}}, {"sr_RS", "sr"}},
      {"LC_MESSAGES over LANG", {{"LANG", "de_DE"}, {"LC_MESSAGES", "fr"}}, {"fr"}},
      {"LC_ALL over all", {{"LC_ALL", "it"}, {"LC_MESSAGES", "fr"}, {"LANG", "de"}}, {"it"}},
      {"empty is unset", {{"LC_ALL", ""}, {"LANGUAGE", ""}, {"LANG", "de"}}, {"de"}},
      {"list", {{"LANG", "it_IT"}, {"LANGUAGE", "de_AT::fr:de"}}, {"de_AT", "de", "fr"}},
      {"list ends at C", {{"LANG", "it_IT"}, {"LANGUAGE", "fr:C:de"}}, {"fr"}},
      {"C switches translation off", {{"LC_ALL", "C"}, {"LANGUAGE", "de"}}, {}},
      {"POSIX too", {{"LANG", "POSIX"}, {"LANGUAGE", "de"}}, {}},
      {"unset locale too", {{"LANGUAGE", "de"}}, {}},
      {"C with a codeset is no language", {{"LANG", "C.UTF-8"}}, {}},
      {"but lets the list count", {{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}, {"de"}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    setEnvironment(row.environment);
    EXPECT_EQ(preferredLanguages(), row.languages);
  }
}

TEST_F(StringTableTest, HostsChoiceReplacesTheEnvironmentUntilItIsTakenBack) {
  setEnvironment({{"LANG", "it"}});
  setPreferredLanguages({"de-AT"});
  EXPECT_EQ(preferredLanguages(), (std::vector<std::string>{"de_AT", "de"}));
  setPreferredLanguages({});
  EXPECT_EQ(preferredLanguages(), (std::vector<std::string>{"it"}));
}

TEST_F(StringTableTest, FindsEachKeyInTheBestTableThatHasItElseGivesTheKey) {
  setPreferredLanguages({"fr", "de_AT"});
  EXPECT_EQ(table_.localized("hello"), "Hallo");
  EXPECT_EQ(table_.localized("only-english"), "English");
  EXPECT_EQ(table_.localized("number"), "number");
  EXPECT_EQ(table_.localized("missing.key"), "missing.key");
  setPreferredLanguages({"en_GB", "de"});
  EXPECT_EQ(table_.localized("hello"), "Hello");
}

TEST_F(StringTableTest, PutsTheNumberInAndTouchesNothingElse) {
  EXPECT_EQ(formatted("%s in %d days, %d", -3), "%s in -3 days, %d");
  EXPECT_EQ(formatted("100 %", 3), "100 %");
}

}  // namespace
}  // namespace quillbay::platform
