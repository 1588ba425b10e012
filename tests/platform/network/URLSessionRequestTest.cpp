#include "NetworkTest.h"

namespace quillbay::test {
namespace {

using Lines = std::vector<std::string>;

class URLSessionRequestTest : public NetworkTest {
 protected:
  const std::string address_ = server_.address("/key?signature=confidential");

  /// What came last has the field lines "Host" and these, in whatever order.
  void expectLast(const std::string& method, Lines fieldLines, const std::string& body) const {
    const Request got = server_.requests().back();
    EXPECT_TRUE(got.head.starts_with(method + " /key?signature=confidential HTTP/1.1\r\n"));
    fieldLines.push_back("Host: 127.0.0.1:" + std::to_string(server_.port()));
    EXPECT_THAT(got.fieldLines(), testing::UnorderedElementsAreArray(fieldLines));
    EXPECT_TRUE(got.body == body);
  }
};

TEST_F(URLSessionRequestTest, AnUploadCarriesItsThreeFieldsAndNothingBeyondWhatHTTPNeeds) {
  for (const std::uint64_t byteCount : {std::uint64_t{0}, mebibyte, mebibyte + 1}) {
    EXPECT_EQ(upload(address_, folder_.writePattern("file", byteCount)).status(), 200);
    Lines expected = {
        "Content-Length: " + std::to_string(byteCount),
        "Content-Disposition: attachment; filename=\"a b.txt\"; filename*=UTF-8''a+b.txt",
        "Content-Type: text/plain"};
    if (byteCount > mebibyte) expected.emplace_back("Expect: 100-continue");
    expectLast("PUT", expected, patternedBytes(byteCount));
  }
}

TEST_F(URLSessionRequestTest, ADataTaskSendsItsBodyAndNoFieldThatTheServiceWasNotPromised) {
  const std::tuple<const char*, decltype(platform::URLRequest::headerFields),
                   std::optional<std::string>, Lines>
      rows[] = {
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
  for (const auto& [method, fields, body, fieldLines] : rows) {
    auto sent = request(method, address_, body);
    sent.headerFields = fields;
    EXPECT_EQ(perform(sent).status(), 200);
    Lines expected = fieldLines;
    expected.insert(expected.end(), {"Accept: */*", "Accept-Encoding: gzip"});
    expectLast(method, expected, body.value_or(""));
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
    auto sent = request("DELETE", server_.address());
    sent.headerFields = {{"X-Value", value}};
    EXPECT_EQ(perform(sent).status(), 200);
    EXPECT_EQ(server_.requests().back().field("X-Value"), expected);
    EXPECT_EQ(server_.requests().back().field("X-Injected"), std::nullopt);
  }
}

TEST_F(URLSessionRequestTest, AnAddressGoesOutCharacterByCharacter) {
  const std::string target = "/a/../b/./c%2Fd%2e/?X=%20+%2B&&y=;=*'()!~:@/?";
  EXPECT_EQ(get(server_.address(target + "#fragment")).status(), 200);
  EXPECT_EQ(server_.requests().back().target(), target);
}

}  // namespace
}  // namespace quillbay::test
