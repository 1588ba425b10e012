#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

#include <poll.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <thread>

namespace quillbay::test {
namespace {

using URLSessionConnectionTest = NetworkTest;
using platform::URLSession;

constexpr std::size_t mebibyte = 1024 * 1024;

TEST_F(URLSessionConnectionTest, OneConnectionServesAllSessionsAndOneMoreThePost) {
  const TemporaryFolder folder;
  const auto small = folder.writePattern("small", 10);
  const auto large = folder.writePattern("large", 2 * mebibyte);
  ScriptedServer server;
  EXPECT_EQ(perform(request("PUT", server.address("/upload_url"))).status(), 200);
  for (int round = 0; round < 3; ++round) {
    for (const auto& file : {small, large}) {
      const auto session = URLSession::create();
      const auto put = storeRequest(server.address("/store"), std::filesystem::file_size(file));
      EXPECT_EQ(RunningTask::upload(put, file, *session).wait().status(), 200);
    }
    EXPECT_EQ(perform(request("PUT", server.address("/finalize"))).status(), 200);
  }
  EXPECT_EQ(server.connectionCount(), 1u);

  auto post = request("POST", server.address("/session"));
  post.body = "{}";
  EXPECT_EQ(perform(post).status(), 200);
  EXPECT_EQ(server.connectionCount(), 2u);
  EXPECT_EQ(perform(request("DELETE", server.address("/session/1"))).status(), 200);
  EXPECT_EQ(server.connectionCount(), 2u);
}

TEST_F(URLSessionConnectionTest, APostIsNeverSentTwice) {
  ScriptedServer server;
  server.onRequest([](const Request& got) {
    return got.method() == "POST" ? Reply::none() : Reply::empty(200);
  });
  auto post = request("POST", server.address("/session"));
  post.body = "{}";
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(perform(request("GET", server.address())).status(), 200);
    EXPECT_EQ(perform(post).errorName(), "networkConnectionLost");
  }
  const auto requests = server.requests();
  EXPECT_EQ(std::ranges::count(requests, "POST", &Request::method), 3);
}

TEST_F(URLSessionConnectionTest, AKeptConnectionThatDiedCostsNoRequestItsSuccess) {
  const TemporaryFolder folder;
  for (const std::size_t byteCount : {std::size_t{1000}, 3 * mebibyte}) {
    SCOPED_TRACE(byteCount);
    const auto file = folder.writePattern("file", byteCount);
    // The first connection ends with the second request: at its body, or before that is asked for.
    ScriptedServer server;
    server.onConnection([byteCount](Connection& connection) {
      connection.readRequest();
      if (connection.number() > 0) return (void)connection.send(Reply::empty(200));
      connection.send(Reply::empty(200));
      connection.readHead();
      if (byteCount < mebibyte) connection.readBody();
    });
    EXPECT_EQ(perform(request("GET", server.address("/first"))).status(), 200);
    EXPECT_EQ(upload(server.address("/store"), file).status(), 200);
    EXPECT_TRUE(server.requests().back().body == patternedBytes(byteCount));
  }
}

TEST_F(URLSessionConnectionTest, ManyTransfersFromManyThreadsAllEndOnce) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 100'000);
  ScriptedServer server;
  server.onRequest([](const Request& got) {
    return Reply{.headerFields = {{"ETag", got.target()}}, .body = got.target()};
  });
  constexpr std::size_t threadCount = 4;
  constexpr std::size_t perThreadCount = 25;
  std::vector<std::vector<RunningTask>> tasks(threadCount);
  std::vector<std::jthread> threads;
  for (std::size_t thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&, thread] {
      const auto session = URLSession::create();
      for (std::size_t index = 0; index < perThreadCount; ++index) {
        const auto address =
            server.address("/" + std::to_string(thread) + "." + std::to_string(index));
        tasks[thread].push_back(
            index % 2 == 0 ? RunningTask::data(request("PUT", address), *session)
                           : RunningTask::upload(storeRequest(address, 100'000), file, *session));
      }
    });
  }
  threads.clear();
  for (std::size_t thread = 0; thread < threadCount; ++thread) {
    for (std::size_t index = 0; index < perThreadCount; ++index) {
      EXPECT_EQ(tasks[thread][index].wait().data,
                "/" + std::to_string(thread) + "." + std::to_string(index));
    }
  }
  EXPECT_EQ(server.requests().size(), threadCount * perThreadCount);
}

TEST_F(URLSessionConnectionTest, WaitingForTheNetworkTakesNoProcessorTime) {
  const auto gate = std::make_shared<Gate>();
  ScriptedServer server;
  server.onRequest([&](const Request& got) {
    Reply reply;
    if (got.target() == "/held") reply.sendAfter = gate;
    return reply;
  });
  const auto processorMilliseconds = [] {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
  };
  const auto whileIdle = [&] {
    const auto before = processorMilliseconds();
    ::poll(nullptr, 0, 300);
    return processorMilliseconds() - before;
  };
  EXPECT_EQ(perform(request("GET", server.address("/free"))).status(), 200);
  EXPECT_LT(whileIdle(), 100) << "with no transfer";
  auto held = RunningTask::data(request("GET", server.address("/held")));
  ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 2; }));
  EXPECT_LT(whileIdle(), 100) << "with a transfer whose server is silent";
  gate->open();
  EXPECT_EQ(held.wait().status(), 200);
}

}  // namespace
}  // namespace quillbay::test
