#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SHA256.h>
#include <curl/curl.h>
#include <openssl/ssl.h>
#include <simdjson.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace quillbay::platform {
namespace {

constinit std::atomic<bool> hasExitBegun = false;
constinit thread_local bool hasExitBegunHere = false;

struct Stops {
  std::mutex mutex;
  std::vector<std::function<void()>> functions;
};

constinit OnFirstUse<Stops> stops;

std::function<void()> takeLastStop() {
  const std::lock_guard lock(stops.get().mutex);
  auto& functions = stops.get().functions;
  if (functions.empty()) return nullptr;
  auto last = std::move(functions.back());
  functions.pop_back();
  return last;
}

/// Taken one by one and called unlocked: ending one thread may bring another to register.
void stopAll() {
  if (isForkedChild()) return;
  hasExitBegun = true;
  hasExitBegunHere = true;
  while (const auto stop = takeLastStop()) stop();
}

/// Exit runs first what was registered last, destructors of libraries included, which they register
/// with their first use. Whatever a thread of ours may touch is therefore used before the hook is
/// registered. This is done while this library is loaded: another thread may exit during our first
/// use of anything, and then no thread may start any more.
[[maybe_unused]] const bool isExitWatched = [] {
  static_cast<void>(simdjson::get_active_implementation()->name());
  return std::atexit(stopAll) == 0;
}();

void useNetworkLibrariesOnce() {
  // Unless the host came first, OpenSSL does not take itself down: another thread may exit during
  // this call, and a forked child would meet locks that threads of its parent held.
  OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr);
  curl_global_init(CURL_GLOBAL_DEFAULT);
  SHA256().finalize();
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
  if (isForkedChild()) return;
  static constinit std::once_flag isPrepared;
  std::call_once(isPrepared, [] {
    useNetworkLibrariesOnce();
    // Once more, ahead of what the host has registered in between: it may have used OpenSSL first.
    // Refused when another thread has ended the process meanwhile.
    if (std::atexit(stopAll) != 0) hasExitBegun = true;
  });
}

void stopAtExit(std::function<void()> stop) {
  if (isForkedChild()) return;
  const std::lock_guard lock(stops.get().mutex);
  stops.get().functions.push_back(std::move(stop));
}

bool isProcessExiting() { return hasExitBegun.load(std::memory_order_relaxed); }

bool isThreadExitingProcess() { return hasExitBegunHere; }

bool isForkedChild() { return !isOwnerProcess(); }

}  // namespace quillbay::platform
