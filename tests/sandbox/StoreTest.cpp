#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

class Store : public RunningSandbox {
 protected:
  static std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  }

  const json session_ = createSession({letter, letter});
  const std::string target_ = uploadTarget(session_, 0);
};

TEST_F(Store, TakesAnAddressOnlyAsItWasSigned) {
  const std::string signature = target_.substr(target_.size() - 64);
  const std::string flipped = (signature[0] == 'a' ? "b" : "a") + signature.substr(1);
  const std::string otherItem = session_["items"][1]["id"];
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"signature", replaced(target_, signature, flipped), "403 SignatureDoesNotMatch"},
      {"object", replaced(target_, session_["items"][0]["id"], otherItem),
       "403 SignatureDoesNotMatch"},
      {"validity", replaced(target_, "=3600", "=604800"), "403 SignatureDoesNotMatch"},
      {"one more parameter", target_ + "&more=1", "403 SignatureDoesNotMatch"},
      {"key", replaced(target_, "QUILLBAYSANDBOX", "SOMEBODYELSE"), "403 InvalidAccessKeyId"},
      {"region", replaced(target_, "%2Flocal%2F", "%2Felsewhere%2F"),
       "400 AuthorizationQueryParametersError"},
      {"more than a week", replaced(target_, "=3600", "=604801"),
       "400 AuthorizationQueryParametersError"},
      {"unsigned", target_.substr(0, target_.find('?')), "403 AccessDenied"},
  };
  for (const auto& [changed, target, expected] : rows) {
    SCOPED_TRACE(changed);
    const auto reply = put(target, letter);
    EXPECT_EQ(outcome(reply), expected);
    EXPECT_EQ(reply->get_header_value("Content-Type"), "application/xml");
    EXPECT_FALSE(reply->body.contains(signature)) << "for others to find";
  }
  EXPECT_EQ(outcome(client_->Put(target_, {{"Host", "elsewhere"}}, letter.bytes, "text/plain")),
            "403 SignatureDoesNotMatch");
  EXPECT_EQ(outcome(put(target_, {"letter.txt", "Dear all", "text/html"})),
            "403 SignatureDoesNotMatch");
  EXPECT_EQ(outcome(client_->Get(target_)), "405 MethodNotAllowed");
  EXPECT_EQ(outcome(put(target_, letter)), "200");
}

TEST_F(Store, HonoursAnAddressWhileItIsValid) {
  // A clock that runs ahead of ours by less than a quarter of an hour is forgiven.
  const std::pair<int, const char*> rows[] = {
      {-16, "403 AccessDenied"}, {-14, "200"}, {59, "200"}, {61, "403 AccessDenied"}};
  for (const auto& [minute, expected] : rows) {
    clockOffset_ = minute * 60;
    EXPECT_EQ(outcome(put(target_, letter)), expected) << minute;
  }
}

TEST_F(Store, RefusesMoreThanWasAnnouncedAndKeepsTheConnection) {
  RawClient client(server_->port(),
                   uploadHead(target_, 9) + "Dear all!" + uploadHead(target_, 8) + "Dear all");
  EXPECT_TRUE(client.receiveUntil("</Error>").contains("EntityTooLarge"));
  EXPECT_TRUE(client.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200 OK"));
}

TEST_F(Store, RefusesOrPermitsBeforeTheBodyWhenTheClientWaits) {
  RawClient refused(server_->port(),
                    uploadHead(target_, 1'000'000'000, "Expect: 100-continue\r\n"));
  const std::string reply = refused.receiveAll();
  EXPECT_TRUE(reply.starts_with("HTTP/1.1 400 Bad Request\r\n")) << reply;
  EXPECT_TRUE(reply.contains("<Code>EntityTooLarge</Code>"));

  RawClient permitted(server_->port(), uploadHead(target_, 8, "Expect: 100-continue\r\n"));
  EXPECT_TRUE(permitted.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 100 "));
  permitted.send(letter.bytes);
  EXPECT_TRUE(permitted.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200 "));
}

TEST_F(Store, KeepsNothingOfABodyThatBreaksOffOrHasNoLength) {
  RawClient client(server_->port(), uploadHead(target_, 8) + "Dear");
  client.endSending();
  EXPECT_TRUE(client.receiveAll().contains("<Code>IncompleteBody</Code>"));
  const auto provider = [](std::size_t, httplib::DataSink& sink) { return sink.done(), true; };
  EXPECT_EQ(outcome(client_->Put(target_, provider, "text/plain")), "411 MissingContentLength");
  EXPECT_EQ(filesOnDisk("incoming"), 0);
  EXPECT_EQ(finalize(session_, 0, "\"x\"")->status, 409);
}

TEST_F(Store, ReplacesAnObjectUntilItIsFinalizedAndThenTakesOnlyTheSameContentAgain) {
  const json session = createSession({letter}, {{"link_type", "download"}});
  const TestFile other{"letter.txt", "Dear ALL"};
  EXPECT_EQ(outcome(put(uploadTarget(session, 0), other)), "200");
  upload(session, 0, letter);

  RawClient half(server_->port(), uploadHead(uploadTarget(session, 0), 8) + "Dear");
  const auto changed = put(uploadTarget(session, 0), other);
  EXPECT_EQ(outcome(changed), "200");
  EXPECT_EQ(finalize(session, 0, changed->get_header_value("ETag"))->status, 409);
  EXPECT_EQ(client_->Get(linkOf(session))->body, letter.bytes);

  const auto same = put(uploadTarget(session, 0), letter);
  EXPECT_EQ(same->get_header_value("ETag"), "\"737664ab1b5e9656d4ebdbac9a49a9fc\"");
  EXPECT_EQ(outcome(finalize(session, 0, same->get_header_value("ETag"))), "200");
  EXPECT_EQ(client_->Get(linkOf(session))->body, letter.bytes);
  EXPECT_EQ(filesOnDisk("sessions/" + session["id"].get<std::string>() + "/objects"), 1);
}

TEST_F(Store, ServesOthersWhileUploadsStall) {
  std::deque<RawClient> stalled;
  for (int i = 0; i < 40; ++i) {
    stalled.emplace_back(server_->port(), uploadHead(target_, 8) + "Dear");
  }
  upload(session_, 0, letter);
  // The rest of a stalled upload comes too late to replace what is complete.
  stalled.front().send(" ALL");
  EXPECT_TRUE(stalled.front().receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200 "));
  EXPECT_EQ(client_->Get(filePath(session_, 0))->body, letter.bytes);
}

}  // namespace
}  // namespace quillbay::sandbox
