#include "sandbox/http/ContentDisposition.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

const TestFile photo{"photo.jpg", std::string(700'000, 'p')};

class Link : public RunningSandbox {
 protected:
  httplib::Result tryPassword(const json& session, const std::string& password) {
    return client_->Post(linkOf(session) + "/unlock", "password=" + password,
                         "application/x-www-form-urlencoded");
  }
};

TEST_F(Link, ShowsWhatHasArrivedAndWhatIsOnItsWay) {
  const json session = createSession({letter, photo});
  upload(session, 0, letter, "inline");
  RawClient half(server_->port(),
                 uploadHead(uploadTarget(session, 1), 700'000) + photo.bytes.substr(0, 350'000));
  const std::string page = pageWith("350.0 kB of 700.0 kB", linkOf(session));
  EXPECT_TRUE(page.contains("1 of 2 files have arrived"));
  EXPECT_TRUE(page.contains(linkOf(session) + "/files\">Check again"));
  EXPECT_TRUE(page.contains("aria-label=\"Download letter.txt\""));
  EXPECT_TRUE(page.contains(filePath(session, 0)));
  EXPECT_FALSE(page.contains(filePath(session, 1)));
  EXPECT_FALSE(page.contains("all.zip"));

  upload(session, 1, photo);
  EXPECT_FALSE(pageWith("all.zip", linkOf(session)).contains("Check again"));
  const auto file = client_->Get(filePath(session, 0));
  EXPECT_TRUE(file->get_header_value("Content-Disposition").starts_with("attachment;"));
}

TEST_F(Link, TellsASlowUploadFromAnInterruptedOne) {
  const json session = createSession({letter, letter}, {{"link_type", "download"}});
  const std::string target = linkOf(session) + "/files";
  for (const std::string& content : {linkOf(session), filePath(session, 0)}) {
    EXPECT_EQ(client_->Get(content)->status, 503);
    EXPECT_TRUE(client_->Get(content)->has_header("Retry-After"));
  }
  advanceClock(std::chrono::minutes(1));
  EXPECT_FALSE(pageWith("on its way", target).contains("interrupted"));
  restart();
  EXPECT_FALSE(pageWith("on its way", target).contains("interrupted"));
  advanceClock(std::chrono::minutes(2));
  EXPECT_FALSE(pageWith("interrupted", target).contains("on its way"));
  EXPECT_FALSE(client_->Get(linkOf(session))->has_header("Retry-After"));
  upload(session, 0, letter);
  EXPECT_FALSE(pageWith("on its way", target).contains("interrupted"));
}

TEST_F(Link, EscapesEveryTextOfStrangers) {
  const std::string hostile = "<script>\"&'\u202Egpj\u2067.exe";
  const json session = share({{hostile, "x"}}, {{"title", hostile}});
  const auto page = client_->Get(linkOf(session));
  EXPECT_FALSE(page->body.contains("<script"));
  EXPECT_TRUE(page->body.contains("&lt;script&gt;&quot;&amp;&#39;\uFFFDgpj\uFFFD.exe"));
  EXPECT_TRUE(page->get_header_value("Content-Security-Policy").starts_with("default-src 'none'"));
}

TEST_F(Link, HandsOverTheSingleFileOfADownloadLink) {
  const json session = share({{"r\r\nX: y\"é.txt", "Dear all"}}, {{"link_type", "download"}});
  const auto reply = client_->Get(linkOf(session));
  EXPECT_EQ(reply->body, "Dear all");
  EXPECT_FALSE(reply->has_header("X"));
  // The client would decode the name.
  EXPECT_EQ(
      contentDisposition(false, "r\r\nX: y\"é\u202E\u0085.txt"),
      "attachment; filename=\"r__X: y_____.txt\"; filename*=UTF-8''r__X%3A%20y%22%C3%A9__.txt");
}

TEST_F(Link, PacksSeveralFilesOfADownloadLink) {
  const json session = share({letter,
                              photo,
                              {"letter.txt", "again"},
                              {"..\\évil", ""},
                              {"LETTER.TXT", "3"},
                              {".hidden", "1"},
                              {".hidden", "2"},
                              {"..\\Évil", "4"}},
                             {{"link_type", "download"}, {"title", "Post"}});
  const auto reply = client_->Get(linkOf(session));
  EXPECT_EQ(reply->get_header_value("Content-Type"), "application/zip");
  const std::map<std::string, std::string> expected{
      {"letter.txt", letter.bytes}, {"photo.jpg", photo.bytes},
      {"letter (2).txt", "again"},  {".._évil", ""},
      {"LETTER (3).TXT", "3"},      {".hidden", "1"},
      {".hidden (2)", "2"},         {". (2)._Évil", "4"}};
  EXPECT_TRUE(folder_.unzip(folder_.write("all.zip", reply->body)) == expected);
}

TEST_F(Link, ShowsDirectContentAsUploadedButNeverLetsItRun) {
  // The server receives pieces of 4 KiB; one ends within this character.
  const std::string longText = std::string(4094, 'a') + "€";
  const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
      {"text/html", "<script>alert(1)</script>", "text/html", "sandbox"},
      {"image/png; a=\", text/html\"", "x", "image/png; a=\", text/html\"", "sandbox"},
      {"image/svg+xml", "é", "image/svg+xml", "sandbox"},
      {"IMAGE/png", "é", "IMAGE/png", ""},
      {"application/pdf;a=b", "x", "application/pdf;a=b", ""},
      {"text/plain", "ASCII", "text/plain", ""},
      {"text/plain", longText, "text/plain; charset=utf-8", ""},
      {"text/css", longText, "text/css; charset=utf-8", "sandbox"},
      {"text/plain", longText + "\xE9", "text/plain", ""},
      {"text/plain", "\xFC" + longText, "text/plain", ""},
      {"text/plain; Charset=x", longText, "text/plain; Charset=x", ""},
  };
  for (const auto& [type, bytes, shownAs, policy] : rows) {
    SCOPED_TRACE(type + bytes.substr(0, 9));
    const json session = share({{"file", bytes, type}}, {{"link_type", "direct"}});
    const auto reply = client_->Get(linkOf(session));
    EXPECT_EQ(reply->body, bytes);
    EXPECT_EQ(reply->get_header_value("Content-Type"), shownAs);
    EXPECT_TRUE(reply->get_header_value("Content-Disposition").starts_with("inline;"));
    EXPECT_EQ(reply->get_header_value("Content-Security-Policy"), policy);
    EXPECT_EQ(reply->get_header_value("X-Content-Type-Options"), "nosniff");
  }
}

TEST_F(Link, ServesPartsOfAFile) {
  const json session = share({letter, {"empty", ""}});
  const std::string path = filePath(session, 0);
  const std::tuple<const char*, int, const char*, const char*> rows[] = {
      {"bytes=5-", 206, "bytes 5-7/8", "all"},
      {"bytes=0-0", 206, "bytes 0-0/8", "D"},
      {"bytes=3-100", 206, "bytes 3-7/8", "r all"},
      {"bytes=-3", 206, "bytes 5-7/8", "all"},
      {"bytes=-100", 206, "bytes 0-7/8", "Dear all"},
      {"bytes=8-", 416, "bytes */8", ""},
      {"bytes=-0", 416, "bytes */8", ""},
      {"lines=1-2", 200, "", "Dear all"},
      {"bytes=5-2", 200, "", "Dear all"},
      {"bytes=0-0,2-2", 200, "", "Dear all"},
  };
  for (const auto& [range, status, contentRange, body] : rows) {
    SCOPED_TRACE(range);
    const auto reply = client_->Get(path, {{"Range", range}});
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, status);
    EXPECT_EQ(reply->get_header_value("Content-Range"), contentRange);
    EXPECT_EQ(reply->body, body);
  }
  EXPECT_EQ(client_->Get(filePath(session, 1))->body, "");
  const auto head = client_->Head(path);
  EXPECT_EQ(head->get_header_value("Content-Length"), "8");
  const std::string tag = head->get_header_value("ETag");
  for (const std::string& known : {tag, "\"x\", W/" + tag, std::string("*")}) {
    const auto unchanged = client_->Head(path, {{"If-None-Match", known}, {"Range", "bytes=0-0"}});
    EXPECT_EQ(unchanged->status, 304) << known;
    EXPECT_EQ(unchanged->get_header_value("ETag"), tag);
    EXPECT_FALSE(unchanged->has_header("Content-Length"));
  }
  EXPECT_EQ(client_->Head(path, {{"If-None-Match", "\"x\""}})->status, 200);
}

