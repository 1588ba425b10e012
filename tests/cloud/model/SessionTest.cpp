#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/model/Session.h>

#include <regex>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Item;
using cloud::Session;
using platform::JSONDatePolicy;
using platform::JSONEncoder;

constexpr const char* kFullSession =
    R"({"id":"s","token":"t","url":"https://q.example/s?k=1","title":"T","expiration":60,)"
    R"("items":[{"id":"b","is_uploaded":true,"fingerprint":"f1"},)"
    R"({"id":"a","is_uploaded":false,"fingerprint":"f2"}]})";

TEST(Session, ReadsAndWritesWhatItHoldsInTheServicesOrderAndNeverAPassword) {
  const auto session = decoded<Session>(kFullSession);
  ASSERT_TRUE(session);
  EXPECT_EQ(session->identifier(), "s");
  EXPECT_EQ(session->token(), "t");
  EXPECT_EQ(session->url().absoluteString(), "https://q.example/s?k=1");
  EXPECT_EQ(session->title(), "T");
  EXPECT_EQ(session->expirationDate(), platform::dateFromSecondsSince1970(60));
  EXPECT_EQ(items(*session), (std::vector<Item>{{"b", true, "f1"}, {"a", false, "f2"}}));
  const std::string json =
      JSONEncoder(JSONDatePolicy::secondsSince1970).encode(*session).value_or("none");
  EXPECT_EQ(nlohmann::ordered_json::parse(json), nlohmann::ordered_json::parse(kFullSession));
  EXPECT_EQ(decoded<Session>(json), session);
  EXPECT_NE(decoded<Session>(std::regex_replace(json, std::regex("f2"), "f3")), session);

  const auto bare = decoded<Session>(
      R"({"password":"p","items":[],"url":"https://q.example","id":"s","token":5,"title":false})");
  ASSERT_TRUE(bare);
  EXPECT_FALSE(bare->password());
  EXPECT_EQ(JSONEncoder().encode(*bare), R"({"id":"s","url":"https://q.example","items":[]})");
}

TEST(Session, ReadsAnExpirationThatIsNoIntegerAsAbsent) {
  for (const char* expiration : {"1.5", "60.0", "6e1", "\"60\"", "null", "true", "[60]", "{}"}) {
    const auto session = decoded<Session>(
        std::string(R"({"id":"s","url":"https://q.example","items":[],"expiration":)") +
        expiration + "}");
    ASSERT_TRUE(session) << expiration;
    EXPECT_FALSE(session->expirationDate()) << expiration;
  }
}

// N uploaders each hold the session of N items.
TEST(Session, CopiesShareTheirItems) {
  const Session session = *decoded<Session>(kFullSession);
  const Session copy = session;
  EXPECT_EQ(&items(copy), &items(session));
}

TEST(Session, FailsWholeAtARequiredKeyThatDoesNotFit) {
  const std::string start = R"({"id":"s","url":"https://q.example")";
  for (const std::string& json :
       {std::string(R"({"url":"https://q.example","items":[]})"),
        std::string(R"({"id":"s","url":"","items":[]})"), start + "}",
        start + R"(,"items":[{"id":"a","is_uploaded":0,"fingerprint":""}]})",
        start + R"(,"items":[{"id":"a","is_uploaded":true,"fingerprint":""},
                             {"id":"b","is_uploaded":true}]})"}) {
    EXPECT_FALSE(decoded<Session>(json)) << json;
  }
}

}  // namespace
}  // namespace quillbay::test
