#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SignalMask.h>
#include <QuillbayPlatform/network/Engine.h>

#include <algorithm>
#include <utility>

namespace quillbay::platform {
namespace {

// Idle connections kept: enough for the service, the store and a change of address of either.
constexpr long kMaximumConnectionCount = 16;
// Starting and stopping wake the thread at once; a transfer on which nothing moves is looked at
// this often.
constexpr int kIdlePollMilliseconds = 60'000;
constexpr int kActivePollMilliseconds = 500;

}  // namespace

Engine& Engine::shared() {
  // Never destroyed: transfers may end while static objects are being torn down.
  static Engine* const engine = [] {
    auto* created = new Engine;
    stopAtExit([created] { created->stop(); });
    return created;
  }();
  return *engine;
}

Engine::Engine() {
  prepareProcess();
  multi_.reset(curl_multi_init());
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, kMaximumConnectionCount);
  const SignalMask allBlocked;
  thread_ = std::thread([this] { run(); });
}

Engine::~Engine() { stop(); }

void Engine::start(std::unique_ptr<Transfer> transfer) {
  if (isForkedChild()) {
    // Its callbacks would have nowhere to run, and what it refers to belongs to the parent.
    (void)transfer.release();
    return;
  }
  if (!enqueue(transfer)) return transfer->cancel();
  curl_multi_wakeup(multi_.get());
}

/// Leaves the transfer with the caller when the engine has stopped.
bool Engine::enqueue(std::unique_ptr<Transfer>& transfer) {
  const std::lock_guard lock(mutex_);
  if (stopping_) return false;
  incoming_.push_back(std::move(transfer));
  return true;
}

void Engine::stop() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(stopping_, true)) return;
  }
  curl_multi_wakeup(multi_.get());
  thread_.join();
}

void Engine::run() {
  while (takeIncoming()) {
    int runningCount = 0;
    curl_multi_perform(multi_.get(), &runningCount);
    // A finished transfer may have left another to begin: look before sleeping.
    if (handleMessages()) continue;
    const bool isIdle = engineThreadActive_.empty();
    curl_multi_poll(multi_.get(), nullptr, 0,
                    isIdle ? kIdlePollMilliseconds : kActivePollMilliseconds, nullptr);
  }
  cancelActive();
}

/// False when the engine is to stop.
bool Engine::takeIncoming() {
  std::vector<std::unique_ptr<Transfer>> transfers;
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) return false;
    transfers.swap(incoming_);
  }
  for (auto& transfer : transfers) begin(std::move(transfer));
  return true;
}

void Engine::begin(std::unique_ptr<Transfer> transfer) {
  if (transfer->begin(NetworkSettings::current()) == Transfer::State::finished) return;
  perform(*transfer);
  engineThreadActive_.push_back(std::move(transfer));
}

void Engine::perform(Transfer& transfer) { curl_multi_add_handle(multi_.get(), transfer.easy()); }

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
  if ((*transfer)->performed(code) == Transfer::State::running) return perform(**transfer);
  engineThreadActive_.erase(transfer);
}

void Engine::cancelActive() {
  for (const auto& transfer : engineThreadActive_) {
    curl_multi_remove_handle(multi_.get(), transfer->easy());
    transfer->cancel();
  }
  engineThreadActive_.clear();
  std::vector<std::unique_ptr<Transfer>> transfers;
  {
    const std::lock_guard lock(mutex_);
    transfers.swap(incoming_);
  }
  for (const auto& transfer : transfers) transfer->cancel();
}

}  // namespace quillbay::platform
