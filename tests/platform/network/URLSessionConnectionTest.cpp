#include "NetworkTest.h"
#include "Waiting.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <ctime>
#include <ranges>
#include <string>
#include <thread>

namespace quillbay::test {
namespace {

using URLSessionConnectionTest = NetworkTest;
using platform::URLSession;

platform::URLRequest createSession(const ScriptedServer& server) {
  auto post = request("POST", server.address("/session"));
  post.body = "{}";
  return post;
}

TEST_F(URLSessionConnectionTest, OneConnectionServesAllSessionsAndOneMoreThePost) {
  const auto file = folder_.writePattern("file", 2 * mebibyte);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(perform(request("PUT", server_.address("/upload_url"))).status(), 200);
    const auto session = URLSession::create();
    const auto put = storeRequest(server_.address("/store"), 2 * mebibyte);
    EXPECT_EQ(RunningTask(put, file, *session).wait().status(), 200);
  }
  EXPECT_EQ(server_.connectionCount(), 1u);
  EXPECT_EQ(perform(createSession(server_)).status(), 200);
  EXPECT_EQ(perform(request("DELETE", server_.address("/session/1"))).status(), 200);
  EXPECT_EQ(server_.connectionCount(), 2u);
}

TEST_F(URLSessionConnectionTest, APostIsNeverSentTwice) {
  server_.onRequest([](const Request& got) {
    return got.method() == "POST" ? Reply::none() : Reply::empty(200);
  });
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(get(server_.address()).status(), 200);
    EXPECT_EQ(perform(createSession(server_)).code(), Code::networkConnectionLost);
  }
  const auto requests = server_.requests();
  EXPECT_EQ(std::ranges::count(requests, "POST", &Request::method), 3);
}

TEST_F(URLSessionConnectionTest, AKeptConnectionThatDiedCostsNoUploadItsSuccess) {
  // The first connection ends with the second request.
  server_.onConnection([this](Connection& connection) {
    const bool isFirst = server_.connectionCount() == 1;
    connection.readRequest();
    connection.send(Reply::empty(200));
    if (isFirst) connection.readRequest();
  });
  EXPECT_EQ(get(server_.address("/first")).status(), 200);
  EXPECT_EQ(upload(server_.address("/store"), folder_.writePattern("file", 1000)).status(), 200);
  EXPECT_TRUE(server_.requests().back().body == patternedBytes(1000));
}

TEST_F(URLSessionConnectionTest, ManyTransfersFromManyThreadsAllEndOnce) {
  const auto file = folder_.writePattern("file", 100'000);
  server_.onRequest([](const Request& got) { return Reply{.body = got.target()}; });
  std::atomic<int> requestCount = 0;
  std::array<std::vector<RunningTask>, 4> tasks;
  std::vector<std::jthread> threads;
  for (auto& tasksOfThread : tasks) {
    threads.emplace_back([&] {
      const auto session = URLSession::create();
      for (int index = 0; index < 25; ++index) {
        const auto path = "/" + std::to_string(++requestCount);
        const auto put = storeRequest(server_.address(path), 100'000);
        tasksOfThread.push_back(index % 2 == 0 ? RunningTask(put, file, *session)
                                               : RunningTask({"GET", put.url}, *session));
      }
    });
  }
  threads.clear();
  for (RunningTask& task : tasks | std::views::join) {
    const Outcome outcome = task.wait();
    ASSERT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.data, outcome.response->url().path());
  }
  EXPECT_EQ(server_.requests().size(), 100u);
}

TEST_F(URLSessionConnectionTest, WaitingForTheNetworkTakesNoProcessorTime) {
  const auto gate = std::make_shared<Gate>();
  server_.onRequest([gate](const Request& got) {
    return Reply{.sendAfter = got.target() == "/held" ? gate : nullptr};
  });
  const auto processorMillisecondsWhileIdle = [] {
    const std::clock_t before = std::clock();
    ::poll(nullptr, 0, 300);
    return (std::clock() - before) * 1000 / CLOCKS_PER_SEC;
  };
  EXPECT_EQ(get(server_.address("/free")).status(), 200);
  EXPECT_LT(processorMillisecondsWhileIdle(), 100) << "with no transfer";
  RunningTask held(request("GET", server_.address("/held")));
  ASSERT_TRUE(waitUntil([&] { return server_.requests().size() == 2; }));
  EXPECT_LT(processorMillisecondsWhileIdle(), 100) << "with a transfer whose server is silent";
  gate->open();
  EXPECT_EQ(held.wait().status(), 200);
}

}  // namespace
}  // namespace quillbay::test
