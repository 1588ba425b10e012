#include <ChildProcess.h>
#include <sys/resource.h>

#include <csignal>

#include "sandbox/http/ConnectionThreads.h"
#include "sandbox/http/OpenConnections.h"
#include "sandbox/model/SessionStore.h"
#include "sandbox/support/Files.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

using Server = RunningSandbox;

auto countEntries(const std::filesystem::path& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// While it lives, no file of this process grows beyond it.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t byteCount) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &previous_);
    const rlimit limit = {byteCount, previous_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &previous_); }

 private:
  rlimit previous_;
};

TEST_F(Server, KeepsSessionsUploadsAndAuthorityOverARestart) {
  const json session =
      createSession({letter, letter, letter}, {{"title", "Post"}, {"p", "Z2VoZWlt"}});
  upload(session, 0, letter);
  const auto stored = put(uploadTarget(session, 1), letter);
  RawClient half(server_->port(), uploadHead(uploadTarget(session, 2), 8) + "Dear");
  const std::string authority = readFile(server_->authorityFile());
  restart();
  EXPECT_EQ(readFile(server_->authorityFile()), authority);
  const auto reply = finalize(session, 1, stored->get_header_value("ETag"));
  const json after = json::parse(reply->body);
  EXPECT_EQ(after["title"], "Post");
  EXPECT_EQ(after["items"][0]["is_uploaded"], true);
  EXPECT_EQ(after["items"][1]["is_uploaded"], true);
  EXPECT_EQ(after["items"][2]["is_uploaded"], false);
  // A client continues with the last item, and with others if it does not know that they are here.
  for (const std::size_t item : {2, 1, 0}) upload(session, item, letter);
  EXPECT_EQ(client_->Get(linkOf(session))->status, 403);
}

TEST_F(Server, WritesNoTokenOrPasswordToDiskAndKeepsItsKeysToItself) {
  const json session = createSession({letter}, {{"p", "dmVyeSBzZWNyZXQ="}});  // "very secret"
  std::string text;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
    if (!entry.is_regular_file()) continue;
    text += readFile(entry.path());
    using std::filesystem::perms;
    const bool isPrivate =
        (entry.status().permissions() & (perms::group_all | perms::others_all)) == perms::none;
    EXPECT_TRUE(isPrivate || entry.path().extension() != ".key") << entry.path();
  }
  EXPECT_TRUE(text.contains("letter.txt"));
  EXPECT_FALSE(text.contains(session["token"].get<std::string>()));
  EXPECT_FALSE(text.contains("very secret"));
  EXPECT_FALSE(text.contains("dmVyeSBzZWNyZXQ="));
}

TEST_F(Server, SurvivesAJournalLineThatWasCutShort) {
  const json session = createSession({letter, letter, letter});
  upload(session, 0, letter);
  const auto journal = folder_ / "sessions" / session["id"].get<std::string>() / "journal.jsonl";
  writeFileAtomically(journal, readFile(journal) + "{\"item\":1,\"fin");
  restart();
  upload(session, 1, letter);
  {
    const FileSizeLimit fullDisk(std::filesystem::file_size(journal) + 10);
    EXPECT_EQ(outcome(put(uploadTarget(session, 2), letter)), "500 InternalError");
    EXPECT_EQ(countEntries(journal.parent_path() / "objects"), 2);
  }
  upload(session, 2, letter);
  restart();
  const auto page = client_->Get(linkOf(session));
  EXPECT_EQ(page->status, 200);
  EXPECT_FALSE(page->body.contains("on its way"));
}

