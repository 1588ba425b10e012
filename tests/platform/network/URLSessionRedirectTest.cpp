#include "NetworkTest.h"

namespace quillbay::test {
namespace {

using URLSessionRedirectTest = NetworkTest;

/// Leads "/from" to `location` with the given status.
ScriptedServer::RequestHandler leading(int status, std::string location) {
  return [status, location](const Request& got) {
    if (got.target() != "/from") return Reply::empty(200);
    return Reply::redirect(status, location);
  };
}

TEST_F(URLSessionRedirectTest, ADataTaskIsRedirectedAsABrowserWould) {
  // Without an expected method it is not followed.
  const std::tuple<int, std::string, std::string> rows[] = {
      {301, "GET", "GET"}, {301, "POST", "GET"},  {302, "POST", "GET"}, {303, "PUT", "GET"},
      {301, "PUT", "PUT"}, {307, "POST", "POST"}, {308, "PUT", "PUT"},  {302, "DELETE", "DELETE"},
      {304, "GET", ""},    {201, "POST", ""},
  };
  for (const auto& [status, method, expectedMethod] : rows) {
    SCOPED_TRACE(std::to_string(status) + " " + method);
    ScriptedServer server;
    server.onRequest(leading(status, "to?a b"));
    auto sent = request(method, server.address("/from"));
    sent.headerFields = {{tokenField, "confidential"}, {"Content-Type", "a/b"}};
    if (method == "POST" || method == "PUT") sent.body = "{\"a\":1}";
    const Outcome outcome = perform(sent);

    const auto requests = server.requests();
    EXPECT_EQ(outcome.status(), expectedMethod.empty() ? status : 200);
    ASSERT_EQ(requests.size(), expectedMethod.empty() ? 1u : 2u);
    if (expectedMethod.empty()) continue;
    EXPECT_EQ(outcome.response->url().absoluteString(), server.address("/to?a%20b"));
    EXPECT_EQ(requests[1].target(), "/to?a%20b");
    EXPECT_EQ(requests[1].method(), expectedMethod);
    EXPECT_EQ(requests[1].field(tokenField), secret);
    const bool keepsBody = method == expectedMethod;
    EXPECT_EQ(requests[1].body, keepsBody ? sent.body.value_or("") : "");
    EXPECT_EQ(requests[1].field("Content-Type").has_value(), keepsBody);
  }
  server_.onRequest(leading(302, ""));
  EXPECT_EQ(get(server_.address("/from")).status(), 302);
}

TEST_F(URLSessionRedirectTest, AnUploadIsSentAgainFromItsFirstByteFor307And308Only) {
  // The larger one is redirected before its body has been asked for.
  for (const std::uint64_t byteCount : {std::uint64_t{1000}, 3 * mebibyte}) {
    for (const int status : {301, 302, 303, 307, 308}) {
      SCOPED_TRACE(std::to_string(status) + ", " + std::to_string(byteCount) + " bytes");
      const std::string content = patternedBytes(byteCount);
      const auto file = folder_.write("file", content);
      ScriptedServer target;
      ScriptedServer server;
      server.onConnection([&](Connection& connection) {
        connection.readHead();
        if (byteCount < mebibyte) connection.readBody();
        // A file that takes the place of the opened one must not be what arrives.
        std::filesystem::remove(file);
        folder_.write("file", std::string(byteCount, '-'));
        connection.send(Reply::redirect(status, target.address("/to")));
        connection.waitForClient();
      });
      const bool follows = status >= 307;
      EXPECT_EQ(upload(server.address("/from"), file).status(), follows ? 200 : status);
      const auto requests = target.requests();
      ASSERT_EQ(requests.size(), follows ? 1u : 0u);
      if (!follows) continue;
      EXPECT_TRUE(requests[0].body == content);
      EXPECT_EQ(requests[0].method(), "PUT");
      EXPECT_EQ(requests[0].field("Content-Type"), "text/plain");
    }
  }
}

TEST_F(URLSessionRedirectTest, AReplyAddsToNoFieldOfTheReplyBeforeIt) {
  ScriptedServer target;
  target.onConnection(answering("HTTP/1.1 200 OK\r\n goes: on\r\n\r\n"));
  server_.onRequest(leading(302, target.address("/to")));
  EXPECT_EQ(get(server_.address("/from")).code(), Code::unknown);
}

TEST_F(URLSessionRedirectTest, TenRedirectsAreFollowedAndNoMore) {
  server_.onRequest([](const Request& got) {
    const int left = std::stoi(got.target().substr(1));
    return left == 0 ? Reply::empty(200) : Reply::redirect(302, "/" + std::to_string(left - 1));
  });
  EXPECT_EQ(get(server_.address("/10")).status(), 200);
  EXPECT_EQ(get(server_.address("/11")).code(), Code::tooManyRedirects);
  EXPECT_EQ(server_.requests().size(), 22u);
}

TEST_F(URLSessionRedirectTest, TheSessionTokenStaysWithTheOriginItWasMeantFor) {
  ScriptedServer otherPort;
  const std::map<std::string, std::string> locations = {
      {"/1", "https://CLOUD.quillbay.example:443/2"},
      {"/2", "https://localhost/3"},
      {"/3", "https://cloud.quillbay.example/4"},
      {"/5", otherPort.address("/6")},
  };
  server_.onRequest([locations](const Request& got) {
    const auto next = locations.find(got.target());
    return next == locations.end() ? Reply::empty(200) : Reply::redirect(307, next->second);
  });
  useTestNetwork(&server_);
  for (const std::string& start :
       {std::string("https://cloud.quillbay.example/1"), server_.address("/5")}) {
    for (const char* name : {tokenField, "x-quillbay-session-token"}) {
      auto sent = request("PUT", start);
      sent.headerFields = {{name, "confidential"}};
      EXPECT_EQ(perform(sent).status(), 200);
    }
  }
  auto requests = server_.requests();
  for (const Request& got : otherPort.requests()) requests.push_back(got);
  ASSERT_EQ(requests.size(), 12u);
  for (const Request& got : requests) {
    const bool mayHaveIt = got.target() != "/3" && got.target() != "/4" && got.target() != "/6";
    EXPECT_EQ(got.field(tokenField).has_value(), mayHaveIt) << got.head;
  }
}

}  // namespace
}  // namespace quillbay::test
