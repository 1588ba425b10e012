#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"

#include <algorithm>

namespace quillbay::test {
namespace {

using URLSessionRequestTest = NetworkTest;
using Lines = std::vector<std::string>;

constexpr std::size_t mebibyte = 1024 * 1024;

std::string hostLine(const ScriptedServer& server) {
  return "Host: 127.0.0.1:" + std::to_string(server.port());
}

Lines sorted(Lines lines) {
  std::ranges::sort(lines);
  return lines;
}

TEST_F(URLSessionRequestTest, AnUploadCarriesItsThreeFieldsAndNothingBeyondWhatHTTPNeeds) {
  const TemporaryFolder folder;
  for (const std::size_t byteCount : {std::size_t{0}, std::size_t{1}, mebibyte, mebibyte + 1}) {
    SCOPED_TRACE(byteCount);
    ScriptedServer server;
    const auto file = folder.writePattern("file", byteCount);
    EXPECT_EQ(upload(server.address("/key?signature=confidential"), file).status(), 200);

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].head.starts_with("PUT /key?signature=confidential HTTP/1.1\r\n"));
    Lines expected = {hostLine(server), "Content-Length: " + std::to_string(byteCount),
                      "Content-Disposition: attachment; filename=\"a b.txt\"; "
                      "filename*=UTF-8''a+b.txt",
                      "Content-Type: text/plain"};
    if (byteCount > mebibyte) expected.push_back("Expect: 100-continue");
    EXPECT_EQ(sorted(requests[0].fieldLines()), sorted(expected));
    EXPECT_TRUE(requests[0].body == patternedBytes(byteCount));
  }
}

TEST_F(URLSessionRequestTest, ADataTaskSendsItsBodyAndNoFieldThatTheServiceWasNotPromised) {
  struct Row {
    const char* method;
    decltype(platform::URLRequest::headerFields) fields;
    std::optional<std::string> body;
    Lines expectedFieldLines;
  };
  const std::vector<Row> rows = {
      {"POST", {}, R"({"items":[]})", {"Content-Length: 12"}},
      {"POST", {}, patternedBytes(mebibyte), {"Content-Length: 1048576"}},
      {"POST", {}, std::nullopt, {"Content-Length: 0"}},
      {"PUT",
       {{tokenField, "confidential"}},
       std::nullopt,
       {"Content-Length: 0", "X-QUILLBAY-SESSION-TOKEN: confidential"}},
      {"PUT", {{"Content-Type", "a/b"}}, "{}", {"Content-Length: 2", "Content-Type: a/b"}},
      {"PUT", {{"Content-Length", "2"}}, "{}", {"Content-Length: 2"}},
      {"DELETE",
       {{tokenField, "confidential"}},
       std::nullopt,
       {"X-QUILLBAY-SESSION-TOKEN: confidential"}},
      {"GET", {}, std::nullopt, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.method) + " " + testing::PrintToString(row.fields));
    ScriptedServer server;
    auto sent = request(row.method, server.address("/cloud/x"));
    sent.headerFields = row.fields;
    sent.body = row.body;
    EXPECT_EQ(perform(sent).status(), 200);

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].head.starts_with(std::string(row.method) + " /cloud/x HTTP/1.1\r\n"));
    EXPECT_TRUE(requests[0].body == row.body.value_or(""));
    Lines rest = requests[0].fieldLines();
    std::erase_if(rest, [](const std::string& line) {
      return line.starts_with("Accept: ") || line.starts_with("Accept-Encoding: ");
    });
    Lines expected = row.expectedFieldLines;
    expected.push_back(hostLine(server));
    EXPECT_EQ(sorted(rest), sorted(expected));
  }
}

TEST_F(URLSessionRequestTest, ALargeDataBodyArrivesWholeFromAServerThatIgnoresTheExpectation) {
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.readBody();
    connection.send(Reply::empty(200));
  });
  auto post = request("POST", server.address());
  post.body = patternedBytes(3 * mebibyte);
  EXPECT_EQ(perform(post).status(), 200);
  EXPECT_TRUE(server.requests().at(0).body == post.body);
  EXPECT_EQ(server.requests().at(0).fields("Content-Length"), Lines{"3145728"});
}

TEST_F(URLSessionRequestTest, NoHeaderValueCanBeginAnotherField) {
  struct Row {
    std::string value;
    std::string expected;
  };
  const std::vector<Row> rows = {
      {"a\r\nX-Injected: 1", "a  X-Injected: 1"},
      {"a\nX-Injected: 1", "a X-Injected: 1"},
      {"a\rb", "a b"},
      {std::string("a\0b", 3), "a b"},
      {"r\xC3\xA9sum\xC3\xA9; \"q\\\"; a&b", "r\xC3\xA9sum\xC3\xA9; \"q\\\"; a&b"},
      {"", ""},
      {"\r\n", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.value));
    ScriptedServer server;
    auto sent = request("PUT", server.address());
    sent.headerFields = {{"X-Value", row.value}};
    EXPECT_EQ(perform(sent).status(), 200);
    EXPECT_EQ(server.requests().at(0).fields("X-Value"), Lines{row.expected});
    EXPECT_EQ(server.requests().at(0).field("X-Injected"), std::nullopt);
  }
}

TEST_F(URLSessionRequestTest, AnAddressGoesOutCharacterByCharacter) {
  ScriptedServer server;
  const std::string target = "/a/../b/./c%2Fd%2e/?X=%20+%2B&&y=;=*'()!~:@/?";
  EXPECT_EQ(perform(request("GET", server.address(target + "#fragment"))).status(), 200);
  EXPECT_EQ(server.requests().at(0).target(), target);
}

}  // namespace
}  // namespace quillbay::test
