#include <gtest/gtest.h>

#include <deque>

#include "tests/sandbox/RawClient.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

using nlohmann::json;

const TestFile letter{"letter.txt", "Dear all"};

class Store : public RunningSandbox {
 protected:
  static std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  }
};

TEST_F(Store, TagsAnObjectWithItsQuotedMd5) {
  const json session = createSession({letter});
  EXPECT_EQ(put(uploadTarget(session, 0), letter)->get_header_value("ETag"),
            "\"737664ab1b5e9656d4ebdbac9a49a9fc\"");
}

TEST_F(Store, TakesAnAddressOnlyAsItWasSigned) {
  const json session = createSession({letter, letter});
  const std::string target = uploadTarget(session, 0);
  const std::string signature = target.substr(target.size() - 64);
  const std::string flipped = (signature[0] == 'a' ? "b" : "a") + signature.substr(1);
  const std::pair<std::string, std::string> cases[] = {
      {replaced(target, signature, flipped), "403 SignatureDoesNotMatch"},
      {replaced(target, session["items"][0]["id"], session["items"][1]["id"]),
       "403 SignatureDoesNotMatch"},
      {replaced(target, "X-Amz-Expires=3600", "X-Amz-Expires=604800"), "403 SignatureDoesNotMatch"},
      {target + "&more=1", "403 SignatureDoesNotMatch"},
      {replaced(target, "QUILLBAYSANDBOX", "SOMEBODYELSE"), "403 InvalidAccessKeyId"},
      {replaced(target, "%2Flocal%2F", "%2Felsewhere%2F"), "400 AuthorizationQueryParametersError"},
      {replaced(target, "X-Amz-Expires=3600", "X-Amz-Expires=604801"),
       "400 AuthorizationQueryParametersError"},
      {target.substr(0, target.find('?')), "403 AccessDenied"}};
  for (const auto& [changed, expected] : cases) {
    EXPECT_EQ(outcome(put(changed, letter)), expected) << changed;
  }
  EXPECT_EQ(outcome(client_->Put(target, {{"Host", "elsewhere"}}, letter.bytes, "")),
            "403 SignatureDoesNotMatch");
  EXPECT_EQ(outcome(client_->Get(target)), "405 MethodNotAllowed");
  EXPECT_EQ(outcome(put(target, letter)), "200");
}

TEST_F(Store, HonoursAnAddressWhileItIsValid) {
  const json session = createSession({letter});
  const std::string target = uploadTarget(session, 0);
  advanceClock(std::chrono::minutes(-14));
  EXPECT_EQ(outcome(put(target, letter)), "200");
  advanceClock(std::chrono::minutes(-2));
  EXPECT_EQ(outcome(put(target, letter)), "403 AccessDenied");
  advanceClock(std::chrono::minutes(16 + 59));
  EXPECT_EQ(outcome(put(target, letter)), "200");
  advanceClock(std::chrono::minutes(2));
  EXPECT_EQ(outcome(put(target, letter)), "403 AccessDenied");
}

TEST_F(Store, DescribesARefusalInXmlWithoutTheSignature) {
  const json session = createSession({letter});
  const std::string target = uploadTarget(session, 0);
  const auto refused = put(target + "&a=<b>", letter);
  EXPECT_EQ(refused->get_header_value("Content-Type"), "application/xml");
  EXPECT_TRUE(
      refused->body.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Error><Code>"));
  EXPECT_FALSE(refused->body.contains("X-Amz"));
}

TEST_F(Store, RefusesMoreThanWasAnnouncedAndKeepsTheConnection) {
  const json session = createSession({letter});
  const std::string target = uploadTarget(session, 0);
  RawClient client(server_->port());
  client.send(uploadHead(target, 9) + "Dear all!" + uploadHead(target, 8) + "Dear all");
  EXPECT_TRUE(client.receiveUntil("</Error>").contains("EntityTooLarge"));
  EXPECT_TRUE(client.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200 OK"));
}

TEST_F(Store, RefusesOrPermitsBeforeTheBodyWhenTheClientWaits) {
  const json session = createSession({letter});
  RawClient client(server_->port());
  client.send(uploadHead(uploadTarget(session, 0), 1'000'000'000, "Expect: 100-continue\r\n"));
  const std::string reply = client.receiveAll();
  EXPECT_TRUE(reply.starts_with("HTTP/1.1 400 Bad Request\r\n")) << reply;
  EXPECT_TRUE(reply.contains("<Code>EntityTooLarge</Code>"));

  RawClient permitted(server_->port());
  permitted.send(uploadHead(uploadTarget(session, 0), 8, "Expect: 100-continue\r\n"));
  EXPECT_TRUE(permitted.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 100 "));
  permitted.send(letter.bytes);
  EXPECT_TRUE(permitted.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200 "));
}

TEST_F(Store, KeepsNothingOfABodyThatBreaksOff) {
  const json session = createSession({letter});
  RawClient client(server_->port());
  client.send(uploadHead(uploadTarget(session, 0), 8) + "Dear");
  client.endSending();
  EXPECT_TRUE(client.receiveAll().contains("<Code>IncompleteBody</Code>"));
  EXPECT_EQ(filesOnDisk("incoming"), 0u);
  EXPECT_EQ(finalize(session, 0, "\"x\"")->status, 409);
}

TEST_F(Store, WantsTheLengthBeforeTheBody) {
  const auto chunked = client_->Put(
      uploadTarget(createSession({letter}), 0),
      [](std::size_t, httplib::DataSink& sink) {
        sink.done();
        return true;
      },
      "text/plain");
  EXPECT_EQ(outcome(chunked), "411 MissingContentLength");
}

TEST_F(Store, ReplacesAnObjectOnlyUntilItIsFinalized) {
  const json session = createSession({letter});
  const std::string target = uploadTarget(session, 0);
  EXPECT_EQ(outcome(put(target, {"letter.txt", "Dear ALL"})), "200");
  const auto stored = put(target, letter);
  EXPECT_EQ(outcome(finalize(session, 0, stored->get_header_value("ETag"))), "200");
  EXPECT_EQ(outcome(put(target, letter)), "403 AccessDenied");
  EXPECT_EQ(requestUploadUrl(session, 0)->status, 409);
  EXPECT_EQ(filesOnDisk("sessions/" + session["id"].get<std::string>() + "/objects"), 1u);
}

TEST_F(Store, ServesOthersWhileUploadsStall) {
  const json session = createSession({letter});
  const std::string target = uploadTarget(session, 0);
  std::deque<RawClient> stalled;
  for (int i = 0; i < 40; ++i) {
    stalled.emplace_back(server_->port()).send(uploadHead(target, 8) + "Dear");
  }
  upload(session, 0, letter);
  // The rest of a stalled upload comes too late to replace what is complete.
  stalled.front().send(" ALL");
  EXPECT_TRUE(stalled.front().receiveUntil("</Error>").contains("OperationAborted"));
}

}  // namespace
}  // namespace quillbay::sandbox
