#include "NetworkTest.h"

#include <zlib.h>

namespace quillbay::test {
namespace {

using URLSessionReplyTest = NetworkTest;

Reply gzipReply(const TemporaryFolder& folder, const std::string& bytes) {
  const auto path = folder / "packed.gz";
  const gzFile file = ::gzopen(path.c_str(), "w9");
  ::gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size()));
  ::gzclose(file);
  return {.headerFields = {{"Content-Encoding", "gzip"}}, .body = readFile(path)};
}

TEST_F(URLSessionReplyTest, OnlyACompleteFinalReplyIsASuccess) {
  struct Row {
    const char* name;
    std::string bytes;  // then the server closes in order
    int status;         // 0: no response, because no head arrived whole
    std::optional<std::string> data = std::nullopt;  // nothing: an error
  };
  const std::vector<Row> rows = {
      {"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"error with body", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnope", 404, "nope"},
      {"after interim ones",
       "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"
       "HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx",
       201, "x"},
      {"body cut short", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello", 200},
      {"head cut short", "HTTP/1.1 200 OK\r\nContent-Len", 0},
      {"interim alone", "HTTP/1.1 100 Continue\r\n\r\n", 0},
      {"nothing", "", 0},
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
    const Outcome outcome = get(server.address("/?q=confidential"));
    EXPECT_EQ(outcome.status(), row.status);
    EXPECT_EQ(outcome.data, row.data);
  }
}

TEST_F(URLSessionReplyTest, FieldsOfInterimRepliesAndTrailersAreNotTheReplys) {
  server_.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 100 Continue\r\nETag: \"early\"\r\n\r\n");
    connection.send("HTTP/1.1 103 Early Hints\r\nETag: \"early\"\r\n\r\n");
    connection.readBody();
    connection.send(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nETag: \"late\"\r\n\r\n");
    connection.waitForClient();
  });
  const Outcome outcome = upload(server_.address(), folder_.writePattern("file", 10));
  ASSERT_EQ(outcome.status(), 200);
  EXPECT_EQ(outcome.response->valueForHTTPHeaderField("ETag"), std::nullopt);
}

TEST_F(URLSessionReplyTest, ADataReplyOver64MiBUnpackedEndsAsAnErrorHoweverSmallItTravels) {
  const Reply atLimit = gzipReply(folder_, std::string(64 * mebibyte, 'x'));
  const Reply overLimit = gzipReply(folder_, std::string(64 * mebibyte + 1, 'x'));
  server_.onRequest(
      [=](const Request& got) { return got.target() == "/at" ? atLimit : overLimit; });
  EXPECT_TRUE(get(server_.address("/at")).data == std::string(64 * mebibyte, 'x'));
  EXPECT_EQ(get(server_.address("/over")).code(), Code::dataLengthExceedsMaximum);
  EXPECT_EQ(server_.requests().at(0).field("Accept-Encoding"), "gzip");
}

TEST_F(URLSessionReplyTest, APackedReplyIsUnpackedWholeOrNotAtAll) {
  const std::string text(100, 'x');
  const std::string packed = gzipReply(folder_, text).body;
  // The last four bytes tell the size, those before them the checksum.
  std::string wrongSize = packed;
  ++wrongSize[packed.size() - 4];
  std::string wrongBytes = packed;
  ++wrongBytes[packed.size() - 8];
  struct Row {
    const char* name;
    const char* coding;
    std::string body;
    std::optional<std::string> data = std::nullopt;  // nothing: an error
  };
  const std::vector<Row> rows = {
      {"the coding's name in another case", "GZIP", packed, text},
      {"not packed", "identity", text, text},
      {"nothing in it", "gzip", "", ""},
      {"of another size than it says", "gzip", wrongSize},
      {"with other bytes than it says", "gzip", wrongBytes},
      {"cut short", "gzip", packed.substr(0, packed.size() - 1)},
      {"hardly begun", "gzip", packed.substr(0, 3)},
      {"not packed as it says", "gzip", text},
      {"in a coding that was not asked for", "br", text},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedServer server;
    server.onRequest([&row](const Request&) {
      return Reply{.headerFields = {{"Content-Encoding", row.coding}}, .body = row.body};
    });
    const Outcome outcome = get(server.address());
    EXPECT_EQ(outcome.data, row.data);
    EXPECT_EQ(outcome.status(), 200);
  }
}

TEST_F(URLSessionReplyTest, AnUploadReplyOver1MiBEndsAsAnError) {
  const auto file = folder_.writePattern("file", 10);
  server_.onRequest([](const Request& got) {
    const std::size_t byteCount = mebibyte + (got.target() == "/at" ? 0 : 1);
    return Reply{.status = 403, .body = std::string(byteCount, 'x')};
  });
  EXPECT_EQ(upload(server_.address("/at"), file).data.value_or("").size(), mebibyte);
  EXPECT_EQ(upload(server_.address("/over"), file).code(), Code::dataLengthExceedsMaximum);
}

TEST_F(URLSessionReplyTest, AHeadWithoutEndEndsAsAnError) {
  server_.onConnection([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n");
    while (connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
    }
  });
  const Outcome outcome = get(server_.address());
  EXPECT_TRUE(outcome.error);
  EXPECT_FALSE(outcome.response);
}

}  // namespace
}  // namespace quillbay::test
