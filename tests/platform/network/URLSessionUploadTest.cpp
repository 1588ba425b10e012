#include "NetworkTest.h"

#include <sys/stat.h>

#include <fstream>

namespace quillbay::test {
namespace {

using URLSessionUploadTest = NetworkTest;
using platform::Progress;
using std::chrono::milliseconds;

TEST_F(URLSessionUploadTest, AnAnswerBeforeTheLastByteIsReadIfItRefusesAndASuccessOrABreakIsALoss) {
  const auto file = folder_.writeSparse("file", longByteCount);
  const std::string tag = "ETag: \"tag\"\r\n";
  const std::string empty = tag + "Content-Length: 0\r\n\r\n";
  const std::string refused = "HTTP/1.1 403 No\r\nContent-Length: 8\r\n\r\n<Error/>";
  const std::string stored = "HTTP/1.1 200 OK\r\n" + empty;
  enum End { close, shutdown, none, reset };
  // Status 0: no response, because the connection is taken for lost.
  const std::tuple<const char*, std::uint64_t, std::string, End, int, int> rows[] = {
      // Without waiting for the server's word, this is lost in nine of ten rounds.
      {"refused before the body", 0, refused, close, 403, 20},
      {"refused amid the body", mebibyte, refused, none, 403, 1},
      {"stored before the body", 0, stored, none, 0, 1},
      {"stored before the body, endless", 0, "HTTP/1.1 200 OK\r\n" + tag + "\r\n", shutdown, 0, 1},
      {"stored amid the body", mebibyte, stored, none, 0, 1},
      {"created amid the body", mebibyte, "HTTP/1.1 201 Created\r\n" + empty, shutdown, 0, 1},
      {"broken amid the body", mebibyte, "", reset, 0, 5},
  };
  for (const auto& [name, readByteCount, reply, end, status, roundCount] : rows) {
    SCOPED_TRACE(name);
    ScriptedServer server;
    server.onConnection([&](Connection& connection) {
      readByteCount > 0 ? connection.readRequest(readByteCount) : connection.readHead();
      connection.send(reply);
      if (end == reset) return connection.reset();
      if (end == shutdown) connection.shutdownSending();
      if (end != close) connection.waitForClient();
    });
    for (int round = 0; round < roundCount; ++round) {
      RunningTask running(storeRequest(server.address("/?q=confidential"), longByteCount), file);
      const Outcome outcome = running.wait();
      ASSERT_EQ(outcome.status(), status) << "round " << round;
      EXPECT_FALSE(running.progress()->isFinished());
      EXPECT_EQ(outcome.data.value_or("lost"), status > 0 ? "<Error/>" : "lost");
      EXPECT_EQ(outcome.code().value_or(Code::networkConnectionLost), Code::networkConnectionLost);
    }
  }
}

TEST_F(URLSessionUploadTest, AFileThatGrowsGivesTheAnnouncedBytesAndAnUnharmedConnection) {
  // No whole number of buffers, at whose end libcurl stops by itself.
  constexpr std::uint64_t byteCount = 12 * mebibyte + 1000;
  const auto file = folder_.writePattern("file", byteCount);
  server_.onConnection([file](Connection& connection) {
    connection.readRequest(mebibyte);
    std::ofstream(file, std::ios::app) << std::string(100'000, '+');
    connection.readBody();
    connection.send(Reply::empty(200));
    connection.readRequest();
    connection.send(Reply::empty(200));
  });
  EXPECT_EQ(upload(server_.address(), file).status(), 200);
  EXPECT_EQ(get(server_.address("/next")).status(), 200);
  const auto requests = server_.requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_TRUE(requests[0].body == patternedBytes(byteCount));
  EXPECT_TRUE(requests[1].head.starts_with("GET /next HTTP/1.1\r\n"));
  EXPECT_EQ(server_.connectionCount(), 1u);
}

TEST_F(URLSessionUploadTest, AFileThatShrankDuringTheUploadEndsItAtOnce) {
  const auto file = folder_.writeSparse("file", longByteCount);
  server_.onConnection([file](Connection& connection) {
    connection.readRequest(mebibyte);
    std::filesystem::resize_file(file, mebibyte);
    connection.waitForClient();
  });
  auto put = storeRequest(server_.address(), longByteCount);
  put.timeoutSeconds = 3600;
  const Outcome outcome = RunningTask(put, file).wait();
  EXPECT_EQ(outcome.code(), Code::cannotReadFile);
  EXPECT_FALSE(outcome.response);
}

TEST_F(URLSessionUploadTest, OnlyARegularFileOfTheAnnouncedLengthIsSent) {
  const auto file = folder_.writePattern("file", 100);
  std::filesystem::create_symlink(file, folder_ / "link");
  ASSERT_EQ(::mkfifo((folder_ / "fifo").c_str(), 0600), 0);
  const std::tuple<std::filesystem::path, std::uint64_t, bool> rows[] = {
      {folder_ / "link", 100, true},
      {file, 99, true},
      {file, 101, false},
      {folder_ / "missing", 100, false},
      {folder_ / "fifo", 0, false},
  };
  for (const auto& [path, byteCount, isSent] : rows) {
    SCOPED_TRACE(path.filename().string() + " " + std::to_string(byteCount));
    ScriptedServer server;
    RunningTask running(storeRequest(server.address(), byteCount), path);
    EXPECT_EQ(running.wait().code(), isSent ? std::nullopt : std::optional(Code::cannotReadFile));
    ASSERT_EQ(server.connectionCount(), isSent ? 1u : 0u);
    if (!isSent) continue;
    EXPECT_EQ(server.requests().at(0).bodyByteCount, byteCount);
  }
}

/// What an observer saw.
struct History {
  std::vector<double> fractions;
  Progress::Observation observation;

  explicit History(Progress& progress)
      : observation(progress.observe(
            [this](const Progress& now) { fractions.push_back(now.fractionCompleted()); })) {}

  void expectRiseToOne() const {
    EXPECT_TRUE(waitUntil([&] { return !fractions.empty() && fractions.back() == 1.0; }));
    EXPECT_TRUE(std::ranges::is_sorted(fractions));
  }
};

TEST_F(URLSessionUploadTest, ProgressGoesFromNothingToAllInFewStepsWhateverTheBodysLength) {
  for (const std::uint64_t byteCount : {std::uint64_t{0}, std::uint64_t{1}, longByteCount}) {
    for (const bool isReplyWhole : {true, false}) {
      SCOPED_TRACE(byteCount);
      // The store has the file, whatever becomes of the rest of its reply.
      ScriptedServer server;
      const std::string reply = "HTTP/1.1 200 OK\r\nETag: tag\r\nContent-Length: 2\r\n\r\n";
      server.onConnection(answering(reply + (isReplyWhole ? "ok" : "o")));
      const auto file = folder_.writeSparse("file", byteCount);
      const auto start = std::chrono::steady_clock::now();
      RunningTask running(storeRequest(server.address(), byteCount), file);
      const Progress& progress = *running.progress();
      EXPECT_EQ(progress.totalUnitCount(), 100);
      EXPECT_EQ(progress.completedUnitCount(), 0);
      const History history(*running.progress());
      const Outcome outcome = running.wait();
      EXPECT_EQ(outcome.status(), 200);
      EXPECT_EQ(outcome.error == nullptr, isReplyWhole);
      history.expectRiseToOne();
      const auto total = static_cast<std::int64_t>(byteCount > 0 ? byteCount : 100);
      EXPECT_EQ(progress.totalUnitCount(), total);
      EXPECT_EQ(progress.completedUnitCount(), total);
      const auto elapsed = std::chrono::steady_clock::now() - start;
      EXPECT_LE(history.fractions.size(),
                static_cast<std::size_t>(elapsed / milliseconds(100)) + 2);
    }
  }
}

TEST_F(URLSessionUploadTest, ProgressDoesNotFallWhenTheBodyIsSentAgain) {
  const auto file = folder_.writeSparse("file", longByteCount);
  server_.onConnection([](Connection& connection) {
    // Pauses after which the next byte is due for an update.
    while (const auto request = connection.readRequest(longByteCount / 2)) {
      connection.pause(milliseconds(150));
      connection.readBody();
      connection.pause(milliseconds(150));
      connection.send(request->target() == "/from" ? Reply::redirect(307, "/to")
                                                   : Reply::empty(200));
    }
  });
  RunningTask running(storeRequest(server_.address("/from"), longByteCount), file);
  const History history(*running.progress());
  EXPECT_EQ(running.wait().status(), 200);
  EXPECT_EQ(server_.requests().size(), 2u);
  EXPECT_GE(history.fractions.size(), 2u);
  history.expectRiseToOne();
}

TEST_F(URLSessionUploadTest, ProgressMovesOnTheMainQueueAlone) {
  RunningTask running(storeRequest(server_.address(), 1000), folder_.writePattern("file", 1000));
  // The main queue does not run here, however far the transfer is.
  while (!running.isFinished()) std::this_thread::yield();
  EXPECT_EQ(running.progress()->completedUnitCount(), 0);
  running.wait();
  EXPECT_TRUE(running.progress()->isFinished());
}

}  // namespace
}  // namespace quillbay::test
