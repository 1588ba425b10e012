#include <QuillbayCloud/model/SessionConfiguration.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionConfiguration;
using cloud::SessionLinkType;
using platform::JSONDatePolicy;
using platform::JSONEncoder;

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

}  // namespace
}  // namespace quillbay::test
