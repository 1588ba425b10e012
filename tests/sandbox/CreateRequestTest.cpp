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

std::string refusal(const std::string& body) {
  try {
    CreateRequest::parse(body, now);
    return "accepted";
  } catch (const InvalidRequest& error) {
    return error.what();
  }
}

TEST(CreateRequest, NamesTheWrongMember) {
  const std::tuple<const char*, json, const char*> rows[] = {
      {"/items", "x", "items"},
      {"/items/0", 1, "items[0]"},
      {"/items/0/file_name", "a/b", "items[0].file_name"},
      {"/items/0/file_name", "..", "items[0].file_name"},
      {"/items/0/file_name", 7, "items[0].file_name"},
      {"/items/0/content_length", 5, "items[0].content_length"},
      {"/items/0/content_length", "-5", "items[0].content_length"},
      {"/items/0/content_length", "99999999999999999999", "content_length"},
      {"/items/0/content_type", "a/b;c=\"\r\nX: y\"", "content_type"},
      {"/items/0/content_type", "image/png, text/html", "content_type"},
      {"/items/0/content_type", "text/plain;foo=bar, text/html", "content_type"},
      {"/items/0/content_type", "text/plain;foo=\"bar", "content_type"},
      {"/items/0/content_type", "text/plain;foo=", "content_type"},
      {"/items/0/content_type", "image/", "content_type"},
      {"/items/0/f", std::string(64, 'A'), "items[0].f"},
      {"/config/link_type", "directLink", "config.link_type"},
      {"/config/title", nullptr, "config.title"},
      {"/config/expiration", 1.8e9, "config.expiration"},
      {"/config/expiration", "1e12", "config.expiration"},
      {"/config/expiration", "1600000000.0", "already passed"},
      {"/config/p", "YQ", "config.p"},
      {"/config/is_secret", "0", "config.is_secret"},
  };
  for (const auto& [pointer, value, blamed] : rows) {
    json body = validBody();
    body[json::json_pointer(pointer)] = value;
    EXPECT_TRUE(refusal(body.dump()).contains(blamed)) << pointer << " " << value;
  }
  EXPECT_NE(refusal("{"), "accepted");
  EXPECT_NE(refusal(std::string(1'000'000, '[')), "accepted");
}

TEST(CreateRequest, ReadsEveryMember) {
  json body = validBody();
  body["items"][0]["f"] = std::string(64, 'a');
  body["items"][0]["content_type"] = "text/X-a ; b=\"\\\", c\";;d=e";
  body["config"] = {{"link_type", "direct"},
                    {"title", ""},
                    {"expiration", "1767225600.9"},
                    {"p", "Z2jDqWltISE="},
                    {"is_secret", "1"}};
  const CreateRequest request = CreateRequest::parse(body.dump(), now);
  EXPECT_EQ(request.files.at(0).byteCount, 5u);
  EXPECT_EQ(request.files.at(0).fingerprint, std::string(64, 'a'));
  EXPECT_EQ(request.files.at(0).contentType, "text/X-a ; b=\"\\\", c\";;d=e");
  EXPECT_EQ(request.linkType, LinkType::direct);
  EXPECT_EQ(request.title, "");
  EXPECT_EQ(request.expiration, Instant(std::chrono::seconds(1'767'225'600)));
  EXPECT_EQ(request.password, "ghéim!!");
  EXPECT_TRUE(request.isSecret);
  body["config"]["p"] = "";
  EXPECT_EQ(CreateRequest::parse(body.dump(), now).password, std::nullopt);
}

}  // namespace
}  // namespace quillbay::sandbox