TEST_F(Link, OpensToThePasswordOnly) {
  const json session = share({letter}, {{"p", "c8O8w58gKyAm"}});  // "süß + &"
  const json other = share({letter}, {{"p", "c8O8w58gKyAm"}});
  const auto locked = client_->Get(linkOf(session));
  EXPECT_EQ(locked->status, 403);
  EXPECT_FALSE(locked->body.contains("letter.txt"));
  EXPECT_EQ(client_->Get(filePath(session, 0))->status, 403);
  EXPECT_EQ(tryPassword(session, "wrong")->status, 403);

  const auto opened = tryPassword(session, "s%C3%BC%C3%9F+%2B+%26");
  EXPECT_EQ(opened->status, 303);
  const std::string cookie = opened->get_header_value("Set-Cookie");
  EXPECT_TRUE(cookie.contains("; Path=" + linkOf(session) + "; Secure; HttpOnly"));
  const httplib::Headers pass{{"Cookie", "a=b; " + cookie.substr(0, cookie.find(';'))}};
  EXPECT_EQ(client_->Get(filePath(session, 0), pass)->body, letter.bytes);
  EXPECT_EQ(client_->Get(linkOf(other), pass)->status, 403);
  EXPECT_EQ(client_->Get(linkOf(session), {{"Cookie", "quillbay-link=99999999999.00"}})->status,
            403);
  advanceClock(std::chrono::hours(13));
  EXPECT_EQ(client_->Get(filePath(session, 0), pass)->status, 403);
}

