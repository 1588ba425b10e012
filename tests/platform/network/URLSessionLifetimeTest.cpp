#include "NetworkTest.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <latch>
#include <set>

namespace quillbay::test {
namespace {

using platform::URLSession;

using URLSessionLifetimeTest = NetworkTest;

/// The numbers that name the entries of a folder of /proc/self.
std::set<int> numbersIn(const char* folder) {
  std::set<int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    numbers.insert(std::stoi(entry.path().filename()));
  }
  return numbers;
}

/// What the parent of this process left open.
const std::set<int> inheritedDescriptors = numbersIn("/proc/self/fd");

/// The line of a status file of /proc that begins with `key`; "" if its thread has ended.
std::string statusLine(const std::string& path, std::string_view key) {
  std::ifstream status(path);
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key)) return line;
  }
  return "";
}

/// Not libcurl's own wake-up pair, over which its user has no say.
bool isAnonymousPair(int descriptor) {
  int domain = 0;
  socklen_t byteCount = sizeof(domain);
  return ::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &byteCount) == 0 &&
         domain == AF_UNIX;
}

TEST_F(URLSessionLifetimeTest, CompletionsComeOneAtATimeAndHoldUpNoOtherSession) {
  constexpr int taskCount = 5;
  std::latch release(1);
  std::atomic<int> insideCount = 0;
  std::atomic<int> overlapCount = 0;
  std::atomic<int> endedCount = 0;
  server_.onRequest([](const Request& got) {
    return Reply{.body = std::string(got.target() == "/large" ? mebibyte : 1, ' ')};
  });
  const auto slow = URLSession::create();
  for (int index = 0; index < taskCount; ++index) {
    const auto completion = [&](auto&&...) {
      if (++insideCount > 1) ++overlapCount;
      release.wait();
      --insideCount;
      ++endedCount;
    };
    // What is small waits its turn all the same.
    const char* target = index == 0 ? "/large" : "/small";
    slow->dataTask(request("GET", server_.address(target)), completion)->resume();
    EXPECT_TRUE(waitUntil([&] { return insideCount > 0; }));
  }
  EXPECT_EQ(get(server_.address()).status(), 200);
  EXPECT_EQ(endedCount, 0);
  release.count_down();
  EXPECT_TRUE(waitUntil([&] { return endedCount == taskCount; }));
  EXPECT_EQ(overlapCount, 0);
}

TEST_F(URLSessionLifetimeTest, ExitMayBeCalledByAHandlerOnTheNetworkThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto exitInHandler = [this] {
    alarm(10);
    const auto get = request("GET", server_.address());
    URLSession::shared().dataTask(get, [](auto&&...) { std::exit(7); })->resume();
    platform::runMainQueue();
  };
  EXPECT_EXIT(exitInHandler(), testing::ExitedWithCode(7), "");
}

TEST_F(URLSessionLifetimeTest, WhatAHandlerHoldsIsReleasedOnTheMainQueue) {
  for (const std::string& address : {server_.address(), std::string("file:///refused")}) {
    SCOPED_TRACE(address);
    std::atomic<std::thread::id> releasedOn;
    std::shared_ptr<void> token(nullptr, [&](void*) { releasedOn = std::this_thread::get_id(); });
    URLSession::create()
        ->dataTask(request("GET", address), [token = std::move(token)](auto&&...) {})
        ->resume();
    EXPECT_TRUE(waitUntil([&] { return releasedOn.load() != std::thread::id(); }));
    EXPECT_EQ(releasedOn.load(), std::this_thread::get_id());
  }
}

/// What a guest must not change: locale, environment, umask, and the process's and this thread's
/// signals.
std::vector<std::string> processState() {
  std::vector<std::string> state = {std::setlocale(LC_ALL, nullptr)};
  for (char** entry = environ; *entry != nullptr; ++entry) state.emplace_back(*entry);
  for (const char* key : {"Umask", "SigBlk", "SigIgn", "SigCgt"}) {
    state.push_back(statusLine("/proc/self/status", key));
  }
  return state;
}

TEST_F(URLSessionLifetimeTest, AnUploadTakesNoSignalsLeavesNothingToInheritAndChangesNoSetting) {
  const auto stateBefore = processState();
  server_.onConnection(stallUpload);
  // By way of a host's name.
  RunningTask running(storeRequest(server_.address("/", "localhost"), longByteCount),
                      folder_.writeSparse("stalled", longByteCount));
  EXPECT_TRUE(waitUntil([&] { return running.progress()->fractionCompleted() > 0; }));
  for (const int thread : numbersIn("/proc/self/task")) {
    if (thread == ::getpid()) continue;
    const std::string line =
        statusLine("/proc/self/task/" + std::to_string(thread) + "/status", "SigBlk:");
    if (line.empty()) continue;
    const std::uint64_t blocked = std::stoull(line.substr(8), nullptr, 16);
    for (const int signal : {SIGPIPE, SIGINT, SIGTERM, SIGALRM, SIGCHLD}) {
      EXPECT_TRUE(blocked >> (signal - 1) & 1) << "thread " << thread << ", signal " << signal;
    }
  }
  bool isFileOpen = false;
  for (const int descriptor : numbersIn("/proc/self/fd")) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags < 0 || inheritedDescriptors.contains(descriptor)) continue;
    std::error_code ignored;
    const auto target =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), ignored);
    isFileOpen = isFileOpen || target == folder_ / "stalled";
    EXPECT_TRUE((flags & FD_CLOEXEC) != 0 || isAnonymousPair(descriptor)) << target;
  }
  EXPECT_TRUE(isFileOpen);
  server_.stop();
  EXPECT_EQ(running.wait().code(), Code::networkConnectionLost);
  EXPECT_EQ(processState(), stateBefore);
}

}  // namespace
}  // namespace quillbay::test
