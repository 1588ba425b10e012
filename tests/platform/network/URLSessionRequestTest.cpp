#include "NetworkTest.h"

namespace quillbay::test {
namespace {

using URLSessionRequestTest = NetworkTest;
using Lines = std::vector<std::string>;

/// The server got one request, whose field lines are "Host" and these, in whatever order.
void expectFieldLines(const ScriptedServer& server, Lines expected) {
  expected.push_back("Host: 127.0.0.1:" + std::to_string(server.port()));
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_THAT(server.requests()[0].fieldLines(), testing::UnorderedElementsAreArray(expected));
}

TEST_F(URLSessionRequestTest, AnUploadCarriesItsThreeFieldsAndNothingBeyondWhatHTTPNeeds) {
  for (const std::uint64_t byteCount : {std::uint64_t{0}, mebibyte, mebibyte + 1}) {
    SCOPED_TRACE(byteCount);
    ScriptedServer server;
    const auto file = folder_.writePattern("file", byteCount);
    EXPECT_EQ(upload(server.address("/key?signature=confidential"), file).status(), 200);
    Lines expected = {
        "Content-Length: " + std::to_string(byteCount),
        "Content-Disposition: attachment; filename=\"a b.txt\"; filename*=UTF-8''a+b.txt",
        "Content-Type: text/plain"};
    if (byteCount > mebibyte) expected.push_back("Expect: 100-continue");
    expectFieldLines(server, expected);
    const Request got = server.requests().at(0);
    EXPECT_TRUE(got.head.starts_with("PUT /key?signature=confidential HTTP/1.1\r\n")) << got.head;
    EXPECT_TRUE(got.body == patternedBytes(byteCount));
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
      {"POST", {}, patternedBytes(mebibyte), {"Content-Length: 1048576"}},
      {"PUT",
       {{tokenField, "confidential"}},
       std::nullopt,
       {"Content-Length: 0", "X-QUILLBAY-SESSION-TOKEN: confidential"}},
      {"PUT",
       {{"Content-Type", "a/b"}, {"Content-Length", "2"}},
       "{}",
       {"Content-Length: 2", "Content-Type: a/b"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.method) + " " + testing::PrintToString(row.fields));
    ScriptedServer server;
    auto sent = request(row.method, server.address());
    sent.headerFields = row.fields;
    sent.body = row.body;
    EXPECT_EQ(perform(sent).status(), 200);
    Lines expected = row.expectedFieldLines;
    expected.insert(expected.end(), {"Accept: */*", "Accept-Encoding: gzip"});
    expectFieldLines(server, expected);
    EXPECT_EQ(server.requests().at(0).method(), row.method);
    EXPECT_TRUE(server.requests().at(0).body == row.body.value_or(""));
  }
}

TEST_F(URLSessionRequestTest, NoHeaderValueCanBeginAnotherField) {
  const std::pair<std::string, std::string> rows[] = {
      {"a\r\nX-Injected: 1", "a  X-Injected: 1"},
      {"a\nb\rc", "a b c"},
      {std::string("a\0b", 3), "a b"},
      {"r\xC3\xA9sum\xC3\xA9; \"q\\\"; a&b", "r\xC3\xA9sum\xC3\xA9; \"q\\\"; a&b"},
      {"\r\n", ""},
  };
  for (const auto& [value, expected] : rows) {
    SCOPED_TRACE(testing::PrintToString(value));
    ScriptedServer server;
    auto sent = request("DELETE", server.address());
    sent.headerFields = {{"X-Value", value}};
    EXPECT_EQ(perform(sent).status(), 200);
    EXPECT_EQ(server.requests().at(0).field("X-Value"), expected);
    EXPECT_EQ(server.requests().at(0).field("X-Injected"), std::nullopt);
  }
}

TEST_F(URLSessionRequestTest, AnAddressGoesOutCharacterByCharacter) {
  const std::string target = "/a/../b/./c%2Fd%2e/?X=%20+%2B&&y=;=*'()!~:@/?";
  EXPECT_EQ(get(server_.address(target + "#fragment")).status(), 200);
  EXPECT_EQ(server_.requests().at(0).target(), target);
}

}  // namespace
}  // namespace quillbay::test
