#include "NetworkTest.h"
#include "ScriptedServer.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <clocale>
#include <csignal>
#include <fstream>
#include <set>
#include <thread>

extern char** environ;

namespace quillbay::test {
namespace {

using platform::URLSession;

using URLSessionLifetimeTest = NetworkTest;

constexpr std::uint64_t mebibyte = 1024 * 1024;

/// The numbers that name the entries of a folder of /proc/self.
std::set<int> numbersIn(const char* folder) {
  std::set<int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    int number = -1;
    std::from_chars(name.data(), name.data() + name.size(), number);
    numbers.insert(number);
  }
  return numbers;
}

/// What whoever started this process left open.
const std::set<int> inheritedDescriptors = numbersIn("/proc/self/fd");

std::uint64_t blockedSignals(int thread) {
  std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
  const std::string_view key = "SigBlk:\t";
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key)) return std::stoull(line.substr(key.size()), nullptr, 16);
  }
  return ~std::uint64_t{0};  // the thread has ended
}

/// Not libcurl's own wake-up pair, over which its user has no say.
bool isAnonymousPair(int descriptor) {
  int domain = 0;
  socklen_t byteCount = sizeof(domain);
  return ::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &byteCount) == 0 &&
         domain == AF_UNIX;
}

/// A server that takes the beginning of an upload and then nothing more.
void stallUploads(ScriptedServer& server) {
  server.onConnection([](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 100 Continue\r\n\r\n");
    connection.readBody(mebibyte);
    connection.waitFor(Gate());
  });
}

TEST_F(URLSessionLifetimeTest, CompletionsOfASessionComeOneAtATime) {
  ScriptedServer server;
  std::atomic<int> insideCount = 0;
  std::atomic<int> overlapCount = 0;
  std::atomic<int> endedCount = 0;
  const auto session = URLSession::create();
  constexpr int taskCount = 20;
  for (int index = 0; index < taskCount; ++index) {
    session
        ->dataTask(request("GET", server.address()),
                   [&](auto&&...) {
                     if (++insideCount > 1) ++overlapCount;
                     std::this_thread::yield();
                     --insideCount;
                     ++endedCount;
                   })
        ->resume();
  }
  EXPECT_TRUE(waitUntil([&] { return endedCount == taskCount; }));
  EXPECT_EQ(overlapCount, 0);
}

TEST_F(URLSessionLifetimeTest, ACompletionThatTakesLongHoldsUpNoOtherSession) {
  ScriptedServer server;
  Gate release;
  std::atomic<bool> isInside = false;
  std::atomic<bool> isOver = false;
  const auto slow = URLSession::create();
  slow->dataTask(request("GET", server.address()),
                 [&](auto&&...) {
                   isInside = true;
                   pollfd poll{release.descriptor(), POLLIN, 0};
                   ::poll(&poll, 1, static_cast<int>(generousBound().count()));
                   isOver = true;
                 })
      ->resume();
  ASSERT_TRUE(waitUntil([&] { return isInside.load(); }));
  EXPECT_EQ(perform(request("GET", server.address())).status(), 200);
  EXPECT_FALSE(isOver);
  release.open();
  EXPECT_TRUE(waitUntil([&] { return isOver.load(); }));
}

TEST_F(URLSessionLifetimeTest, WhatAHandlerHoldsIsReleasedOnTheMainQueue) {
  struct Token {
    std::atomic<bool>& isReleased;
    std::thread::id& thread;
    ~Token() {
      thread = std::this_thread::get_id();
      isReleased = true;
    }
  };
  ScriptedServer server;
  for (const std::string& address : {server.address(), std::string("file:///refused")}) {
    SCOPED_TRACE(address);
    std::atomic<bool> isReleased = false;
    std::thread::id thread;
    URLSession::create()
        ->dataTask(request("GET", address),
                   [token = std::unique_ptr<Token>(new Token{isReleased, thread})](auto&&...) {})
        ->resume();
    EXPECT_TRUE(waitUntil([&] { return isReleased.load(); }));
    EXPECT_EQ(thread, std::this_thread::get_id());
  }
}

