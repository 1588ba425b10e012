#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>

namespace quillbay::test {
namespace {

using URLSessionUploadTest = NetworkTest;

constexpr std::uint64_t mebibyte = 1024 * 1024;
// Beyond what the sockets' buffers take, so that it cannot have been sent unless it was read.
constexpr std::uint64_t longByteCount = 64 * mebibyte;

constexpr const char* continueText = "HTTP/1.1 100 Continue\r\n\r\n";
constexpr const char* storedText = "HTTP/1.1 200 OK\r\nETag: \"tag\"\r\nContent-Length: 0\r\n\r\n";
const std::string refusalXML =
    "<?xml version=\"1.0\"?><Error><Code>AccessDenied</Code><Message>No.</Message></Error>";
const std::string refusalText =
    "HTTP/1.1 403 Forbidden\r\nContent-Type: application/xml\r\n"
    "Connection: close\r\nContent-Length: " +
    std::to_string(refusalXML.size()) + "\r\n\r\n" + refusalXML;

TEST_F(URLSessionUploadTest, AServerThatIgnoresTheExpectationGetsTheBodyAllTheSame) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 3 * mebibyte);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.readBody();
    connection.send(storedText);
  });
  const Outcome outcome = upload(server.address(), file);
  EXPECT_EQ(outcome.status(), 200);
  EXPECT_EQ(outcome.field("Etag"), "\"tag\"");
  EXPECT_TRUE(server.requests().at(0).body == patternedBytes(3 * mebibyte));
}

TEST_F(URLSessionUploadTest, ARefusalBeforeTheBodyIsReadWithItsText) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", longByteCount);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send(refusalText);
  });
  constexpr int roundCount = 20;
  for (int round = 0; round < roundCount; ++round) {
    const Outcome outcome = upload(server.address("/?signature=confidential"), file);
    ASSERT_EQ(outcome.status(), 403) << "round " << round << ": " << outcome.errorName();
    ASSERT_EQ(outcome.data, refusalXML);
  }
  EXPECT_EQ(server.requests().size(), static_cast<std::size_t>(roundCount));
}

TEST_F(URLSessionUploadTest, ARefusalAmidTheBodyIsReadIfTheServerStaysToTheEnd) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", longByteCount);
  ScriptedServer server;
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send(continueText);
    connection.readBody(100'000);
    connection.send(refusalText);
    connection.waitForClient();
  });
  const Outcome outcome = upload(server.address(), file);
  EXPECT_EQ(outcome.status(), 403) << outcome.errorName();
  EXPECT_EQ(outcome.data, refusalXML);
}

