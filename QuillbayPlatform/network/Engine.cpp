#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SignalMask.h>
#include <QuillbayPlatform/network/Engine.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <system_error>
#include <utility>

namespace quillbay::platform {
namespace {

// Idle connections kept: enough for the service, the store and a change of address of either.
constexpr long kMaximumConnectionCount = 16;
// Starting and stopping wake the thread at once. Without a transfer nothing else should: each
// wake-up costs power. A transfer on which nothing moves is looked at this often.
constexpr int kIdlePollMilliseconds = std::numeric_limits<int>::max();
constexpr int kActivePollMilliseconds = 500;

constinit OnFirstUse<Engine> sharedEngine;

}  // namespace

Engine& Engine::shared() {
  static constinit std::once_flag isRegistered;
  // Before the flag, which in a forked child may be half set.
  if (!isForkedChild()) {
    std::call_once(isRegistered, [] {
      prepareProcess();
      stopAtExit([] { sharedEngine.get().stop(); });
    });
  }
  return sharedEngine.get();
}

Engine::~Engine() { stop(); }

void Engine::start(std::unique_ptr<Transfer> transfer) {
  if (isForkedChild()) {
    // Its callbacks would have nowhere to run, and what it refers to belongs to the parent.
    (void)transfer.release();
    return;
  }
  if (const auto refusal = enqueue(transfer)) transfer->fail(refusal->code, refusal->reason);
}

/// Leaves the transfer with the caller when it refuses.
std::optional<Engine::Refusal> Engine::enqueue(std::unique_ptr<Transfer>& transfer) {
  const std::lock_guard lock(mutex_);
  if (isStopping_ || isProcessExiting()) {
    return Refusal{URLError::Code::cancelled, "the process is ending"};
  }
  if (!isRunning_) {
    if (auto refusal = startThread()) return refusal;
  }
  // The thread finds the transfer all the same: it looks for it under the lock.
  if (isAsleep_) {
    const CURLMcode code = curl_multi_wakeup(multi_.get());
    if (code != CURLM_OK) return Refusal{URLError::Code::unknown, curl_multi_strerror(code)};
  }
  incoming_.push_back(std::move(transfer));
  hasNews_ = true;
  return std::nullopt;
}

std::optional<Engine::Refusal> Engine::startThread() {
  // One that gave up.
  if (thread_.joinable()) thread_.join();
  prepareProcess();
  multi_.reset(curl_multi_init());
  // libcurl makes a handle also without the pair of sockets that wakes it. Its user would then
  // wait for the end of a poll instead.
  if (!multi_ || curl_multi_wakeup(multi_.get()) != CURLM_OK) {
    return Refusal{URLError::Code::unknown, "the system has no memory or descriptor to give"};
  }
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, kMaximumConnectionCount);
  const SignalMask allBlocked;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    return Refusal{URLError::Code::unknown, "the system has no thread to give"};
  }
  isRunning_ = true;
  return std::nullopt;
}

void Engine::stop() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isStopping_, true)) return;
    hasNews_ = true;
    // The pair of sockets was seen to work when the thread started.
    if (isRunning_) static_cast<void>(curl_multi_wakeup(multi_.get()));
  }
  if (!thread_.joinable()) return;
  // A completion handler called exit(): this thread is the one that ends the process.
  if (thread_.get_id() == std::this_thread::get_id()) return thread_.detach();
  thread_.join();
}

void Engine::run() {
  CURLMcode code = CURLM_OK;
  while (code == CURLM_OK && takeIncoming()) code = turn();
  if (code == CURLM_OK) return endAll({URLError::Code::cancelled, "the process is ending"});
  endAll({URLError::Code::unknown, curl_multi_strerror(code)});
}

/// False when the engine is to stop.
bool Engine::takeIncoming() {
  Transfers transfers;
  {
    const std::lock_guard lock(mutex_);
    if (isStopping_) return false;
    transfers.swap(incoming_);
    hasNews_ = false;
  }
  for (auto& transfer : transfers) begin(std::move(transfer));
  return true;
}

CURLMcode Engine::turn() {
  int runningCount = 0;
  const CURLMcode code = curl_multi_perform(multi_.get(), &runningCount);
  // A finished transfer may have left another to begin: look before sleeping.
  if (code != CURLM_OK || handleMessages()) return code;
  return awaitEvent();
}

/// Larger bodies fill the line: their waits are many, and waking costs little beside them.
CURLMcode Engine::awaitEvent() {
  if (!std::ranges::all_of(engineThreadActive_, &Transfer::hasSmallBody)) return sleep();
  const ShortWaits::Wait wait(engineThreadWaits_, [this] { return hasEvent(); });
  return wait.hasCome() ? CURLM_OK : sleep();
}

/// Whether there is something to do now.
bool Engine::hasEvent() {
  if (hasNews_) return true;
  int eventCount = 0;
  if (!engineThreadActive_.empty()) curl_multi_poll(multi_.get(), nullptr, 0, 0, &eventCount);
  return eventCount > 0;
}

CURLMcode Engine::sleep() {
  {
    const std::lock_guard lock(mutex_);
    if (hasNews_) return CURLM_OK;
    isAsleep_ = true;
  }
  const bool isIdle = engineThreadActive_.empty();
  const CURLMcode code = curl_multi_poll(
      multi_.get(), nullptr, 0, isIdle ? kIdlePollMilliseconds : kActivePollMilliseconds, nullptr);
  const std::lock_guard lock(mutex_);
  isAsleep_ = false;
  return code;
}

void Engine::begin(std::unique_ptr<Transfer> transfer) {
  if (transfer->begin(NetworkSettings::current()) == Transfer::State::finished) return;
  if (perform(*transfer)) engineThreadActive_.push_back(std::move(transfer));
}

/// False if the transfer has ended with an error.
bool Engine::perform(Transfer& transfer) {
  const CURLMcode code = curl_multi_add_handle(multi_.get(), transfer.easy());
  if (code == CURLM_OK) return true;
  transfer.fail(URLError::Code::unknown, curl_multi_strerror(code));
  return false;
}

/// Whether any transfer's request ended.
bool Engine::handleMessages() {
  bool handled = false;
  int remainingCount = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &remainingCount)) {
    if (message->msg != CURLMSG_DONE) continue;
    complete(message->easy_handle, message->data.result);
    handled = true;
  }
  return handled;
}

void Engine::complete(CURL* easy, CURLcode code) {
  curl_multi_remove_handle(multi_.get(), easy);
  const auto transfer = std::ranges::find(engineThreadActive_, easy, &Transfer::easy);
  const bool goesOn = (*transfer)->performed(code) == Transfer::State::running;
  if (goesOn && perform(**transfer)) return;
  engineThreadActive_.erase(transfer);
}

void Engine::endAll(const Refusal& refusal) {
  for (const auto& transfer : engineThreadActive_) {
    curl_multi_remove_handle(multi_.get(), transfer->easy());
  }
  for (auto left = takeLeftOver(); !left.empty(); left = takeLeftOver()) {
    for (const auto& transfer : left) transfer->fail(refusal.code, refusal.reason);
  }
}

/// Nothing when no transfer is left. From then on the next one starts another thread.
Engine::Transfers Engine::takeLeftOver() {
  Transfers left = std::exchange(engineThreadActive_, {});
  const std::lock_guard lock(mutex_);
  std::ranges::move(incoming_, std::back_inserter(left));
  incoming_.clear();
  isRunning_ = !left.empty();
  return left;
}

}  // namespace quillbay::platform
