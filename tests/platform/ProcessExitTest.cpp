#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SHA256.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <thread>

namespace quillbay::platform {
namespace {

class ProcessExitTest : public testing::Test {
 protected:
  ProcessExitTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  /// Runs `body` in a process of its own, under a watchdog; it is to end with this status and
  /// these notes on standard error.
  static void expectExit(int status, const char* notes, const std::function<void()>& body) {
    EXPECT_EXIT((alarm(10), body(), std::exit(0)), testing::ExitedWithCode(status), notes);
  }

  static void note(const char* text) { std::fputs(text, stderr); }
};

struct Record {
  static std::expected<Record, ErrorPtr> decode(JSONReader& reader) {
    return reader.finish([] { return Record(); });
  }
};

TEST_F(ProcessExitTest, WhatRunsIsAwaitedWithItsLibrariesAndWhatWaitsIsKept) {
  for (const bool exitsOnMainThread : {true, false}) {
    expectExit(0, exitsOnMainThread ? "^ended;$" : "^ended;on the main queue;$", [=] {
      // Called once our threads have ended.
      std::atexit([] { runMainQueue(); });
      if (exitsOnMainThread) setMainQueuePoster([](std::function<void()>) { note("posted;"); });
      auto queue = DispatchQueue::makeSerial();
      std::latch running(1);
      queue->async([&, self = queue.get()] {
        // So long that no parser is kept: the second one needs the library again.
        const std::string text = "{}" + std::string(5 << 20, ' ');
        (void)JSONDecoder().decode<Record>(text);
        running.count_down();
        while (!isProcessExiting()) std::this_thread::yield();
        std::atomic<bool> hasBegun = false;
        for (auto* each : {&DispatchQueue::main(), self}) each->async([&] { hasBegun = true; });
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
        while (!hasBegun && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        if (hasBegun) note("late;");
        if (JSONDecoder().decode<Record>(text)) note("ended;");
      });
      running.wait();
      std::shared_ptr<void> object(nullptr, [](void*) { note("destroyed;"); });
      queue->async([object = std::move(object)] { note("waiting;"); });
      queue.reset();
      if (exitsOnMainThread) std::exit(0);
      DispatchQueue::main().async([] {
        std::thread([] { std::exit(0); }).detach();
        while (!isProcessExiting()) std::this_thread::yield();
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
        while (std::chrono::steady_clock::now() < end) std::this_thread::yield();
        note("on the main queue;");
      });
      runMainQueue();
      note("returned;");
    });
  }
}

TEST_F(ProcessExitTest, OpenSSLConfiguredWithoutSHA256GivesNoDigestAndNoEnd) {
  expectExit(0, "", [] {
    constexpr std::string_view text =
        "openssl_conf = a\n[a]\nproviders = b\n[b]\nnull = c\n[c]\nactivate = 1\n";
    const int file = ::memfd_create("configuration", 0);
    if (::write(file, text.data(), text.size()) != std::ssize(text)) std::exit(1);
    ::setenv("OPENSSL_CONF", ("/proc/self/fd/" + std::to_string(file)).c_str(), 1);
    prepareProcess();
    SHA256 hash;
    hash.update(std::as_bytes(std::span(text)));
    if (hash.finalize() || hash.finalize()) std::exit(1);
  });
}

TEST_F(ProcessExitTest, ExitMayBeCalledByAWorkItem) {
  for (const bool isSerial : {true, false}) {
    expectExit(7, "", [=] {
      const auto serial = DispatchQueue::makeSerial();
      (isSerial ? *serial : DispatchQueue::globalUserInitiated()).async([] { std::exit(7); });
      runMainQueue();
    });
  }
}

}  // namespace
}  // namespace quillbay::platform
