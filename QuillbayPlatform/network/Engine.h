#pragma once

#include <QuillbayPlatform/network/Transfer.h>

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quillbay::platform {

/// Performs transfers: one thread, one libcurl multi handle, one pool of connections.
///
/// The thread starts with the engine and blocks all signals. Everything libcurl does happens
/// there, file reads of upload bodies included.
class Engine {
 public:
  /// The process's engine. It starts with the first call and stops at exit, ahead of the libraries
  /// below it.
  static Engine& shared();

  Engine();
  /// Stops.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Takes the transfer and performs it. Any thread. Once the engine has stopped, the transfer is
  /// cancelled in this call; in a forked child nothing happens at all.
  void start(std::unique_ptr<Transfer> transfer);

  /// Cancels every transfer and joins the thread. Any thread; on a second call nothing happens.
  void stop();

 private:
  bool enqueue(std::unique_ptr<Transfer>& transfer);
  void run();
  bool takeIncoming();
  bool handleMessages();
  void begin(std::unique_ptr<Transfer> transfer);
  void perform(Transfer& transfer);
  void complete(CURL* easy, CURLcode code);
  void cancelActive();

  MultiHandle multi_;

  std::mutex mutex_;
  std::vector<std::unique_ptr<Transfer>> incoming_;  // guarded by mutex_
  bool stopping_ = false;                            // guarded by mutex_

  std::vector<std::unique_ptr<Transfer>> engineThreadActive_;
  std::thread thread_;
};

}  // namespace quillbay::platform