TEST_F(URLSessionLifetimeTest, ATaskRunsOnceFromItsFirstResumeAndNeedsNobody) {
  ScriptedServer server;
  std::atomic<int> callCount = 0;
  {
    const auto session = URLSession::create();
    const auto never = session->dataTask(request("GET", server.address("/never")),
                                         [&](auto&&...) { callCount += 100; });
    const auto task =
        session->dataTask(request("GET", server.address("/once")), [&](auto&&...) { ++callCount; });
    task->resume();
    task->resume();
  }
  EXPECT_TRUE(waitUntil([&] { return callCount > 0; }));
  EXPECT_EQ(perform(request("GET", server.address("/after"))).status(), 200);
  EXPECT_EQ(callCount, 1);
  EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(URLSessionLifetimeTest, ACompletionMayStartTheNextTask) {
  ScriptedServer server;
  std::atomic<bool> isDone = false;
  const auto session = URLSession::create();
  session
      ->dataTask(request("GET", server.address("/1")),
                 [&](auto&&...) {
                   session
                       ->dataTask(request("GET", server.address("/2")),
                                  [&](auto&&...) { isDone = true; })
                       ->resume();
                 })
      ->resume();
  EXPECT_TRUE(waitUntil([&] { return isDone.load(); }));
  EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(URLSessionLifetimeTest, TheHostsSignalsNeverLandOnAThreadOfOurs) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", 64 * mebibyte);
  ScriptedServer server;
  stallUploads(server);
  auto put = storeRequest(server.address("/", "localhost"), 64 * mebibyte);
  auto running = RunningTask::upload(put, file);
  ASSERT_TRUE(waitUntil([&] { return running.progress().fractionCompleted() > 0; }));
  for (const int thread : numbersIn("/proc/self/task")) {
    if (thread == ::getpid()) continue;
    const std::uint64_t blocked = blockedSignals(thread);
    for (const int signal :
         {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGPROF}) {
      EXPECT_TRUE(blocked >> (signal - 1) & 1) << "thread " << thread << ", signal " << signal;
    }
  }
  server.stop();
  EXPECT_EQ(running.wait().errorName(), "networkConnectionLost");
}

TEST_F(URLSessionLifetimeTest, NothingThatIsOpenReachesAProgramThatTheHostStarts) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", 64 * mebibyte);
  ScriptedServer server;
  stallUploads(server);
  auto put = storeRequest(server.address("/", "localhost"), 64 * mebibyte);
  auto running = RunningTask::upload(put, file);
  ASSERT_TRUE(waitUntil([&] { return running.progress().fractionCompleted() > 0; }));
  bool isFileOpen = false;
  for (const int descriptor : numbersIn("/proc/self/fd")) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags < 0 || inheritedDescriptors.contains(descriptor)) continue;
    std::error_code ignored;
    const auto target =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), ignored);
    isFileOpen = isFileOpen || target == file;
    EXPECT_TRUE((flags & FD_CLOEXEC) != 0 || isAnonymousPair(descriptor)) << target;
  }
  EXPECT_TRUE(isFileOpen);
  server.stop();
  running.wait();
}

TEST_F(URLSessionLifetimeTest, TheProcessIsLeftAsItWas) {
  const auto handlers = [] {
    std::vector<void*> values;
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
      struct sigaction action{};
      ::sigaction(signal, nullptr, &action);
      values.push_back(reinterpret_cast<void*>(action.sa_handler));
    }
    return values;
  };
  const auto environment = [] {
    std::vector<std::string> values;
    for (char** entry = environ; *entry != nullptr; ++entry) values.emplace_back(*entry);
    return values;
  };
  const auto mask = [] {
    const mode_t value = ::umask(0);
    ::umask(value);
    return value;
  };
  const auto handlersBefore = handlers();
  const auto environmentBefore = environment();
  const auto maskBefore = mask();
  const auto blockedBefore = blockedSignals(::getpid());
  const std::string localeBefore = std::setlocale(LC_ALL, nullptr);

  const TemporaryFolder folder;
  ScriptedServer server;
  EXPECT_EQ(upload(server.address(), folder.writePattern("file", 1000)).status(), 200);
  EXPECT_EQ(perform(request("POST", server.address("/", "localhost"))).status(), 200);

  EXPECT_EQ(handlers(), handlersBefore);
  EXPECT_EQ(environment(), environmentBefore);
  EXPECT_EQ(mask(), maskBefore);
  EXPECT_EQ(blockedSignals(::getpid()), blockedBefore);
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), localeBefore);
}

/// Runs the guest program to its end; its wait status, or nothing if it hung and was killed.
std::optional<int> runGuest(const char* mode, const std::string& address,
                            const std::filesystem::path& file) {
  const std::string authority = TestCertificates::shared().authorityPath();
  std::vector<std::string> arguments = {NETWORK_GUEST, mode, address, authority, file};
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  if (::posix_spawn(&process, NETWORK_GUEST, nullptr, nullptr, pointers.data(), environ) != 0) {
    return std::nullopt;
  }
  const FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  pollfd ended{handle.get(), POLLIN, 0};
  const bool hasEnded = ::poll(&ended, 1, static_cast<int>(generousBound().count())) == 1;
  if (!hasEnded) ::kill(process, SIGKILL);
  int status = 0;
  ::waitpid(process, &status, 0);
  return hasEnded ? std::optional(status) : std::nullopt;
}

TEST_F(URLSessionLifetimeTest, AHostThatExitsAmidAnUploadEndsCleanlyAndItsTasksEndOnce) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", 4096 * mebibyte);
  ScriptedServer stalled;
  stallUploads(stalled);
  ScriptedServer reading;
  ScriptedServer silent(ScriptedServer::plain);
  silent.onConnection([](Connection& connection) { connection.waitFor(Gate()); });
  const std::string silentAddress = "https://127.0.0.1:" + std::to_string(silent.port()) + "/";
  struct Row {
    const char* mode;
    std::string address;
    int roundCount;
  };
  const std::vector<Row> rows = {
      {"exit", reading.address(), 20},    {"exit", stalled.address(), 5},
      {"return", reading.address(), 5},   {"exit-at-once", reading.address(), 10},
      {"exit-at-once", silentAddress, 3},
  };
  for (const Row& row : rows) {
    for (int round = 0; round < row.roundCount; ++round) {
      ASSERT_EQ(runGuest(row.mode, row.address, file), 0)
          << row.mode << " " << row.address << ", round " << round;
    }
  }
}

TEST_F(URLSessionLifetimeTest, AForkedChildDoesNothingAndEndsAtOnce) {
  const TemporaryFolder folder;
  const auto file = folder.writeSparse("file", 64 * mebibyte);
  ScriptedServer server;
  stallUploads(server);
  EXPECT_EQ(runGuest("fork", server.address(), file), 0);
}

}  // namespace
}  // namespace quillbay::test
