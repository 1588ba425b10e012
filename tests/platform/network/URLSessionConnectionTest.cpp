#include "NetworkTest.h"

#include <poll.h>

#include <array>
#include <ctime>
#include <latch>
#include <ranges>

namespace quillbay::test {
namespace {

using URLSessionConnectionTest = NetworkTest;
using platform::URLSession;

TEST_F(URLSessionConnectionTest, OneConnectionServesAllSessionsAndOneMoreThePost) {
  const auto file = folder_.writePattern("file", 2 * mebibyte);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(perform(request("PUT", server_.address("/upload_url"))).status(), 200);
    const auto session = URLSession::create();
    const auto put = storeRequest(server_.address("/store"), 2 * mebibyte);
    EXPECT_EQ(RunningTask(put, file, *session).wait().status(), 200);
  }
  EXPECT_EQ(server_.connectionCount(), 1u);
  EXPECT_EQ(perform(request("POST", server_.address("/session"), "{}")).status(), 200);
  EXPECT_EQ(perform(request("DELETE", server_.address("/session/1"))).status(), 200);
  EXPECT_EQ(server_.connectionCount(), 2u);
}

TEST_F(URLSessionConnectionTest, WhenAKeptConnectionDiesOnlyWhatDoesNoHarmTwiceIsSentAgain) {
  const std::tuple<const char*, std::optional<std::uint64_t>, bool, bool> rows[] = {
      {"GET", std::nullopt, false, true},
      {"DELETE", std::nullopt, false, true},
      {"PUT", std::nullopt, false, true},
      {"POST", std::nullopt, false, false},
      {"PUT", 0, false, false},
      {"PUT", 1000, false, false},
      {"PUT", 2 * mebibyte, false, false},
      // Nothing of the file had left.
      {"PUT", 2 * mebibyte, true, true},
  };
  for (const auto& [method, fileByteCount, diesAfterHead, isRepeated] : rows) {
    SCOPED_TRACE(std::string(method) + " " + testing::PrintToString(fileByteCount));
    std::atomic<int> arrivalCount = 0;
    ScriptedServer server;
    server.onConnection([&](Connection& connection) {
      while (const auto head = connection.readHead()) {
        const bool isFirstArrival = head->target() == "/lost" && ++arrivalCount == 1;
        if (isFirstArrival && diesAfterHead) return;
        connection.readBody();
        if (isFirstArrival) return;
        connection.send(Reply::empty(200));
      }
    });
    EXPECT_EQ(get(server.address("/kept")).status(), 200);
    const auto put = storeRequest(server.address("/lost"), fileByteCount.value_or(0));
    auto sent = request(method, server.address("/lost"));
    if (sent.method != "GET") sent.body = "{}";
    const Outcome outcome =
        fileByteCount ? RunningTask(put, folder_.writePattern("file", *fileByteCount)).wait()
                      : perform(sent);
    EXPECT_EQ(outcome.code(),
              isRepeated ? std::nullopt : std::optional(Code::networkConnectionLost));
    EXPECT_EQ(std::ranges::count(server.requests(), "/lost", &Request::target), 1 + isRepeated);
  }
}

TEST_F(URLSessionConnectionTest, AServerThatWillNotBeAskedGetsTheWholeRequestOnce) {
  // More than the sockets' buffers take of it.
  const std::string body = patternedBytes(12 * mebibyte);
  const auto file = folder_.write("file", body);
  for (const bool isUpload : {true, false}) {
    // The second one has begun to send, as it had no answer for a while.
    for (const std::uint64_t readByteCount : {std::uint64_t{0}, mebibyte / 2, 12 * mebibyte}) {
      SCOPED_TRACE(std::string(isUpload ? "PUT " : "POST ") + std::to_string(readByteCount));
      ScriptedServer server;
      server.onConnection([&](Connection& connection) {
        const auto head = connection.readHead();
        const bool isAsked = head && head->field("Expect");
        connection.readBody(isAsked ? readByteCount : Connection::all);
        connection.send(isAsked
                            ? Reply{.status = 417, .headerFields = {{"ETag", "417"}}, .body = "no"}
                            : Reply{.headerFields = {{"ETag", "tag"}}, .body = "yes"});
        // As a server may: it takes what it was promised, and drops it.
        connection.waitForClient();
      });
      const auto sent = request("POST", server.address("/session"), body);
      const Outcome outcome = isUpload ? upload(server.address("/store"), file) : perform(sent);
      ASSERT_TRUE(outcome.response);
      const auto tag = outcome.response->valueForHTTPHeaderField("ETag");
      EXPECT_EQ(std::tuple(outcome.status(), outcome.data, tag),
                readByteCount == body.size() ? std::tuple(417, "no", "417")
                                             : std::tuple(200, "yes", "tag"));
      EXPECT_TRUE(server.requests().back().body == body);
      EXPECT_EQ(std::ranges::count(server.requests(), body.size(), &Request::bodyByteCount), 1);
    }
  }
}

TEST_F(URLSessionConnectionTest, ManyTransfersFromManyThreadsAllEndOnce) {
  const auto file = folder_.writePattern("file", 100'000);
  server_.onRequest([](const Request& got) { return Reply{.body = got.target()}; });
  std::array<std::vector<RunningTask>, 4> tasks;
  std::latch started(tasks.size());
  std::vector<std::jthread> threads;
  for (auto& tasksOfThread : tasks) {
    threads.emplace_back([&] {
      const auto session = URLSession::create();
      for (int index = 0; index < 25; ++index) {
        const auto put = storeRequest(server_.address("/" + std::to_string(index)), 100'000);
        tasksOfThread.push_back(index % 2 == 0
                                    ? RunningTask(put, file, *session)
                                    : RunningTask({"GET", put.url}, std::nullopt, *session));
      }
      started.count_down();
    });
  }
  // They are joined at the end: until then, no thread of the library has the identifier of one.
  started.wait();
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
