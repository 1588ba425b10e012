#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <map>

#include "sandbox/http/ByteRange.h"
#include "sandbox/http/ContentDisposition.h"
#include "tests/sandbox/RawClient.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

using nlohmann::json;

const TestFile letter{"letter.txt", "Dear all"};
const TestFile photo{"photo.jpg", std::string(700'000, 'p'), "image/jpeg"};

class Link : public RunningSandbox {
 protected:
  std::string filePath(const json& session, std::size_t item) const {
    return linkOf(session) + "/files/" + session["items"][item]["id"].get<std::string>();
  }

  httplib::Result tryPassword(const json& session, const std::string& form) {
    return client_->Post(linkOf(session) + "/unlock", form, "application/x-www-form-urlencoded");
  }

  static json protectedBy(const std::string& base64) { return {{"p", base64}}; }
};

std::map<std::string, std::string> unzip(const std::string& bytes) {
  // The reader converts names through the locale.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  std::map<std::string, std::string> files;
  const std::unique_ptr<archive, decltype(&archive_read_free)> reader(archive_read_new(),
                                                                      archive_read_free);
  archive_read_support_format_zip(reader.get());
  if (archive_read_open_memory(reader.get(), bytes.data(), bytes.size()) != ARCHIVE_OK)
    return files;
  archive_entry* entry = nullptr;
  while (archive_read_next_header(reader.get(), &entry) == ARCHIVE_OK) {
    const char* const name = archive_entry_pathname(entry);
    std::string content;
    std::array<char, 4096> piece;
    for (la_ssize_t count;
         (count = archive_read_data(reader.get(), piece.data(), piece.size())) > 0;) {
      content.append(piece.data(), static_cast<std::size_t>(count));
    }
    files[name == nullptr ? "no name" : name] = content;
  }
  return files;
}

TEST_F(Link, ShowsWhatHasArrivedAndWhatIsOnItsWay) {
  const json session = createSession({letter, photo});
  upload(session, 0, letter);
  RawClient half(server_->port());
  half.send("PUT " + uploadTarget(session, 1) +
            " HTTP/1.1\r\nHost: localhost:" + std::to_string(server_->port()) +
            "\r\nContent-Length: 700000\r\n\r\n" + photo.bytes.substr(0, 350'000));
  std::string page;
  do {
    page = client_->Get(linkOf(session))->body;
  } while (page.find("350.0 kB of 700.0 kB") == std::string::npos);
  EXPECT_NE(page.find("1 of 2 files have arrived"), std::string::npos);
  EXPECT_NE(page.find("http-equiv=\"refresh\""), std::string::npos);
  EXPECT_NE(page.find(filePath(session, 0)), std::string::npos);
  EXPECT_EQ(page.find(filePath(session, 1)), std::string::npos);
  EXPECT_EQ(page.find("all.zip"), std::string::npos);

  upload(session, 1, photo);
  page = client_->Get(linkOf(session))->body;
  EXPECT_EQ(page.find("http-equiv"), std::string::npos);
  EXPECT_NE(page.find("all.zip"), std::string::npos);
}

TEST_F(Link, EscapesEveryTextOfStrangers) {
  const std::string hostile = "<script>\"&'";
  const json session = share({{hostile, "x"}}, {{"title", hostile}});
  const auto page = client_->Get(linkOf(session));
  EXPECT_EQ(page->body.find("<script"), std::string::npos);
  EXPECT_NE(page->body.find("&lt;script&gt;&quot;&amp;&#39;"), std::string::npos);
  EXPECT_TRUE(page->get_header_value("Content-Security-Policy").starts_with("default-src 'none'"));
}

TEST_F(Link, AsksToComeBackForContentThatIsNotHereYet) {
  for (const char* type : {"download", "direct"}) {
    const json session = createSession({letter}, {{"link_type", type}});
    const auto reply = client_->Get(linkOf(session));
    EXPECT_EQ(outcome(reply), "503");
    EXPECT_TRUE(reply->has_header("Retry-After"));
  }
}

TEST_F(Link, HandsOverTheSingleFileOfADownloadLink) {
  const json session = share({{"r\r\nX: y\"é.txt", "Dear all"}}, {{"link_type", "download"}});
  const auto reply = client_->Get(linkOf(session));
  EXPECT_EQ(reply->body, "Dear all");
  EXPECT_FALSE(reply->has_header("X"));
  EXPECT_EQ(contentDisposition(false, "r\r\nX: y\"é.txt"),
            "attachment; filename=\"r__X: y___.txt\"; filename*=UTF-8''r__X%3A%20y%22%C3%A9.txt");
  EXPECT_TRUE(reply->get_header_value("Content-Disposition").starts_with("attachment; filename="));
}

TEST_F(Link, PacksSeveralFilesOfADownloadLink) {
  const json session = share({letter, photo, {"letter.txt", "again"}, {"..\\évil", ""}},
                             {{"link_type", "download"}, {"title", "Post"}});
  const auto reply = client_->Get(linkOf(session));
  EXPECT_EQ(reply->get_header_value("Content-Type"), "application/zip");
  const std::map<std::string, std::string> expected{{"letter.txt", letter.bytes},
                                                    {"photo.jpg", photo.bytes},
                                                    {"letter (2).txt", "again"},
                                                    {".._évil", ""}};
  const auto unpacked = unzip(reply->body);
  for (const auto& [name, content] : unpacked) EXPECT_TRUE(expected.contains(name)) << name;
  EXPECT_TRUE(unpacked == expected);
}

TEST_F(Link, ShowsDirectContentAsUploadedButNeverLetsItRun) {
  const TestFile page{"page.html", "<script>alert(1)</script>", "text/html"};
  const auto active = client_->Get(linkOf(share({page}, {{"link_type", "direct"}})));
  EXPECT_EQ(active->body, page.bytes);
  EXPECT_EQ(active->get_header_value("Content-Type"), "text/html");
  EXPECT_TRUE(active->get_header_value("Content-Disposition").starts_with("inline;"));
  EXPECT_EQ(active->get_header_value("Content-Security-Policy"), "sandbox");
  EXPECT_EQ(active->get_header_value("X-Content-Type-Options"), "nosniff");
  const auto passive = client_->Get(linkOf(share({photo}, {{"link_type", "direct"}})));
  EXPECT_FALSE(passive->has_header("Content-Security-Policy"));
}

TEST_F(Link, OffersNothingInlineOnAPage) {
  const json session = createSession({letter});
  upload(session, 0, letter, "inline");
  const auto reply = client_->Get(filePath(session, 0));
  EXPECT_TRUE(reply->get_header_value("Content-Disposition").starts_with("attachment;"));
}

TEST_F(Link, ServesPartsOfAFile) {
  const json session = share({letter, {"empty", ""}});
  const std::string path = filePath(session, 0);
  const auto part = client_->Get(path, {{"Range", "bytes=5-"}});
  EXPECT_EQ(part->status, 206);
  EXPECT_EQ(part->body, "all");
  EXPECT_EQ(part->get_header_value("Content-Range"), "bytes 5-7/8");
  const auto beyond = client_->Get(path, {{"Range", "bytes=8-"}});
  EXPECT_EQ(beyond->status, 416);
  EXPECT_EQ(beyond->get_header_value("Content-Range"), "bytes */8");
  const auto changed = client_->Get(path, {{"Range", "bytes=5-"}, {"If-Range", "\"old\""}});
  EXPECT_EQ(changed->status, 200);
  EXPECT_EQ(client_->Get(linkOf(session), {{"Range", "bytes=0-3"}})->status, 200);
  const auto empty = client_->Get(filePath(session, 1));
  EXPECT_EQ(empty->status, 200);
  EXPECT_EQ(empty->body, "");
  EXPECT_EQ(client_->Head(path)->get_header_value("Content-Length"), "8");
}

TEST(ByteRangeEvaluation, FollowsTheRules) {
  struct Case {
    const char* header;
    RangeRequest expected;
    std::uint64_t offset = 0;
    std::uint64_t byteCount = 0;
  };
  for (const Case& c :
       {Case{"bytes=0-0", RangeRequest::part, 0, 1}, Case{"bytes=3-100", RangeRequest::part, 3, 5},
        Case{"bytes=-3", RangeRequest::part, 5, 3}, Case{"bytes=-100", RangeRequest::part, 0, 8},
        Case{"bytes=-0", RangeRequest::unsatisfiable},
        Case{"bytes=9-", RangeRequest::unsatisfiable}, Case{"bytes=5-4", RangeRequest::whole},
        Case{"bytes=0-1,3-4", RangeRequest::whole}, Case{"bytes=-", RangeRequest::whole},
        Case{"bytes=99999999999999999999-", RangeRequest::whole},
        Case{"items=0-1", RangeRequest::whole}, Case{"", RangeRequest::whole}}) {
    ByteRange range;
    EXPECT_EQ(evaluateRange(c.header, 8, range), c.expected) << c.header;
    EXPECT_EQ(range.offset, c.offset) << c.header;
    EXPECT_EQ(range.byteCount, c.byteCount) << c.header;
  }
}

TEST_F(Link, OpensToThePasswordOnly) {
  const json session = share({letter}, protectedBy("c8O8w58gKyAm"));  // "süß + &"
  const json other = share({letter}, protectedBy("c8O8w58gKyAm"));
  const auto locked = client_->Get(linkOf(session));
  EXPECT_EQ(locked->status, 403);
  EXPECT_EQ(locked->body.find("letter.txt"), std::string::npos);
  EXPECT_EQ(client_->Get(filePath(session, 0))->status, 403);
  EXPECT_EQ(tryPassword(session, "password=wrong")->status, 403);

  const auto opened = tryPassword(session, "password=s%C3%BC%C3%9F+%2B+%26");
  EXPECT_EQ(opened->status, 303);
  const std::string cookie = opened->get_header_value("Set-Cookie");
  EXPECT_NE(cookie.find("; Path=" + linkOf(session) + "; Secure; HttpOnly"), std::string::npos);
  const httplib::Headers pass{{"Cookie", "a=b; " + cookie.substr(0, cookie.find(';'))}};
  EXPECT_EQ(client_->Get(filePath(session, 0), pass)->body, letter.bytes);
  EXPECT_EQ(client_->Get(linkOf(other), pass)->status, 403);
  EXPECT_EQ(client_->Get(linkOf(session), {{"Cookie", "quillbay-link=99999999999.00"}})->status,
            403);
  advanceClock(std::chrono::hours(13));
  EXPECT_EQ(client_->Get(filePath(session, 0), pass)->status, 403);
}

TEST_F(Link, SlowsGuessingDown) {
  const json session = share({letter}, protectedBy("Z2VoZWlt"));  // "geheim"
  for (int i = 0; i < 5; ++i) EXPECT_EQ(tryPassword(session, "password=x")->status, 403);
  EXPECT_EQ(tryPassword(session, "password=geheim")->status, 429);
  advanceClock(std::chrono::seconds(31));
  EXPECT_EQ(tryPassword(session, "password=geheim")->status, 303);
}

TEST_F(Link, EndsWithItsExpirationDate) {
  const json session =
      share({letter},
            {{"expiration",
              std::to_string((now() + std::chrono::hours(1)).time_since_epoch().count()) + ".0"}});
  const std::string target = linkOf(session);
  EXPECT_NE(client_->Get(target)->body.find("available until"), std::string::npos);
  advanceClock(std::chrono::hours(1));
  EXPECT_EQ(client_->Get(target)->status, 410);
  EXPECT_EQ(client_->Get(filePath(session, 0))->status, 410);
  EXPECT_EQ(requestUploadUrl(session, 0)->status, 410);
}

TEST_F(Link, IsHardToGuessAndHarderWhenSecret) {
  constexpr double bitsPerCharacter = 5.95;
  const std::string prefix = "/s/";
  const std::string brief = linkOf(createSession({letter})).substr(prefix.size());
  const std::string secret =
      linkOf(createSession({letter}, {{"is_secret", "1"}})).substr(prefix.size());
  EXPECT_GE(bitsPerCharacter * static_cast<double>(brief.size()), 64);
  EXPECT_GE(bitsPerCharacter * static_cast<double>(secret.size()), 128);
  EXPECT_EQ(client_->Get("/s/unknown")->status, 404);
  EXPECT_EQ(client_->Get("/")->status, 404);
}

}  // namespace
}  // namespace quillbay::sandbox
