#include <QuillbayPlatform/ProcessExit.h>
#include <curl/curl.h>
#include <openssl/ssl.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace quillbay::platform {
namespace {

std::atomic<bool> hasExitBegun = false;

struct Stops {
  std::mutex mutex;
  std::vector<std::function<void()>> functions;
};

/// Never destroyed: static destructors may run while a thread still uses it.
Stops& stops() {
  static Stops& stops = *new Stops;
  return stops;
}

std::function<void()> takeLastStop() {
  const std::lock_guard lock(stops().mutex);
  auto& functions = stops().functions;
  if (functions.empty()) return nullptr;
  auto last = std::move(functions.back());
  functions.pop_back();
  return last;
}

/// Taken one by one and called unlocked: ending one thread may bring another to register.
void stopAll() {
  if (isForkedChild()) return;
  hasExitBegun = true;
  while (const auto stop = takeLastStop()) stop();
}

/// Whether this is the process that was the first to ask. `getpid` each time, since a raw clone
/// runs no fork handler; an atomic, since a fork may catch a static's construction half done.
bool isOwnerProcess() {
  static constinit std::atomic<pid_t> owner = 0;
  const pid_t self = ::getpid();
  pid_t expected = 0;
  return owner.compare_exchange_strong(expected, self) || expected == self;
}

}  // namespace

void prepareProcess() {
  static const bool isPrepared = [] {
    isOwnerProcess();
    OPENSSL_init_ssl(0, nullptr);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    return std::atexit(stopAll) == 0;
  }();
  static_cast<void>(isPrepared);
}

void stopAtExit(std::function<void()> stop) {
  const std::lock_guard lock(stops().mutex);
  stops().functions.push_back(std::move(stop));
}

bool isProcessExiting() { return hasExitBegun.load(std::memory_order_relaxed); }

bool isForkedChild() { return !isOwnerProcess(); }

}  // namespace quillbay::platform
