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

TEST_F(StringTableTest, PutsTheNumberInAndTouchesNothingElse) {
  EXPECT_EQ(formatted("%s in %d days, %d", -3), "%s in -3 days, %d");
}

}  // namespace
}  // namespace quillbay::platform
