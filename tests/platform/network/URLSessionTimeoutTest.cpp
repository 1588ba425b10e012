#include "NetworkTest.h"

namespace quillbay::test {
namespace {

using URLSessionTimeoutTest = NetworkTest;
using std::chrono::milliseconds;

TEST_F(URLSessionTimeoutTest, SilenceForTheTimeOutEndsTheTaskWhereverItFallsAndASlowLineDoesNot) {
  struct Row {
    const char* name;
    std::uint64_t uploadByteCount;  // 0: a GET
    int timeoutSeconds;
    std::optional<Code> code;
    ScriptedServer::ConnectionHandler script;
  };
  const std::vector<Row> rows = {
      {"instead of TLS", 0, 1, Code::timedOut,
       [](Connection& connection) { connection.waitFor(Gate()); }},
      {"after the request", 0, 1, Code::timedOut,
       [](Connection& connection) { connection.waitForClient(); }},
      {"amid the reply", 0, 1, Code::timedOut,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
         connection.waitForClient();
       }},
      {"amid the upload", longByteCount, 1, Code::timedOut, stallUpload},
      {"after the upload", longByteCount, 1, Code::timedOut,
       [](Connection& connection) {
         connection.readRequest();
         connection.waitForClient();
       }},
      {"reply by rare bytes", 0, 2, std::nullopt,
       [](Connection& connection) {
         connection.readHead();
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
         for (int byte = 0; byte < 4; ++byte) {
           connection.pause(milliseconds(1300));
           connection.send(".");
         }
       }},
      {"upload that the system has taken whole", mebibyte, 2, std::nullopt,
       [](Connection& connection) {
         connection.limitReceiveBuffer(32 * 1024);
         connection.readHead();
         while (connection.readBody(mebibyte / 16) > 0) connection.pause(milliseconds(400));
         connection.send(Reply::empty(200));
       }},
  };
  // All at once: they do little but wait.
  std::list<ScriptedServer> servers;
  std::vector<RunningTask> tasks;
  for (const Row& row : rows) {
    ScriptedServer& server = servers.emplace_back();
    server.onConnection(row.script);
    const std::string address = server.address("/?q=confidential");
    auto sent = storeRequest(address, row.uploadByteCount);
    if (row.uploadByteCount == 0) sent = request("GET", address);
    sent.timeoutSeconds = row.timeoutSeconds;
    tasks.push_back(row.uploadByteCount == 0
                        ? RunningTask(sent)
                        : RunningTask(sent, folder_.writeSparse(row.name, row.uploadByteCount)));
  }
  for (std::size_t index = 0; index < rows.size(); ++index) {
    SCOPED_TRACE(rows[index].name);
    EXPECT_EQ(tasks[index].wait().code(), rows[index].code);
  }
}

}  // namespace
}  // namespace quillbay::test