TEST_F(URLSessionUploadTest, ASuccessThatCameBeforeTheLastByteIsNone) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", longByteCount);
  struct Row {
    const char* name;
    const char* before;
    std::uint64_t readByteCount;
    std::string reply;
    bool closes;
  };
  const std::string created = "HTTP/1.1 201 Created\r\nETag: \"tag\"\r\nContent-Length: 0\r\n\r\n";
  const std::string endless = "HTTP/1.1 200 OK\r\nETag: \"tag\"\r\n\r\n";
  const std::vector<Row> rows = {
      {"before the body, then reads on", "", 0, storedText, false},
      {"before the body, then closes", "", 0, storedText, true},
      {"before the body, ended by the close", "", 0, endless, true},
      {"amid the body, then reads on", continueText, 100'000, storedText, false},
      {"amid the body, then closes", continueText, 100'000, storedText, true},
      {"created, amid the body", continueText, 100'000, created, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedServer server;
    server.onConnection([&row](Connection& connection) {
      connection.readHead();
      connection.send(row.before);
      connection.readBody(row.readByteCount);
      connection.send(row.reply);
      if (row.closes) return connection.shutdownSending(), (void)connection.waitForClient();
      connection.readBody();
      connection.waitForClient();
    });
    const Outcome outcome = upload(server.address(), file);
    EXPECT_EQ(outcome.errorName(), "networkConnectionLost");
    EXPECT_FALSE(outcome.response);
  }
}

TEST_F(URLSessionUploadTest, AFileThatGrewGivesTheAnnouncedBytesAndAnUnharmedConnection) {
  const TemporaryFolder folder;
  for (const bool duringUpload : {false, true}) {
    SCOPED_TRACE(duringUpload ? "during the upload" : "before the upload");
    const std::uint64_t byteCount = duringUpload ? 12 * mebibyte : 300'000;
    const std::string content = patternedBytes(byteCount);
    const auto file = folder.write("file", content);
    const auto grow = [&file] { std::ofstream(file, std::ios::app) << std::string(100'000, '+'); };
    ScriptedServer server;
    server.onConnection([&](Connection& connection) {
      connection.readHead();
      connection.send(continueText);
      connection.readBody(mebibyte / 16);
      if (duringUpload) grow();
      connection.readBody();
      connection.send(storedText);
      connection.readRequest();
      connection.send(Reply::empty(200));
    });
    if (!duringUpload) grow();
    const Outcome outcome =
        RunningTask::upload(storeRequest(server.address(), byteCount), file).wait();
    EXPECT_EQ(outcome.status(), 200) << outcome.errorName();
    EXPECT_EQ(perform(request("GET", server.address("/next"))).status(), 200);

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].fields("Content-Length"),
              std::vector<std::string>{std::to_string(byteCount)});
    EXPECT_TRUE(requests[0].body == content);
    EXPECT_TRUE(requests[1].head.starts_with("GET /next HTTP/1.1\r\n"));
    EXPECT_EQ(server.connectionCount(), 1u);
  }
}

TEST_F(URLSessionUploadTest, AFileThatShrankDuringTheUploadEndsItAtOnce) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", longByteCount);
  ScriptedServer server;
  server.onConnection([&file](Connection& connection) {
    connection.readHead();
    connection.send(continueText);
    connection.readBody(mebibyte);
    std::filesystem::resize_file(file, mebibyte);
    connection.readBody();
    connection.send(storedText);
  });
  auto put = storeRequest(server.address(), longByteCount);
  put.timeoutSeconds = 3600;
  const Outcome outcome = RunningTask::upload(put, file).wait();
  EXPECT_EQ(outcome.errorName(), "cannotReadFile");
  EXPECT_FALSE(outcome.response);
}

TEST_F(URLSessionUploadTest, AFileThatVanishesAmidTheUploadStillArrives) {
  const TemporaryFolder folder;
  constexpr std::uint64_t byteCount = 12 * mebibyte;
  const auto file = folder.writePattern("file", byteCount);
  ScriptedServer server;
  server.onConnection([&file](Connection& connection) {
    connection.readHead();
    std::filesystem::remove(file);
    connection.send(continueText);
    connection.readBody();
    connection.send(storedText);
  });
  EXPECT_EQ(upload(server.address(), file).status(), 200);
  EXPECT_TRUE(server.requests().at(0).body == patternedBytes(byteCount));
}

TEST_F(URLSessionUploadTest, OnlyARegularFileOfTheAnnouncedLengthIsSent) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 100);
  std::filesystem::create_symlink(file, folder / "link");
  std::filesystem::create_symlink(folder / "missing", folder / "dangling");
  std::filesystem::create_directory(folder / "folder");
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strncpy(address.sun_path, (folder / "socket").c_str(), sizeof(address.sun_path) - 1);
  ASSERT_EQ(::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);

  struct Row {
    std::filesystem::path path;
    std::uint64_t announcedByteCount;
    const char* errorName;
  };
  const std::vector<Row> rows = {
      {folder / "link", 100, "none"},
      {file, 0, "none"},
      {file, 101, "cannotReadFile"},
      {folder / "missing", 100, "cannotReadFile"},
      {folder / "dangling", 100, "cannotReadFile"},
      {folder / "folder", 0, "cannotReadFile"},
      {folder / "fifo", 0, "cannotReadFile"},
      {folder / "socket", 0, "cannotReadFile"},
      {"/dev/zero", 100, "cannotReadFile"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path.filename().string() + " " + std::to_string(row.announcedByteCount));
    ScriptedServer server;
    const Outcome outcome =
        RunningTask::upload(storeRequest(server.address(), row.announcedByteCount), row.path)
            .wait();
    EXPECT_EQ(outcome.errorName(), row.errorName);
    const bool isSent = outcome.error == nullptr;
    EXPECT_EQ(server.connectionCount(), isSent ? 1u : 0u);
    if (isSent) {
      EXPECT_EQ(server.requests().at(0).bodyByteCount, row.announcedByteCount);
    }
  }
}

TEST_F(URLSessionUploadTest, AnUploadWithoutAnnouncedLengthSendsTheWholeFile) {
  const TemporaryFolder folder;
  const auto file = folder.writePattern("file", 1000);
  ScriptedServer server;
  EXPECT_EQ(RunningTask::upload(request("PUT", server.address()), file).wait().status(), 200);
  EXPECT_EQ(server.requests().at(0).fields("Content-Length"), std::vector<std::string>{"1000"});
  EXPECT_EQ(server.requests().at(0).body, patternedBytes(1000));
}

TEST_F(URLSessionUploadTest, AConnectionThatBreaksAmidTheBodyIsAnErrorAndNoSignal) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", longByteCount);
  // Whoever started the tests may have had it ignored.
  std::signal(SIGPIPE, SIG_DFL);
  struct Row {
    const char* name;
    std::optional<TestCertificates::Server> certificate;
    std::function<void(Connection&)> end;
  };
  const std::vector<Row> rows = {
      {"reset", TestCertificates::Server::trusted, &Connection::reset},
      {"closed", TestCertificates::Server::trusted, &Connection::close},
      {"reset, plain", ScriptedServer::plain, &Connection::reset},
      {"closed, plain", ScriptedServer::plain, &Connection::close},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedServer server(row.certificate);
    server.onConnection([&row](Connection& connection) {
      connection.readHead();
      connection.send(continueText);
      connection.readBody(100'000);
      row.end(connection);
    });
    for (int round = 0; round < 5; ++round) {
      const Outcome outcome = upload(server.address(), file);
      EXPECT_EQ(outcome.errorName(), "networkConnectionLost");
      EXPECT_FALSE(outcome.response);
    }
  }
}

}  // namespace
}  // namespace quillbay::test
