#include <gtest/gtest.h>

#include <deque>
#include <future>

#include "sandbox/http/ConnectionThreads.h"
#include "tests/sandbox/RawClient.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

TEST(TlsServer, GivesTheThreadOfAnIdleConnectionToAClientThatWaits) {
  const TemporaryFolder folder;
  SandboxServer server({.dataFolder = folder.path(), .connectionLimit = 4});
  server.start();
  const std::string request = "GET /s/x HTTP/1.1\r\nHost: x\r\n\r\n";
  std::deque<RawClient> clients;
  for (int i = 0; i < 12; ++i) {
    clients.emplace_back(server.port()).send(request);
    EXPECT_TRUE(clients.back().receiveUntil("</html>\n").starts_with("HTTP/1.1 404 ")) << i;
  }
  // Those that were used last still have theirs.
  clients.back().send(request);
  EXPECT_TRUE(clients.back().receiveUntil("</html>\n").starts_with("HTTP/1.1 404 "));
  EXPECT_EQ(clients.front().receiveAll(), "");
}

TEST(TlsServer, LogsAFailedHandshake) {
  const TemporaryFolder folder;
  std::promise<std::string> line;
  SandboxServer server(
      {.dataFolder = folder.path(), .log = [&](const std::string& text) { line.set_value(text); }});
  server.start();
  httplib::Client("localhost", server.port()).Get("/");
  auto logged = line.get_future();
  ASSERT_EQ(logged.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_TRUE(logged.get().ends_with("TLS handshake failed: http request"));
}

TEST(ConnectionThreads, EndsThreadsWithoutConnections) {
  ConnectionThreads threads(3, std::chrono::milliseconds(1), [] {});
  std::promise<void> end;
  const std::shared_future<void> stop = end.get_future().share();
  for (int i = 0; i < 3; ++i) threads.enqueue([stop] { stop.wait(); });
  EXPECT_EQ(threads.threadCount(), 3u);
  end.set_value();
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (threads.threadCount() > 0 && std::chrono::steady_clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_EQ(threads.threadCount(), 0u);
  threads.shutdown();
}

}  // namespace
}  // namespace quillbay::sandbox
