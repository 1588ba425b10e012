#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"

#include <list>

namespace quillbay::test {
namespace {

using URLSessionTimeoutTest = NetworkTest;
using std::chrono::milliseconds;

constexpr std::uint64_t mebibyte = 1024 * 1024;
constexpr std::uint64_t longByteCount = 64 * mebibyte;

struct Row {
  const char* name;
  std::optional<TestCertificates::Server> certificate;
  std::uint64_t uploadByteCount;  // 0: a GET
  ScriptedServer::ConnectionHandler script;
};

/// All rows at once: they do little but wait.
void expectOutcomes(const std::vector<Row>& rows, int timeoutSeconds,
                    const std::string& errorName) {
  const TemporaryFolder folder;
  std::list<ScriptedServer> servers;
  std::vector<RunningTask> tasks;
  for (const Row& row : rows) {
    ScriptedServer& server = servers.emplace_back(row.certificate);
    server.onConnection(row.script);
    const std::string address =
        "https://127.0.0.1:" + std::to_string(server.port()) + "/?q=confidential";
    auto sent = row.uploadByteCount > 0 ? storeRequest(address, row.uploadByteCount)
                                        : request("GET", address);
    sent.timeoutSeconds = timeoutSeconds;
    tasks.push_back(
        row.uploadByteCount > 0
            ? RunningTask::upload(sent, folder.writeSparse(row.name, row.uploadByteCount))
            : RunningTask::data(sent));
  }
  for (std::size_t index = 0; index < rows.size(); ++index) {
    SCOPED_TRACE(rows[index].name);
    EXPECT_EQ(tasks[index].wait().errorName(), errorName);
  }
}

constexpr auto trusted = TestCertificates::Server::trusted;

TEST_F(URLSessionTimeoutTest, SilenceForTheTimeOutEndsTheTaskWhereverItFalls) {
  const std::vector<Row> rows = {
      {"instead of TLS", ScriptedServer::plain, 0,
       [](Connection& connection) { connection.waitForClient(); }},
      {"after the request", trusted, 0, [](Connection& connection) { connection.waitForClient(); }},
      {"amid the head", trusted, 0,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-");
         connection.waitForClient();
       }},
      {"amid the reply", trusted, 0,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
         connection.waitForClient();
       }},
      {"amid the upload", trusted, longByteCount,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 100 Continue\r\n\r\n");
         connection.readBody(mebibyte);
         connection.waitFor(Gate());
       }},
      {"after the upload", trusted, longByteCount,
       [](Connection& connection) {
         connection.readRequest();
         connection.waitForClient();
       }},
  };
  expectOutcomes(rows, 1, "timedOut");
}

TEST_F(URLSessionTimeoutTest, ATransferThatMovesNowAndThenMayTakeLongerThanTheTimeOut) {
  const std::vector<Row> rows = {
      {"reply by rare bytes", trusted, 0,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n");
         connection.drip("drip....", milliseconds(1300));
       }},
      {"upload by pieces", trusted, longByteCount,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 100 Continue\r\n\r\n");
         for (int piece = 0; piece < 6; ++piece) {
           connection.readBody(8 * mebibyte);
           connection.pause(milliseconds(700));
         }
         connection.readBody();
         connection.send(Reply::empty(200));
       }},
      {"upload that the system has taken whole", trusted, mebibyte,
       [](Connection& connection) {
         connection.limitReceiveBuffer(32 * 1024);
         connection.readHead();
         while (connection.readBody(mebibyte / 16) > 0) connection.pause(milliseconds(400));
         connection.send(Reply::empty(200));
       }},
  };
  expectOutcomes(rows, 2, "none");
}

}  // namespace
}  // namespace quillbay::test
