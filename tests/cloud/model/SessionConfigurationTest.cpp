#include <QuillbayCloud/model/SessionConfiguration.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionConfiguration;
using cloud::SessionLinkType;
using platform::JSONDatePolicy;
using platform::JSONEncoder;

TEST(SessionLinkType, RawValuesAreTheWireTextsAndAreReadBackExactly) {
  std::vector<std::string_view> rawValues;
  for (const auto linkType : SessionLinkType::allCases) {
    rawValues.push_back(linkType.rawValue());
    EXPECT_EQ(SessionLinkType::fromRawValue(linkType.rawValue()), linkType);
  }
  EXPECT_EQ(rawValues, (std::vector<std::string_view>{"page", "download", "direct"}));
  EXPECT_FALSE(SessionLinkType::fromRawValue("Download"));
}

TEST(SessionConfiguration, WritesAbsentFieldsNotAtAll) {
  const SessionConfiguration bare(std::nullopt, std::nullopt, std::nullopt, std::nullopt, false);
  EXPECT_EQ(bare, SessionConfiguration::default_());
  EXPECT_EQ(JSONEncoder().encode(bare), R"({"linkType":"page","secret":false})");
}

TEST(SessionConfiguration, SurvivesStorageWithEitherDatePolicy) {
  const SessionConfiguration full("Ünïcode \"t\"",
                                  platform::dateFromSecondsSince1970(1767225600.25),
                                  SessionLinkType::directDownload, "p", true);
  for (const auto policy : {JSONDatePolicy::secondsSince1970, JSONDatePolicy::secondsSince2001}) {
    const auto json = JSONEncoder(policy).encode(full);
    ASSERT_TRUE(json);
    EXPECT_EQ(decoded<SessionConfiguration>(*json, policy), full) << *json;
  }
}

TEST(SessionConfiguration, IsNotReadFromAnythingElse) {
  for (const char* json :
       {R"({"linkType":"page"})", R"({"linkType":"page","secret":1})",
        R"({"linkType":null,"secret":true})", R"({"secret":true})",
        R"({"linkType":"Page","secret":true})", R"({"title":5,"linkType":"page","secret":true})"}) {
    EXPECT_FALSE(decoded<SessionConfiguration>(json)) << json;
  }
}

}  // namespace
}  // namespace quillbay::test
