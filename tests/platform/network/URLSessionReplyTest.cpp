#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"

#include <zlib.h>

#include <stdexcept>

namespace quillbay::test {
namespace {

using URLSessionReplyTest = NetworkTest;

constexpr std::size_t mebibyte = 1024 * 1024;

std::string gzipped(const std::string& bytes) {
  z_stream stream = {};
  constexpr int gzipWindowBits = 15 + 16;
  if (deflateInit2(&stream, 9, Z_DEFLATED, gzipWindowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::runtime_error("deflateInit2");
  }
  std::string result(deflateBound(&stream, bytes.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

Reply gzipReply(const std::string& bytes) {
  return {.headerFields = {{"Content-Encoding", "gzip"}}, .body = gzipped(bytes)};
}

TEST_F(URLSessionReplyTest, OnlyACompleteFinalReplyIsASuccess) {
  struct Row {
    const char* name;
    std::string bytes;  // then the server closes in order
    int status;         // 0: no response, because no head arrived whole
    std::optional<std::string> data = std::nullopt;  // nothing: an error
  };
  const std::vector<Row> rows = {
      {"length", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello", 200, "hello"},
      {"chunks",
       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nhe\r\n3\r\nllo\r\n0\r\n\r\n", 200,
       "hello"},
      {"up to the close", "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nhello", 200, "hello"},
      {"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"error with body", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnope", 404, "nope"},
      {"server's failure", "HTTP/1.1 500 Oops\r\nContent-Length: 0\r\n\r\n", 500, ""},
      {"after interim ones",
       "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"
       "HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx",
       201, "x"},
      {"body cut short", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello", 200},
      {"chunks cut short", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n",
       200},
      {"head cut short", "HTTP/1.1 200 OK\r\nContent-Len", 0},
      {"nothing", "", 0},
      {"interim alone", "HTTP/1.1 100 Continue\r\n\r\n", 0},
      {"no HTTP", "garbage\r\n\r\nmore garbage", 0},
      {"another protocol", std::string("\x16\x03\x01\x00\x05hello", 10), 0},
      {"length that is none", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nhello", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedServer server;
    server.onConnection([&row](Connection& connection) {
      connection.readRequest();
      connection.send(row.bytes);
      connection.shutdownSending();
      connection.waitForClient();
    });
    const Outcome outcome = perform(request("GET", server.address("/?q=confidential")));
    EXPECT_EQ(outcome.status(), row.status);
    EXPECT_EQ(outcome.data, row.data);
  }
}

TEST_F(URLSessionReplyTest, FieldsOfInterimRepliesAndTrailersAreNotTheReplys) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 10);
  for (const std::string interim : {"100 Continue", "103 Early Hints"}) {
    SCOPED_TRACE(interim);
    ScriptedServer server;
    server.onConnection([&interim](Connection& connection) {
      connection.readHead();
      connection.send("HTTP/1.1 " + interim + "\r\nETag: \"early\"\r\nX-Early: 1\r\n\r\n");
      connection.readBody();
      connection.send(
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nETag: \"late\"\r\n\r\n");
      connection.waitForClient();
    });
    const Outcome outcome = upload(server.address(), file);
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.field("ETag"), std::nullopt);
    EXPECT_EQ(outcome.field("X-Early"), std::nullopt);
  }
}

TEST_F(URLSessionReplyTest, FieldsAreFoundWhateverTheirCaseAndKeepTheirValue) {
  ScriptedServer server;
  server.onRequest([](const Request&) {
    return Reply{.headerFields = {{"eTAG", " \"a, b\"  "},
                                  {"X-Two", "1"},
                                  {"x-two", "2"},
                                  {"X-Empty", ""},
                                  {"X-Colon", "a: b"}}};
  });
  const Outcome outcome = perform(request("GET", server.address()));
  EXPECT_EQ(outcome.field("Etag"), "\"a, b\"");
  EXPECT_EQ(outcome.field("X-TWO"), "1, 2");
  EXPECT_EQ(outcome.field("X-Empty"), "");
  EXPECT_EQ(outcome.field("x-colon"), "a: b");
  EXPECT_EQ(outcome.field("X-Tw"), std::nullopt);
}

TEST_F(URLSessionReplyTest, ACompressedReplyIsAskedForAndUnpacked) {
  const std::string text = patternedBytes(100'000);
  ScriptedServer server;
  server.onRequest([&](const Request&) { return gzipReply(text); });
  const Outcome outcome = perform(request("GET", server.address()));
  EXPECT_TRUE(outcome.data == text);
  EXPECT_EQ(server.requests().at(0).field("Accept-Encoding"), "gzip");
}

TEST_F(URLSessionReplyTest, ADataReplyOver64MiBUnpackedEndsAsAnErrorHoweverSmallItTravels) {
  ScriptedServer server;
  std::string body(64 * mebibyte, 'x');
  const Reply atLimit = gzipReply(body);
  body += 'x';
  const Reply overLimit = gzipReply(body);
  server.onRequest([&](const Request& got) { return got.target() == "/at" ? atLimit : overLimit; });
  EXPECT_EQ(perform(request("GET", server.address("/at"))).data.value_or("").size(), 64 * mebibyte);
  EXPECT_EQ(perform(request("GET", server.address("/over"))).errorName(),
            "dataLengthExceedsMaximum");
}

TEST_F(URLSessionReplyTest, AnUploadReplyOver1MiBEndsAsAnError) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 10);
  ScriptedServer server;
  server.onRequest([](const Request& got) {
    const std::size_t byteCount = mebibyte + (got.target() == "/at" ? 0 : 1);
    return Reply{.status = 403, .body = std::string(byteCount, 'x')};
  });
  EXPECT_EQ(upload(server.address("/at"), file).data.value_or("").size(), mebibyte);
  EXPECT_EQ(upload(server.address("/over"), file).errorName(), "dataLengthExceedsMaximum");
}

TEST_F(URLSessionReplyTest, AHeadWithoutEndEndsAsAnError) {
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n");
    while (connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
    }
  });
  const Outcome outcome = perform(request("GET", server.address()));
  EXPECT_NE(outcome.error, nullptr);
  EXPECT_FALSE(outcome.response);
}

}  // namespace
}  // namespace quillbay::test
