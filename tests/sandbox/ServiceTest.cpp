#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

class Service : public RunningSandbox {
 protected:
  /// Every error body repeats its status and has words for the user.
  static int refusedStatus(const httplib::Result& result) {
    const json body = json::parse(result->body);
    EXPECT_FALSE(body.at("message").get<std::string>().empty());
    EXPECT_EQ(body.at("status"), result->status);
    return result->status;
  }
};

TEST_F(Service, DescribesTheCreatedSession) {
  const json session = createSession(
      {letter, letter}, {{"title", "Zwei \"Dateien\" ü"}, {"expiration", "32503680000.5"}});
  EXPECT_EQ(session["title"], "Zwei \"Dateien\" ü");
  EXPECT_TRUE(session["expiration"].is_number_integer());
  EXPECT_EQ(session["expiration"], 32'503'680'000);
  ASSERT_EQ(session["items"].size(), 2u);
  EXPECT_EQ(session["items"][1]["is_uploaded"], false);
  EXPECT_EQ(session["items"][1]["fingerprint"], hexEncode(sha256(letter.bytes)));
  EXPECT_FALSE(createSession({letter}).contains("expiration"));
}

TEST_F(Service, RepliesToFinalizeWithTheWholeSessionCompressedWhenAsked) {
  const json session = createSession(std::vector<TestFile>(50, letter));
  json expected = session;
  expected["items"][0]["is_uploaded"] = true;
  const std::string tag = put(uploadTarget(session, 0), letter)->get_header_value("ETag");
  const auto plain = finalize(session, 0, tag);
  EXPECT_FALSE(plain->has_header("Content-Encoding"));
  EXPECT_EQ(json::parse(plain->body), expected);
  const auto packed = finalize(session, 0, tag, {{"Accept-Encoding", "deflate, gzip, br"}});
  EXPECT_EQ(packed->get_header_value("Content-Encoding"), "gzip");
  EXPECT_EQ(packed->body, plain->body);
}

TEST_F(Service, KnowsASessionOnlyByItsTokenAndInstanceAndAnItemOnlyBelowIt) {
  const json session = createSession({letter});
  const json other = createSession({letter});
  json stranger = session;
  stranger["token"] = other["token"];
  EXPECT_EQ(refusedStatus(requestUploadUrl(stranger, 0)), 403);
  EXPECT_EQ(refusedStatus(finalize(stranger, 0, "\"x\"")), 403);
  EXPECT_EQ(refusedStatus(client_->Delete(pathOf(session), tokenOf(stranger))), 403);
  json silent = session;
  silent["token"] = "";
  EXPECT_EQ(refusedStatus(requestUploadUrl(silent, 0)), 401);
  json foreign = session;
  foreign["items"] = other["items"];
  EXPECT_EQ(refusedStatus(requestUploadUrl(foreign, 0)), 404);
  EXPECT_EQ(refusedStatus(finalize(foreign, 0, "\"x\"")), 404);
  const std::string elsewhere = "/cloud/other/session/" + session["id"].get<std::string>();
  EXPECT_EQ(refusedStatus(client_->Delete(elsewhere, tokenOf(session))), 404);
}

TEST_F(Service, AnswersUnknownAddressesMethodsBodiesAndMissingHeadersInJson) {
  EXPECT_EQ(refusedStatus(client_->Get("/cloud/x")), 404);
  EXPECT_EQ(refusedStatus(client_->Post("/cloud/%FF/session", "{}", "")), 404);
  EXPECT_EQ(refusedStatus(client_->Post("/cloud/x/session", "nonsense", "")), 400);
  const httplib::MultipartFormDataItems form{{"name", "value", "", ""}};
  EXPECT_EQ(refusedStatus(client_->Post("/cloud/x/session", form)), 415);
  const json session = createSession({letter});
  for (const char* action : {"finalize", "upload_url"}) {
    const auto reply = client_->Put(itemPath(session, 0, action), tokenOf(session), "{}", "");
    EXPECT_EQ(refusedStatus(reply), 400) << action;
  }
}

TEST_F(Service, NamesTheMethodsThatAnAddressTakes) {
  const json session = createSession({letter});
  const std::pair<std::string, const char*> rows[] = {
      {"/cloud/x/session", "POST"},
      {pathOf(session), "DELETE"},
      {itemPath(session, 0, "finalize"), "PUT"},
      {uploadTarget(session, 0), "PUT"},
      {linkOf(session), "GET, HEAD"},
      {linkOf(session) + "/unlock", "GET, HEAD, POST"},
  };
  for (const auto& [target, methods] : rows) {
    const auto reply = client_->Patch(target);
    EXPECT_EQ(reply->status, 405) << target;
    EXPECT_EQ(reply->get_header_value("Allow"), methods) << target;
  }
}

TEST_F(Service, FinalizesOnlyWhatWasAnnounced) {
  const json session = createSession({letter});
  EXPECT_EQ(refusedStatus(finalize(session, 0, "\"d41d8cd98f00b204e9800998ecf8427e\"")), 409);

  std::string tag;
  for (const char* bytes : {"Dear", "Dear ALL"}) {
    tag = put(uploadTarget(session, 0), {"letter.txt", bytes})->get_header_value("ETag");
    EXPECT_EQ(refusedStatus(finalize(session, 0, tag)), 409);
  }
  const auto right = put(uploadTarget(session, 0), letter);
  EXPECT_EQ(refusedStatus(finalize(session, 0, tag)), 409);
  EXPECT_EQ(outcome(finalize(session, 0, right->get_header_value("ETag"))), "200");
}

TEST_F(Service, DeletesTheSessionWithItsFiles) {
  const json session = createSession({letter, letter});
  const std::string target = uploadTarget(session, 0);
  EXPECT_EQ(outcome(put(target, letter)), "200");
  EXPECT_EQ(outcome(client_->Delete(pathOf(session), tokenOf(session))), "204");
  EXPECT_EQ(outcome(client_->Get(linkOf(session))), "404");
  EXPECT_EQ(outcome(put(target, letter)), "404 NoSuchKey");
  EXPECT_EQ(refusedStatus(requestUploadUrl(session, 1)), 404);
  EXPECT_EQ(refusedStatus(client_->Delete(pathOf(session), tokenOf(session))), 404);
  EXPECT_EQ(filesOnDisk("sessions"), 0);
}

}  // namespace
}  // namespace quillbay::sandbox
