#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
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
  template <class Body>
  static void expectExit(int status, const char* notes, Body body) {
    const auto run = [&] {
      alarm(60);
      body();
      std::exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(status), notes);
  }

  static void note(const char* text) { std::fputs(text, stderr); }
};

TEST_F(ProcessExitTest, CallbacksThatWaitStillRunAndAreJoinedAndAHostsLoopIsNotCalledAnyMore) {
  expectExit(0, "^posted;running;waiting;last outcome;$", [] {
    setMainQueuePoster([](std::function<void()>) { note("posted;"); });
    DispatchQueue::main().async([] {});
    const auto queue = DispatchQueue::makeSerial();
    // Stands for the network: registered after the queue, it hands over its last outcomes.
    stopAtExit([queue] {
      queue->async([] {
        DispatchQueue::main().async([] {});
        note("last outcome;");
      });
    });
    queue->async([] {
      while (!isProcessExiting()) std::this_thread::yield();
      note("running;");
    });
    queue->async([] { note("waiting;"); });
  });
}

TEST_F(ProcessExitTest, ALongReadEndsAndWorkThatHasNotBegunNeverDoes) {
  expectExit(0, "", [] {
    static std::latch reading(1);
    for (int i = 0; i < 64; ++i) {
      DispatchQueue::globalUserInitiated().async([first = i == 0] {
        auto file = FileHandle::openForReading(URL::fileURL("/proc/self/exe"));
        if (first) reading.count_down();
        std::array<std::byte, 64> buffer;
        while (file && file->read(buffer)) file->seek(0);
      });
    }
    reading.wait();
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