TEST(SessionStore, FreesTheSpaceOfExpiredSessionsAndForgetsThemInTheEnd) {
  TemporaryFolder folder;
  SessionStore sessions(folder.path(), [](const std::string& warning) { FAIL() << warning; });
  const Instant now = systemTime();
  CreateRequest request;
  request.expiration = now + std::chrono::hours(1);
  const auto session = sessions.create(makeSession("test", request).record);
  const auto objects = folder / session->record().identifier / "objects";
  sessions.sweep(now);
  EXPECT_TRUE(std::filesystem::exists(objects));
  sessions.sweep(now + std::chrono::hours(2));
  EXPECT_FALSE(std::filesystem::exists(objects));
  EXPECT_NE(sessions.findBySlug(session->record().slug), nullptr);
  sessions.sweep(now + std::chrono::days(40));
  EXPECT_EQ(sessions.findBySlug(session->record().slug), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(Server, SharesNeitherItsFolderNorItsPort) {
  EXPECT_THROW(SandboxServer({.dataFolder = folder_.path()}), std::exception);
  TemporaryFolder other;
  EXPECT_THROW(SandboxServer({.port = server_->port(), .dataFolder = other.path()}),
               std::exception);
}

TEST_F(Server, GivesTheThreadOfAnIdleConnectionToAClientThatWaits) {
  restart(4);
  const std::string request = "GET /s/x HTTP/1.1\r\nHost: x\r\n\r\n";
  std::deque<RawClient> clients;
  for (int i = 0; i < 12; ++i) {
    clients.emplace_back(server_->port(), request);
    EXPECT_TRUE(clients.back().receiveUntil("</html>\n").starts_with("HTTP/1.1 404 ")) << i;
  }
  // Those that were used last still have theirs.
  clients.back().send(request);
  EXPECT_TRUE(clients.back().receiveUntil("</html>\n").starts_with("HTTP/1.1 404 "));
  EXPECT_EQ(clients.front().receiveAll(), "");
}

TEST_F(Server, RefusesAHeadThatItCouldMisread) {
  const std::string request = "POST /cloud/x/session HTTP/1.1\r\n";
  const std::string heads[] = {request + "Content-Length : 5",
                               request + "Content-Length: 5x",
                               request + "Content-Length: 0\r\nContent-Length: 0",
                               request + "Transfer-Encoding: ",
                               request + "no colon",
                               request + "X: a\x01",
                               request + "X: y\nY: z",
                               "GET /\xC3 HTTP/1.1"};
  for (const std::string& head : heads) {
    RawClient client(server_->port(), head + "\r\n\r\nGET /next HTTP/1.1\r\n\r\n");
    const std::string replies = client.receiveAll();
    EXPECT_TRUE(replies.starts_with("HTTP/1.1 400 ")) << head << replies;
    EXPECT_EQ(replies.rfind("HTTP/1.1"), 0) << head;
  }
}

TEST(Log, TellsOfAFailedHandshake) {
  const TemporaryFolder folder;
  std::promise<std::string> line;
  SandboxServer server(
      {.dataFolder = folder.path(), .log = [&](const std::string& text) { line.set_value(text); }});
  server.start();
  httplib::Client("localhost", server.port()).Get("/");
  auto logged = line.get_future();
  ASSERT_EQ(logged.wait_for(test::generousBound()), std::future_status::ready);
  EXPECT_TRUE(logged.get().ends_with("TLS handshake failed: http request"));
}

TEST(OpenConnections, ClosesTheNextIdleOneForAClientThatFoundNone) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const FileDescriptor socket(ends[0]);
  const FileDescriptor peer(ends[1]);
  OpenConnections connections;
  OpenConnections::Entry entry(connections, socket.get());
  char byte = 0;
  entry.endIdling();
  connections.makeRoom();
  EXPECT_EQ(::recv(socket.get(), &byte, 1, MSG_DONTWAIT), -1) << "closed while it is in use";
  entry.beginIdling();
  EXPECT_EQ(::recv(socket.get(), &byte, 1, MSG_DONTWAIT), 0);
}

TEST(ConnectionThreads, EndsThreadsWithoutConnections) {
  ConnectionThreads threads(3, std::chrono::milliseconds(1), [] {});
  std::promise<void> end;
  const std::shared_future<void> stop = end.get_future().share();
  for (int i = 0; i < 3; ++i) threads.enqueue([stop] { stop.wait(); });
  EXPECT_EQ(threads.threadCount(), 3u);
  end.set_value();
  EXPECT_TRUE(test::waitUntil([&] { return threads.threadCount() == 0; }));
  threads.shutdown();
}

TEST(Program, AnnouncesItselfAndStopsOnASignalWithConnectionsOpen) {
  const TemporaryFolder folder;
  const std::regex announcement(
      "export QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:(\\d+)\n"
      "export QUILLBAY_CACERT='/.*/it'\\\\''s data/tls/ca.pem'\n");
  for (const int number : {SIGINT, SIGTERM}) {
    test::ChildProcess program(folder.path(),
                               "'" QUILLBAY_SANDBOX_PROGRAM
                               "' --port 0 --data \"$PWD/it's data\" --ready-file ready");
    std::string text;
    std::smatch port;
    ASSERT_TRUE(program.waitUntil([&] {
      text = program.output();
      return std::regex_match(text, port, announcement);
    })) << text
        << program.error();
    EXPECT_EQ(readFile(folder / "ready"), text);
    const RawClient client(std::stoi(port.str(1)));
    program.signal(number);
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "ready"));
  }
}

}  // namespace
}  // namespace quillbay::sandbox
