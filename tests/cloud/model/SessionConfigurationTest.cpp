#include <QuillbayCloud/model/SessionConfiguration.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionConfiguration;
using cloud::SessionLinkType;
using platform::JSONDatePolicy;
using platform::JSONEncoder;

const SessionConfiguration kFull("Ü \"t\"", platform::dateFromSecondsSince1970(1767225600.25),
                                 SessionLinkType::directDownload, "p", true);

// Hosts have such texts in their files.
TEST(SessionConfiguration, HasOneStoredFormPerDatePolicy) {
  const std::tuple<SessionConfiguration, JSONDatePolicy, const char*> rows[] = {
      {kFull, JSONDatePolicy::secondsSince1970,
       R"({"title":"Ü \"t\"","expirationDate":1767225600.25,"password":"p",)"
       R"("linkType":"download","secret":true})"},
      {kFull, JSONDatePolicy::secondsSince2001,
       R"({"title":"Ü \"t\"","expirationDate":788918400.25,"password":"p",)"
       R"("linkType":"download","secret":true})"},
      {{{}, {}, {}, {}, false}, {}, R"({"linkType":"page","secret":false})"},
      {{"", {}, SessionLinkType::directLink, "", false},
       {},
       R"({"title":"","password":"","linkType":"direct","secret":false})"},
  };
  for (const auto& [configuration, policy, json] : rows) {
    EXPECT_EQ(JSONEncoder(policy).encode(configuration).value_or("none"), json);
    EXPECT_EQ(decoded<SessionConfiguration>(json, policy), configuration) << json;
  }
}

TEST(SessionConfiguration, ReadsNullAsAbsentAndFailsWhereAValueIsMissingOrDoesNotFit) {
  const std::pair<const char*, const char*> rows[] = {
      {R"("title":null,"expirationDate":null,"password":null,"linkType":"page","secret":false)",
       ""},
      {R"("title":5,"linkType":"page","secret":false)", "title"},
      {R"("expirationDate":"5","linkType":"page","secret":false)", "expirationDate"},
      {R"("password":false,"linkType":"page","secret":false)", "password"},
      {R"("secret":false)", "linkType"},
      {R"("linkType":null,"secret":false)", "linkType"},
      {R"("linkType":"Page","secret":false)", "linkType"},
      {R"("linkType":"page")", "secret"},
      {R"("linkType":"page","secret":1)", "secret"},
  };
  for (const auto& [members, failingKey] : rows) {
    const auto read = decoded<SessionConfiguration>("{" + std::string(members) + "}");
    ASSERT_EQ(read.has_value(), failingKey == std::string()) << members;
    EXPECT_EQ(read.value_or(SessionConfiguration::default_()), SessionConfiguration::default_());
    if (read) continue;
    EXPECT_EQ(dynamic_cast<const platform::JSONError&>(*read.error()).keyPath(), failingKey);
  }
}

}  // namespace
}  // namespace quillbay::test
