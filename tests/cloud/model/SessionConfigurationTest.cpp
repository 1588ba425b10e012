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
  for (const char* text : {"Download", " download", "directDownload", ""}) {
    EXPECT_FALSE(SessionLinkType::fromRawValue(text)) << text;
  }
}

TEST(SessionConfiguration, AbsentLinkTypeBecomesPage) {
  const SessionConfiguration configuration("", std::nullopt, std::nullopt, "", true);
  EXPECT_EQ(configuration.linkType(), SessionLinkType::page);
  EXPECT_EQ(configuration.title(), "");
  EXPECT_EQ(configuration.password(), "");
  EXPECT_NE(configuration, SessionConfiguration::default_());
}

TEST(SessionConfiguration, WritesAbsentFieldsNotAtAllAndTheRestInFieldOrder) {
  EXPECT_EQ(JSONEncoder().encode(SessionConfiguration::default_()),
            R"({"linkType":"page","secret":false})");
  const SessionConfiguration full("t", platform::dateFromSecondsSince2001(0.5),
                                  SessionLinkType::directLink, "p", true);
  EXPECT_EQ(
      JSONEncoder().encode(full),
      R"({"title":"t","expirationDate":0.5,"password":"p","linkType":"direct","secret":true})");
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

TEST(SessionConfiguration, ReadsNullAndUnknownKeysAsAbsent) {
  EXPECT_EQ(decoded<SessionConfiguration>(
                R"({"linkType":"page","secret":false,"title":null,"password":null,
                    "expirationDate":null,"more":[1]})"),
            SessionConfiguration::default_());
}

TEST(SessionConfiguration, NamesTheFirstKeyThatDoesNotFit) {
  const std::pair<const char*, const char*> rows[] = {
      {R"({"linkType":"page"})", "missingKey secret"},
      {R"({"linkType":"page","secret":1})", "wrongType secret"},
      {R"({"linkType":null,"secret":true})", "nullValue linkType"},
      {R"({"linkType":"Page","secret":true})", "corruptValue linkType"},
      {R"({"title":5,"linkType":"page"})", "wrongType title"},
  };
  for (const auto& [json, failure] : rows) {
    EXPECT_EQ(readingFailure<SessionConfiguration>(json), failure) << json;
  }
}

}  // namespace
}  // namespace quillbay::test
