#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SHA256.h>
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

/// Libraries register destructors at their first use, and exit runs what was registered last first:
/// each must be used once before our hook is registered, or exit takes it from a running thread.
/// The reader of JSON sees to that itself.
void useLibrariesOnce() {
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
    useLibrariesOnce();
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
