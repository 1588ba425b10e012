#include "NetworkTest.h"

#include <QuillbayPlatform/network/ReplyCollector.h>
#include <zlib.h>

#include <clocale>
#include <cstdlib>

namespace quillbay::test {
namespace {

using URLSessionReplyTest = NetworkTest;

std::string gzip(const TemporaryFolder& folder, const std::string& bytes) {
  const auto path = folder / "packed.gz";
  const gzFile file = ::gzopen(path.c_str(), "w9");
  ::gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size()));
  ::gzclose(file);
  return readFile(path);
}

Reply coded(std::string coding, std::string body, int status = 200) {
  return {.status = status,
          .headerFields = {{"CONTENT-ENCODING", std::move(coding)}},
          .body = std::move(body)};
}

TEST_F(URLSessionReplyTest, OnlyACompleteFinalReplyIsASuccessAndOnlyItsOwnFieldsCount) {
  struct Row {
    const char* name;
    std::string bytes;  // then the server closes in order
    int status;         // 0: no response, because no head arrived whole
    std::optional<std::string> data = std::nullopt;  // nothing: an error
    std::optional<std::string> tag = std::nullopt;
    Code code = Code::networkConnectionLost;  // of an error
  };
  const std::vector<Row> rows = {
      {"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"error with body", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnope", 404, "nope"},
      {"after interim ones",
       "HTTP/1.1 100 Continue\r\nETag: early\r\n\r\nHTTP/1.1 103 Early Hints\r\nETag: early\r\n\r\n"
       "HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx",
       201, "x"},
      {"before a trailer",
       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nETag: late\r\n\r\n", 200, ""},
      {"field repeated", "HTTP/1.1 204 -\r\nETag: a\r\nX-Tag: x\r\neTAG: b\r\n\r\n", 204, "",
       "a, b"},
      {"field folded", "HTTP/1.1 204 -\r\nETag: a\r\n \t\r\n\tb: c\r\n\r\n", 204, "", "a b: c"},
      {"body cut short", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello", 200},
      {"head cut short", "HTTP/1.1 200 OK\r\nContent-Len", 0},
      {"interim alone", "HTTP/1.1 100 Continue\r\n\r\n", 0},
      {"nothing", "", 0},
      {"no head", "hello", 0, std::nullopt, std::nullopt, Code::badServerResponse},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedServer server;
    server.onConnection(answering(row.bytes));
    const Outcome outcome = get(server.address("/?q=confidential"));
    EXPECT_EQ(outcome.status(), row.status);
    EXPECT_EQ(outcome.data, row.data);
    EXPECT_EQ(outcome.code(), row.data ? std::nullopt : std::optional(row.code));
    if (outcome.response) {
      EXPECT_EQ(outcome.response->valueForHTTPHeaderField("ETag"), row.tag);
    }
  }
}

TEST(ReplyCollectorTest, AReplyToARepeatedRequestTakesThePlaceOfTheFirst) {
  platform::ReplyCollector collector(100);
  EXPECT_TRUE(collector.appendHeaderLine("HTTP/1.1 401 No\r\n"));
  EXPECT_TRUE(collector.appendHeaderLine("\r\n"));
  EXPECT_TRUE(collector.appendBody("first"));
  EXPECT_TRUE(collector.appendHeaderLine("HTTP/1.1 200 OK\r\n"));
  EXPECT_EQ(collector.takeBody(), "");
}

TEST_F(URLSessionReplyTest, ADataReplyIsBoundedUnpackedHoweverSmallItTravels) {
  const std::string atLimit = gzip(folder_, std::string(64 * mebibyte, 'x'));
  const std::string overLimit = gzip(folder_, std::string(64 * mebibyte + 1, 'x'));
  const std::map<std::string, std::pair<std::string, bool>> rows = {
      {"/at", {atLimit, true}},
      {"/at-and-nothing", {atLimit + gzip(folder_, ""), true}},
      {"/over", {overLimit, false}},
      {"/over-by-a-second", {atLimit + gzip(folder_, "x"), false}},
  };
  server_.onRequest([&](const Request& got) { return coded("gzip", rows.at(got.target()).first); });
  for (const auto& [path, row] : rows) {
    SCOPED_TRACE(path);
    const Outcome outcome = get(server_.address(path));
    EXPECT_EQ(outcome.data.value_or("").size(), row.second ? 64 * mebibyte : 0);
    if (!row.second) {
      EXPECT_EQ(outcome.code(), Code::dataLengthExceedsMaximum);
    }
  }
  EXPECT_EQ(server_.requests().at(0).field("Accept-Encoding"), "gzip");
}

TEST_F(URLSessionReplyTest, ABodyIsUnpackedWholeOrGivenAsItCame) {
  const std::string text(100, 'x');
  const std::string longText = patternedBytes(mebibyte);
  const std::string packed = gzip(folder_, text);
  // The last four bytes tell the size, those before them the checksum.
  std::string wrongSize = packed;
  ++wrongSize[packed.size() - 4];
  std::string wrongBytes = packed;
  ++wrongBytes[packed.size() - 8];
  const std::string cut = packed.substr(0, packed.size() - 1);
  struct Row {
    const char* name;
    const char* coding;
    std::string body;
    std::string data;
  };
  const std::vector<Row> rows = {
      {"the coding's name in another case", "GZIP", packed, text},
      {"its old name", "x-gzip", packed, text},
      {"two members", "gzip", gzip(folder_, longText) + packed, longText + text},
      {"an empty member first", "gzip", gzip(folder_, "") + packed, text},
      {"an empty member last", "gzip", gzip(folder_, longText) + gzip(folder_, ""), longText},
      {"padding", "gzip", packed + std::string(512, '\0'), text},
      {"a line end", "gzip", packed + "\n", text},
      {"text after it", "gzip", packed + "}}}}}}", text},
      {"not packed", "identity", text, text},
      {"nothing in it", "gzip", "", ""},
      {"of another size than it says", "gzip", wrongSize, wrongSize},
      {"with other bytes than it says", "gzip", wrongBytes, wrongBytes},
      {"cut short", "gzip", cut, cut},
      {"second member cut short", "gzip", packed + cut, packed + cut},
      {"hardly begun", "gzip", packed.substr(0, 3), packed.substr(0, 3)},
      {"not packed as it says", "gzip", text, text},
      {"in a coding that was not asked for", "br", text, text},
  };
  server_.onRequest([&rows](const Request& got) {
    const Row& row = rows.at(std::stoul(got.target().substr(1)));
    return coded(row.coding, row.body, got.method() == "GET" ? 200 : 404);
  });
  for (std::size_t index = 0; index < rows.size(); ++index) {
    SCOPED_TRACE(rows[index].name);
    for (const char* method : {"GET", "DELETE"}) {
      const Outcome outcome =
          perform(request(method, server_.address("/" + std::to_string(index))));
      EXPECT_TRUE(outcome.data == rows[index].data);
      EXPECT_TRUE(outcome.response);
    }
  }
}

TEST_F(URLSessionReplyTest, NamesAreComparedInASCIIWhateverTheHostsLocale) {
  // In this one, "I" is not the capital of "i".
  const std::string command =
      "localedef -i tr_TR -f ISO-8859-9 " + (folder_ / "tr_TR").string() + " 2>/dev/null";
  ::setenv("LOCPATH", folder_.path().c_str(), 1);
  if (std::system(command.c_str()) != 0 || std::setlocale(LC_CTYPE, "tr_TR") == nullptr) {
    GTEST_SKIP() << "no Turkish locale on this machine";
  }
  server_.onRequest([packed = gzip(folder_, "text")](const Request& got) {
    if (got.target() == "/to") return coded("GZIP", packed);
    return Reply{.status = 302, .headerFields = {{"LOCATION", "/to"}}};
  });
  EXPECT_EQ(get(server_.address("/from")).data, "text");
  std::setlocale(LC_CTYPE, "C");
  ::unsetenv("LOCPATH");
}

TEST_F(URLSessionReplyTest, AnUploadReplyOver1MiBAndAHeadWithoutEndAreErrors) {
  const auto file = folder_.writePattern("file", 10);
  server_.onRequest([](const Request& got) {
    const std::size_t byteCount = mebibyte + (got.target() == "/at" ? 0 : 1);
    return Reply{.status = 403, .body = std::string(byteCount, 'x')};
  });
  EXPECT_EQ(upload(server_.address("/at"), file).data.value_or("").size(), mebibyte);
  EXPECT_EQ(upload(server_.address("/over"), file).code(), Code::dataLengthExceedsMaximum);

  ScriptedServer endless;
  endless.onConnection([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n");
    while (connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
    }
  });
  const Outcome outcome = get(endless.address());
  EXPECT_EQ(outcome.code(), Code::dataLengthExceedsMaximum);
  EXPECT_FALSE(outcome.response);
}

}  // namespace
}  // namespace quillbay::test
