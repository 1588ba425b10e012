#pragma once

#include <QuillbayPlatform/ShortWaits.h>
#include <QuillbayPlatform/network/Transfer.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quillbay::platform {

/// Performs transfers: one thread, one libcurl multi handle, one pool of connections.
///
/// The thread starts with the first transfer and blocks all signals. Everything libcurl does
/// happens there, file reads of upload bodies included. When the thread cannot start, or libcurl
/// gives up, the transfers at hand fail, and the next one tries anew.
class Engine {
 public:
  /// The process's engine. It stops at exit, ahead of the libraries below it.
  static Engine& shared();

  Engine() = default;
  /// Stops.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Takes the transfer and performs it. Any thread. Once the engine has stopped, or if it cannot
  /// start, the transfer ends with an error in this call; in a forked child nothing happens at all.
  void start(std::unique_ptr<Transfer> transfer);

  /// Cancels every transfer and joins the thread. Any thread; on a second call nothing happens.
  void stop();

 private:
  using Transfers = std::vector<std::unique_ptr<Transfer>>;

  struct Refusal {
    URLError::Code code;
    std::string reason;
  };

  std::optional<Refusal> enqueue(std::unique_ptr<Transfer>& transfer);
  std::optional<Refusal> startThread();
  void run();
  bool takeIncoming();
  CURLMcode turn();
  CURLMcode awaitEvent();
  bool hasEvent();
  CURLMcode sleep();
  bool handleMessages();
  void begin(std::unique_ptr<Transfer> transfer);
  bool perform(Transfer& transfer);
  void complete(CURL* easy, CURLcode code);
  void endAll(const Refusal& refusal);
  Transfers takeLeftOver();

  std::mutex mutex_;
  Transfers incoming_;                 // guarded by mutex_
  bool isRunning_ = false;             // guarded by mutex_
  bool isStopping_ = false;            // guarded by mutex_
  bool isAsleep_ = false;              // guarded by mutex_; only then the thread needs to be woken
  std::atomic<bool> hasNews_ = false;  // written under mutex_: the thread is to look there

  /// Made before the thread starts and kept until the next one does.
  MultiHandle multi_;
  Transfers engineThreadActive_;
  ShortWaits engineThreadWaits_;
  std::thread thread_;
};

}  // namespace quillbay::platform
