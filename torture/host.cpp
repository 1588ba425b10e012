// torture-host MODE NUMBER FILE...: a host that shares the files and is disturbed on the way.
// Prints how the share ended, "-" if it did not end. Its exit status is 0 unless it met a fault.
//
// NUMBER is the moment of the disturbance in microseconds after the start of the share, or -1: once
// an upload moves; in the modes of scarce resources, how many of them there are before none is
// left.

#include <QuillbayCloud/QuillbayCloud.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <latch>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>

#include "DescriptorLimit.h"
#include "ThreadLimit.h"

namespace {

using namespace quillbay;
using platform::DispatchQueue;
using std::chrono::microseconds;

enum Fault { endedTwice = 20, endedNever, notRecovered, childFailed, tooEager, wrongUsage };

constexpr const char* kSuccess = "success";
constexpr auto kBound = std::chrono::seconds(8);

/// Never destroyed: another thread may end the process while a share is started.
std::vector<platform::URL>& files = *new std::vector<platform::URL>;

const pid_t mainProcess = ::getpid();

auto countEntries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

auto threadCount() { return countEntries("/proc/self/task"); }

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
  if (moment < microseconds(0)) {
    const auto isMoving = [] { return share.controller->progress()->fractionCompleted() > 0; };
    if (!platform::runMainQueue(isMoving, kBound)) ::_exit(endedNever);
    return;
  }
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

/// The child of a process that has used the queues: in it none is at work.
[[noreturn]] void beIdleChild(DispatchQueue& serialOfParent) {
  ::alarm(5);
  const auto initialThreadCount = threadCount();  // a sanitizer may have one
  cloud::SessionController::deleteSession("session", "torture-host", "token",
                                          [](auto&&) { ::_exit(tooEager); });
  Share& another = *new Share;
  another.start();
  const auto serial = DispatchQueue::makeSerial();
  for (auto* queue : {&DispatchQueue::main(), &DispatchQueue::globalUserInitiated(),
                      &serialOfParent, serial.get()}) {
    queue->async([] { ::_exit(tooEager); });
  }
  platform::setMainQueuePoster(nullptr);
  platform::stopMainQueue();
  Share::runMainQueueFor(std::chrono::milliseconds(50));
  if (another.hasEnded() || threadCount() > initialThreadCount) ::_exit(tooEager);
  std::exit(EXIT_SUCCESS);
}

void await(pid_t child) {
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) ::_exit(childFailed);
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
  await(child);
  sharing.join();
}

void forkBusy(microseconds moment) {
  returnFromMain(moment);
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
    if (child == 0) beIdleChild(*serial);
    await(child);
  }
}

/// Of a parent that has used no more than a queue.
void forkIdle(int /*number*/) {
  DispatchQueue::main().async([] {});
  const pid_t child = ::fork();
  if (child == 0) beIdleChild(DispatchQueue::main());
  await(child);
}

/// The child of a process that has used nothing shares like any other.
void forkUnused(int /*number*/) {
  if (const pid_t child = ::fork()) return await(child);
  share.start();
  share.runToItsEnd();
  if (share.outcome != kSuccess) ::_exit(childFailed);
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
  static Share& next = *new Share;
  next.start();
  next.runToItsEnd();
  if (next.outcome != kSuccess) ::_exit(notRecovered);
}

/// An outcome that may come only once.
class Outcome {
 public:
  template <class Result>
  void note(const Result& result) {
    if (text_ != nullptr) ::_exit(endedTwice);
    text_ = result ? kSuccess : name(result.error());
  }
  const char* await() const {
    if (!platform::runMainQueue([this] { return text_ != nullptr; }, kBound)) ::_exit(endedNever);
    Share::runMainQueueFor(std::chrono::milliseconds(1));  // for a second outcome
    return text_;
  }

 private:
  const char* text_ = nullptr;
};

std::size_t residentKibibyteCount() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

/// Carries orders out until the input ends: "share", "resume" and "delete", a line each. Prints a
/// line each: the outcome, the session, and how much memory and how many descriptors there are.
void obey(int /*number*/) {
  std::optional<cloud::Session> session;
  for (std::string order; std::getline(std::cin, order);) {
    const auto outcome = std::make_shared<Outcome>();
    const auto note = [outcome](const auto& result) { outcome->note(result); };
    const auto controller = cloud::SessionController::create(
        {std::getenv("TORTURE_INSTANCE"), files}, cloud::SessionConfiguration::default_());
    if (order == "share") {
      session.reset();
      controller->createSession([&](const cloud::Session& created) { session = created; }, note);
    } else if (order == "resume") {
      controller->resumeSession(*session, {}, note);
    } else {
      cloud::SessionController::deleteSession(session->identifier(),
                                              controller->context().instanceIdentifier(),
                                              session->token().value_or(""), note);
    }
    std::cout << outcome->await() << ' ' << (session ? session->identifier() : "-") << ' '
              << residentKibibyteCount() << ' ' << countEntries("/proc/self/fd") << std::endl;
  }
}

std::vector<std::string> routesIn(const char* list) {
  std::vector<std::string> routes;
  std::istringstream parts(list);
  for (std::string part; std::getline(parts, part, ',');) routes.push_back(part);
  return routes;
}

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
    {"fork-busy", at<forkBusy>},
    {"fork-idle", forkIdle},
    {"fork-unused", forkUnused},
    {"release", at<release>},
    {"cancel", at<cancel>},
    {"threads", runShort<test::ThreadLimit>},
    {"descriptors", runShort<test::DescriptorLimit>},
    {"obey", obey},
};

}  // namespace

/// Asked by the leak checker, where there is one. A forked child leaves all as it found it.
extern "C" int __lsan_is_turned_off() { return ::getpid() != mainProcess; }

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) return wrongUsage;
  const char* route = std::getenv("QUILLBAY_CONNECT_TO");
  const char* authority = std::getenv("QUILLBAY_CACERT");
  if (route == nullptr || authority == nullptr) return wrongUsage;
  platform::NetworkSettings::set({routesIn(route), authority, ""});
  if (threadCount() != 1) return tooEager;
  for (int i = 3; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));
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
