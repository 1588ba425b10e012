#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace quillbay::test {
namespace {

using URLSessionTaskProgressTest = NetworkTest;
using platform::Progress;

constexpr std::uint64_t mebibyte = 1024 * 1024;

/// What an observer saw.
struct History {
  std::vector<double> fractions;
  bool isMainThreadOnly = true;
  Progress::Observation observation;

  explicit History(Progress& progress) {
    const auto mainThread = std::this_thread::get_id();
    observation = progress.observe([this, mainThread](const Progress& now) {
      fractions.push_back(now.fractionCompleted());
      isMainThreadOnly = isMainThreadOnly && std::this_thread::get_id() == mainThread;
    });
  }
};

void expectRisesToOne(const History& history) {
  EXPECT_TRUE(
      waitUntil([&] { return !history.fractions.empty() && history.fractions.back() == 1.0; }));
  EXPECT_TRUE(history.isMainThreadOnly);
  EXPECT_TRUE(std::ranges::is_sorted(history.fractions));
}

TEST_F(URLSessionTaskProgressTest, GoesFromNothingToAllInFewSteps) {
  const TemporaryFolder folder;
  constexpr std::uint64_t byteCount = 64 * mebibyte;
  const auto file = folder.writeSparse("file", byteCount);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 100 Continue\r\n\r\n");
    while (connection.readBody(8 * mebibyte) > 0) connection.pause(std::chrono::milliseconds(40));
    connection.send(Reply::empty(200));
  });
  const auto start = std::chrono::steady_clock::now();
  auto running = RunningTask::upload(storeRequest(server.address(), byteCount), file);
  Progress& progress = running.progress();
  EXPECT_EQ(progress.totalUnitCount(), 100);
  EXPECT_EQ(progress.completedUnitCount(), 0);
  const History history(progress);
  EXPECT_EQ(running.wait().status(), 200);

  expectRisesToOne(history);
  EXPECT_EQ(progress.completedUnitCount(), static_cast<std::int64_t>(byteCount));
  EXPECT_EQ(progress.totalUnitCount(), static_cast<std::int64_t>(byteCount));
  EXPECT_GE(history.fractions.size(), 2u);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_LE(history.fractions.size(),
            static_cast<std::size_t>(elapsed / std::chrono::milliseconds(100)) + 2);
}

TEST_F(URLSessionTaskProgressTest, IsDoneAtTheEndWhateverTheBodysLength) {
  const TemporaryFolder folder;
  ScriptedServer server;
  for (const std::uint64_t byteCount : {std::uint64_t{0}, std::uint64_t{1}, mebibyte}) {
    SCOPED_TRACE(byteCount);
    const auto file = folder.writeSparse("file", byteCount);
    auto running = RunningTask::upload(storeRequest(server.address(), byteCount), file);
    const History history(running.progress());
    EXPECT_EQ(running.wait().status(), 200);
    expectRisesToOne(history);
    EXPECT_TRUE(running.progress().isFinished());
  }
}

TEST_F(URLSessionTaskProgressTest, DoesNotFallWhenTheBodyIsSentAgain) {
  const TemporaryFolder folder;
  constexpr std::uint64_t byteCount = 32 * mebibyte;
  const auto file = folder.writeSparse("file", byteCount);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    // Pauses after which the next byte is due for an update.
    constexpr std::chrono::milliseconds pause(150);
    while (const auto head = connection.readHead()) {
      connection.send("HTTP/1.1 100 Continue\r\n\r\n");
      connection.readBody(byteCount / 2);
      connection.pause(pause);
      connection.readBody();
      connection.pause(pause);
      connection.send(head->target() == "/from" ? Reply::redirect(307, "/to") : Reply::empty(200));
    }
  });
  auto running = RunningTask::upload(storeRequest(server.address("/from"), byteCount), file);
  const History history(running.progress());
  EXPECT_EQ(running.wait().status(), 200);
  EXPECT_EQ(server.requests().size(), 2u);
  expectRisesToOne(history);
}

TEST_F(URLSessionTaskProgressTest, MovesOnTheMainQueueAloneSoThatAParentCanTakeItIn) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 100'000);
  ScriptedServer server;
  const auto parent = Progress::create(200);
  for (int item = 1; item <= 2; ++item) {
    auto running = RunningTask::upload(storeRequest(server.address(), 100'000), file);
    // The main queue does not run here, however far the transfer is.
    while (!running.isFinished()) std::this_thread::yield();
    EXPECT_EQ(running.progress().totalUnitCount(), 100);
    EXPECT_EQ(running.progress().completedUnitCount(), 0);
    parent->addChild(running.task().progress(), running.progress().totalUnitCount());
    EXPECT_EQ(running.wait().status(), 200);
    EXPECT_EQ(parent->fractionCompleted(), item / 2.0);
  }
  EXPECT_TRUE(parent->isFinished());
}

TEST_F(URLSessionTaskProgressTest, ARefusedUploadIsNotDone) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", 64 * mebibyte);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send(Reply::empty(403));
    connection.waitForClient();
  });
  auto running = RunningTask::upload(storeRequest(server.address(), 64 * mebibyte), file);
  EXPECT_EQ(running.wait().status(), 403);
  EXPECT_LT(running.progress().fractionCompleted(), 1.0);
}

}  // namespace
}  // namespace quillbay::test
