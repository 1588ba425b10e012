#include "NetworkTest.h"

#include <list>

namespace quillbay::test {
namespace {

using std::chrono::milliseconds;

struct Row {
  const char* name;
  std::uint64_t uploadByteCount;  // 0: a GET
  ScriptedServer::ConnectionHandler script;
};

class URLSessionTimeoutTest : public NetworkTest {
 protected:
  /// All rows at once: they do little but wait.
  void expectOutcomes(const std::vector<Row>& rows, int timeoutSeconds, std::optional<Code> code) {
    std::list<ScriptedServer> servers;
    std::vector<RunningTask> tasks;
    for (const Row& row : rows) {
      ScriptedServer& server = servers.emplace_back();
      server.onConnection(row.script);
      const std::string address = server.address("/?q=confidential");
      const bool isUpload = row.uploadByteCount > 0;
      auto sent = isUpload ? storeRequest(address, row.uploadByteCount) : request("GET", address);
      sent.timeoutSeconds = timeoutSeconds;
      tasks.push_back(isUpload
                          ? RunningTask(sent, folder_.writeSparse(row.name, row.uploadByteCount))
                          : RunningTask(sent));
    }
    for (std::size_t index = 0; index < rows.size(); ++index) {
      SCOPED_TRACE(rows[index].name);
      EXPECT_EQ(tasks[index].wait().code(), code);
    }
  }
};

TEST_F(URLSessionTimeoutTest, SilenceForTheTimeOutEndsTheTaskWhereverItFalls) {
  const std::vector<Row> rows = {
      {"instead of TLS", 0, [](Connection& connection) { connection.waitFor(Gate()); }},
      {"after the request", 0, [](Connection& connection) { connection.waitForClient(); }},
      {"amid the reply", 0,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
         connection.waitForClient();
       }},
      {"amid the upload", longByteCount, stallUpload},
      {"after the upload", longByteCount,
       [](Connection& connection) {
         connection.readRequest();
         connection.waitForClient();
       }},
  };
  expectOutcomes(rows, 1, Code::timedOut);
}

TEST_F(URLSessionTimeoutTest, ATransferThatMovesNowAndThenMayTakeLongerThanTheTimeOut) {
  const std::vector<Row> rows = {
      {"reply by rare bytes", 0,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n");
         for (int byte = 0; byte < 8; ++byte) {
           connection.pause(milliseconds(1300));
           connection.send(".");
         }
       }},
      {"upload that the system has taken whole", mebibyte,
       [](Connection& connection) {
         connection.limitReceiveBuffer(32 * 1024);
         connection.readHead();
         while (connection.readBody(mebibyte / 16) > 0) connection.pause(milliseconds(400));
         connection.send(Reply::empty(200));
       }},
  };
  expectOutcomes(rows, 2, std::nullopt);
}

}  // namespace
}  // namespace quillbay::test
