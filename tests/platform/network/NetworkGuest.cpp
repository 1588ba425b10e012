// A program that ends, or forks, while the network is at work for it. If it finds something wrong,
// it says so and has an exit status.
//
//   NetworkGuest exit-at-once|exit|fork|fork-idle|fork-unused ADDRESS AUTHORITY FILE

#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/URLSession.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <latch>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace quillbay::platform;

[[noreturn]] void fail(const char* why) {
  std::fputs(why, stderr);
  ::_exit(1);
}

constexpr int taskCount = 3;
std::atomic<int> callCounts[taskCount];
const pid_t mainProcess = ::getpid();

/// Registered before the network is first used, hence called after it has ended.
void checkThatNoTaskEndedTwice() {
  for (const auto& count : callCounts) {
    if (count > 1) fail("a task ended twice");
  }
}

auto threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

std::shared_ptr<URLSessionTask> startUpload(const char* address, const char* file,
                                            std::atomic<int>& count) {
  const URLRequest request("PUT", URL::parse(address).value());
  auto task = URLSession::create()->uploadTask(request, URL::fileURL(file),
                                               [&count](auto&&...) { ++count; });
  task->resume();
  return task;
}

/// Ends as the child of a process that has used the queues. In this process none is at work.
[[noreturn]] void beChild(const char* address, const char* file, DispatchQueue& serial) {
  static std::atomic<int> count = 0;
  const auto initialThreadCount = threadCount();  // a sanitizer may have one
  startUpload(address, file, count);
  URLSession::shared()
      .dataTask(URLRequest("DELETE", URL::parse(address).value()), [](auto&&...) { ++count; })
      ->resume();
  const auto own = DispatchQueue::makeSerial();
  for (auto* queue :
       {&DispatchQueue::main(), &DispatchQueue::globalUserInitiated(), &serial, own.get()}) {
    queue->async([] { fail("the child runs work"); });
  }
  if (threadCount() > initialThreadCount) fail("the child has started a thread");
  setMainQueuePoster(nullptr);
  stopMainQueue();
  runMainQueue([] { return count > 0; }, std::chrono::milliseconds(50));
  if (count > 0) fail("the child was called back");
  std::exit(0);
}

void await(pid_t child) {
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) fail("the child failed");
}

void forkBusy(const char* address, const char* file) {
  const auto serial = DispatchQueue::makeSerial();
  // So that the forks come upon any state of the queues.
  const std::jthread busy([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      std::latch ran(2);
      DispatchQueue::main().async([] {});
      DispatchQueue::globalUserInitiated().async([&] { ran.count_down(); });
      serial->async([&] { ran.count_down(); });
      ran.wait();
    }
  });
  for (int round = 0; round < 3; ++round) {
    const pid_t child = ::fork();
    if (child == 0) beChild(address, file, *serial);
    await(child);
  }
}

}  // namespace

/// Asked by the leak checker, where there is one. A forked child leaves all as it found it.
extern "C" int __lsan_is_turned_off() { return ::getpid() != mainProcess; }

int main(int, char** arguments) {
  const std::string_view mode = arguments[1];
  const char* const address = arguments[2];
  const char* const file = arguments[4];
  NetworkSettings settings;
  settings.caBundlePath = arguments[3];
  NetworkSettings::set(settings);
  if (threadCount() != 1) fail("a thread before the first use");

  if (mode == "fork-idle") DispatchQueue::main().async([] {});
  if (mode == "fork-idle" || mode == "fork-unused") {
    if (const pid_t child = ::fork()) {
      await(child);
      return 0;
    }
    if (mode == "fork-idle") beChild(address, file, DispatchQueue::main());
    // A child of a process that has used nothing lives on like any other.
  }
  std::atexit(checkThatNoTaskEndedTwice);
  std::vector<std::shared_ptr<URLSessionTask>> tasks;
  for (auto& count : callCounts) tasks.push_back(startUpload(address, file, count));
  if (mode == "exit-at-once") return 0;

  const auto isMoving = [&] { return tasks.back()->progress()->fractionCompleted() > 0; };
  if (!runMainQueue(isMoving, std::chrono::seconds(10))) fail("no progress");
  if (mode == "fork") forkBusy(address, file);
  std::exit(0);
}
