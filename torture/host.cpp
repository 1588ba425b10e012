// torture-host MODE NUMBER FILE...: a host that shares the files and is disturbed on the way.
// Prints how the share ended, "-" if it did not end. Its exit status is 0 unless it met a fault.
//
// NUMBER is the moment of the disturbance in microseconds after the start of the share; in the
// modes of scarce resources, how many of them there are before none is left.

#include <QuillbayCloud/QuillbayCloud.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "ThreadLimit.h"

namespace {

using namespace quillbay;
using std::chrono::microseconds;

enum Fault { endedTwice = 20, endedNever, notRecovered, childFailed, wrongUsage };

constexpr const char* kSuccess = "success";
constexpr auto kBound = std::chrono::seconds(8);

/// Never destroyed: another thread may end the process while a share is started.
std::vector<platform::URL>& files = *new std::vector<platform::URL>;

const char* name(const cloud::QuillbayCloudError& error) {
  constexpr const char* kNames[] = {
      "aws",          "webservice",        "underlying", "invalidFile", "invalidResponse",
      "missingItems", "fingerprintFailure"};
  return kNames[error.value().index()];
}

/// One share; never destroyed, as its callback may come while the process ends.
struct Share {
  std::shared_ptr<cloud::SessionController> controller;
  std::atomic<const char*> outcome = nullptr;

  void start() {
    controller = cloud::SessionController::create({"torture-host", files},
                                                  cloud::SessionConfiguration::default_());
    controller->createSession([this](std::expected<cloud::Session, cloud::QuillbayCloudError> end) {
      if (outcome.exchange(end ? kSuccess : name(end.error())) != nullptr) ::_exit(endedTwice);
    });
  }

  bool hasEnded() const { return outcome != nullptr; }

  void runToItsEnd() {
    if (!platform::runMainQueue([this] { return hasEnded(); }, kBound)) ::_exit(endedNever);
    runMainQueueFor(std::chrono::milliseconds(30));  // for a second outcome
  }

  static void runMainQueueFor(std::chrono::milliseconds bound) {
    platform::runMainQueue([] { return false; }, bound);
  }
};

Share& share = *new Share;

void runMainQueueUntil(microseconds moment) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + moment;
  platform::runMainQueue([=] { return Clock::now() >= end; },
                         std::chrono::ceil<std::chrono::milliseconds>(moment));
}

void returnFromMain(microseconds moment) {
  share.start();
  runMainQueueUntil(moment);
}

void exitHere(microseconds moment) {
  returnFromMain(moment);
  std::exit(EXIT_SUCCESS);
}

void exitElsewhere(microseconds moment) {
  std::thread([=] {
    std::this_thread::sleep_for(moment);
    std::exit(EXIT_SUCCESS);
  }).detach();
  share.start();
  platform::runMainQueue();
}

void release(microseconds moment) {
  returnFromMain(moment);
  share.controller.reset();
  Share::runMainQueueFor(std::chrono::milliseconds(20));
}

void cancel(microseconds moment) {
  returnFromMain(moment);
  share.controller->cancel();
  Share::runMainQueueFor(std::chrono::milliseconds(20));
}

[[noreturn]] void beChild() {
  ::alarm(5);
  cloud::SessionController::deleteSession("session", "torture-host", "token", [](auto&&) {});
  (new Share)->start();
  Share::runMainQueueFor(std::chrono::milliseconds(5));
  std::exit(EXIT_SUCCESS);
}

/// The share runs on another thread, so that the fork can fall into anything's first use.
void forkInBetween(microseconds moment) {
  std::thread sharing([] {
    share.start();
    share.runToItsEnd();
  });
  std::this_thread::sleep_for(moment);
  const pid_t child = ::fork();
  if (child == 0) beChild();
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) ::_exit(childFailed);
  sharing.join();
}

/// With the resource short, the share ends once, whatever its outcome. With the resource back, the
/// next one succeeds.
template <class Shortage>
void runShort(int count) {
  {
    const Shortage shortage(count);
    share.start();
    share.runToItsEnd();
  }
  Share& next = *new Share;
  next.start();
  next.runToItsEnd();
  if (next.outcome != kSuccess) ::_exit(notRecovered);
}

/// While it lives, this process can have so many more descriptors at a time.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(int count) {
    const int lowestFree = ::dup(STDOUT_FILENO);
    ::close(lowestFree);
    ::getrlimit(RLIMIT_NOFILE, &previous_);
    const rlimit limit = {static_cast<rlim_t>(lowestFree + count), previous_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit previous_;
};

struct Mode {
  std::string_view name;
  void (*run)(int number);
};

template <void (*Run)(microseconds)>
void at(int number) {
  Run(microseconds(number));
}

constexpr Mode kModes[] = {
    {"return", at<returnFromMain>},
    {"exit", at<exitHere>},
    {"exit-elsewhere", at<exitElsewhere>},
    {"fork", at<forkInBetween>},
    {"release", at<release>},
    {"cancel", at<cancel>},
    {"threads", runShort<test::ThreadLimit>},
    {"descriptors", runShort<DescriptorLimit>},
};

}  // namespace

/// Asked by the leak checker, where there is one: a process that ends midway leaves what it held.
extern "C" int __lsan_is_turned_off() { return 1; }

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) return wrongUsage;
  const char* route = std::getenv("QUILLBAY_CONNECT_TO");
  const char* authority = std::getenv("QUILLBAY_CACERT");
  if (route == nullptr || authority == nullptr) return wrongUsage;
  platform::NetworkSettings::set({{route}, authority, ""});
  for (int i = 3; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));
  static const pid_t mainProcess = ::getpid();
  std::atexit([] {
    if (::getpid() == mainProcess) std::puts(share.hasEnded() ? share.outcome.load() : "-");
  });

  const std::string_view mode = arguments[1];
  for (const Mode& each : kModes) {
    if (each.name != mode) continue;
    each.run(std::atoi(arguments[2]));
    return EXIT_SUCCESS;
  }
  return wrongUsage;
}