TEST_F(Link, SlowsGuessingDown) {
  const json session = share({letter}, {{"p", "Z2VoZWlt"}});  // "geheim"
  for (int i = 0; i < 5; ++i) EXPECT_EQ(tryPassword(session, "x")->status, 403);
  EXPECT_EQ(tryPassword(session, "geheim")->status, 429);
  advanceClock(std::chrono::seconds(31));
  EXPECT_EQ(tryPassword(session, "geheim")->status, 303);
}

TEST_F(Link, EndsWithItsExpirationDate) {
  const auto end = (now() + std::chrono::hours(1)).time_since_epoch().count();
  const json session = share({letter}, {{"expiration", std::to_string(end) + ".0"}});
  const std::string target = linkOf(session);
  EXPECT_TRUE(client_->Get(target)->body.contains("available until"));
  advanceClock(std::chrono::hours(1));
  EXPECT_EQ(client_->Get(target)->status, 410);
  EXPECT_EQ(client_->Get(filePath(session, 0))->status, 410);
  EXPECT_EQ(requestUploadUrl(session, 0)->status, 410);
}

TEST_F(Link, IsHardToGuessAndHarderWhenSecret) {
  // 62 letters and digits: 11 of them hold 64 bits, 22 hold 128.
  const std::string prefix = "/s/";
  EXPECT_GE(linkOf(createSession({letter})).size(), prefix.size() + 11);
  EXPECT_GE(linkOf(createSession({letter}, {{"is_secret", "1"}})).size(), prefix.size() + 22);
  EXPECT_EQ(client_->Get("/s/unknown")->status, 404);
}

}  // namespace
}  // namespace quillbay::sandbox
