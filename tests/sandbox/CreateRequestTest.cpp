#include "sandbox/model/CreateRequest.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace quillbay::sandbox {
namespace {

using nlohmann::json;

const Instant now{std::chrono::seconds(1'700'000'000)};

json validBody() {
  return {{"items",
           {{{"file_name", "a.txt"}, {"content_length", "5"}, {"content_type", "text/plain"}}}},
          {"config", {{"link_type", "page"}}}};
}

struct Refusal {
  const char* name;
  const char* pointer;
  json value;
  const char* blamed;
};

class CreateRequestRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(CreateRequestRefusal, NamesTheWrongMember) {
  json body = validBody();
  body[json::json_pointer(GetParam().pointer)] = GetParam().value;
  try {
    CreateRequest::parse(body.dump(), now);
    FAIL() << "accepted";
  } catch (const InvalidRequest& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().blamed), std::string::npos) << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Members, CreateRequestRefusal,
    testing::Values(
        Refusal{"ItemsNoArray", "/items", "x", "items"},
        Refusal{"ItemNoObject", "/items/0", 1, "items[0]"},
        Refusal{"NameEmpty", "/items/0/file_name", "", "items[0].file_name"},
        Refusal{"NameWithFolder", "/items/0/file_name", "a/b", "items[0].file_name"},
        Refusal{"NameOfParent", "/items/0/file_name", "..", "items[0].file_name"},
        Refusal{"NameNoString", "/items/0/file_name", 7, "items[0].file_name"},
        Refusal{"LengthNumber", "/items/0/content_length", 5, "items[0].content_length"},
        Refusal{"LengthSigned", "/items/0/content_length", "-5", "items[0].content_length"},
        Refusal{"LengthHuge", "/items/0/content_length", "99999999999999999999", "content_length"},
        Refusal{"TypeWithLineBreak", "/items/0/content_type", "a/b\r\nX: y", "content_type"},
        Refusal{"FingerprintUpperCase", "/items/0/f", std::string(64, 'A'), "items[0].f"},
        Refusal{"FingerprintShort", "/items/0/f", "abc", "items[0].f"},
        Refusal{"LinkTypeUnknown", "/config/link_type", "directLink", "config.link_type"},
        Refusal{"TitleNull", "/config/title", nullptr, "config.title"},
        Refusal{"ExpirationNumber", "/config/expiration", 1.8e9, "config.expiration"},
        Refusal{"ExpirationWords", "/config/expiration", "tomorrow", "config.expiration"},
        Refusal{"ExpirationExponent", "/config/expiration", "1e12", "config.expiration"},
        Refusal{"ExpirationPast", "/config/expiration", "1600000000.0", "already passed"},
        Refusal{"PasswordUnpadded", "/config/p", "YQ", "config.p"},
        Refusal{"PasswordUrlAlphabet", "/config/p", "_-__", "config.p"},
        Refusal{"SecretZero", "/config/is_secret", "0", "config.is_secret"}),
    [](const auto& instance) { return instance.param.name; });

TEST(CreateRequest, RefusesWhatIsNoJsonOrNestsWithoutEnd) {
  for (const std::string& body :
       {std::string(), std::string("{"), std::string("[]"), std::string("{\"items\":[\"\xff\"]}"),
        std::string(1'000'000, '[')}) {
    EXPECT_THROW(CreateRequest::parse(body, now), InvalidRequest);
  }
}

TEST(CreateRequest, ReadsEveryMember) {
  json body = validBody();
  body["items"][0]["f"] = std::string(64, 'a');
  body["config"] = {{"link_type", "direct"},
                    {"title", ""},
                    {"expiration", "1767225600.9"},
                    {"p", "Z2jDqWltISE="},
                    {"is_secret", "1"}};
  const CreateRequest request = CreateRequest::parse(body.dump(), now);
  EXPECT_EQ(request.files.at(0).byteCount, 5u);
  EXPECT_EQ(request.files.at(0).fingerprint, std::string(64, 'a'));
  EXPECT_EQ(request.linkType, LinkType::direct);
  EXPECT_EQ(request.title, "");
  EXPECT_EQ(request.expiration, Instant(std::chrono::seconds(1'767'225'600)));
  EXPECT_EQ(request.password, "ghéim!!");
  EXPECT_TRUE(request.isSecret);
}

TEST(CreateRequest, TakesAnEmptyPasswordForNone) {
  json body = validBody();
  body["config"]["p"] = "";
  EXPECT_EQ(CreateRequest::parse(body.dump(), now).password, std::nullopt);
}

}  // namespace
}  // namespace quillbay::sandbox
