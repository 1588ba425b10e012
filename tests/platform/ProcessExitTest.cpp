#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <string>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
// A fork leaves behind what the other threads had in hand.
extern "C" int __lsan_is_turned_off() { return quillbay::platform::isForkedChild(); }
#endif

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

TEST_F(ProcessExitTest, StopsInReverseOrderAndTakesWhatIsRegisteredMeanwhile) {
  expectExit(0, "second;third;first;", [] {
    prepareProcess();
    stopAtExit([] { note("first;"); });
    stopAtExit([] {
      note(isProcessExiting() ? "second;" : "too early;");
      stopAtExit([] { note("third;"); });
    });
  });
}

TEST_F(ProcessExitTest, CallbacksThatWaitStillRunAndAreJoined) {
  expectExit(0, "^running;waiting;last outcome;$", [] {
    const auto queue = DispatchQueue::makeSerial();
    // Stands for the network: registered after the queue, it hands over its last outcomes.
    stopAtExit([queue] { queue->async([] { note("last outcome;"); }); });
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

TEST_F(ProcessExitTest, AHostsLoopIsNotCalledAnyMore) {
  expectExit(0, "^posted;$", [] {
    setMainQueuePoster([](std::function<void()>) { note("posted;"); });
    const auto queue = DispatchQueue::makeSerial();
    stopAtExit([queue] { queue->async([] { DispatchQueue::main().async([] {}); }); });
    DispatchQueue::main().async([] {});
  });
}

TEST_F(ProcessExitTest, AForkedChildRunsNoWorkAndExits) {
  expectExit(0, "", [] {
    const auto serial = DispatchQueue::makeSerial();
    DispatchQueue* const queues[] = {&DispatchQueue::main(), &DispatchQueue::globalUserInitiated(),
                                     serial.get()};
    // Keeps the queues busy, so that the forks come upon any state of theirs.
    std::atomic<bool> isOver = false;
    std::jthread busy([&] {
      while (!isOver) {
        std::latch ran(2);
        queues[0]->async([] {});
        for (DispatchQueue* queue : {queues[1], queues[2]}) {
          queue->async([&] { ran.count_down(); });
        }
        ran.wait();
      }
    });
    for (int round = 0; round < 8; ++round) {
      bool isTurnOver = false;
      queues[0]->async([&] { isTurnOver = true; });
      runMainQueue([&] { return isTurnOver; }, std::chrono::seconds(60));
      const pid_t child = fork();
      if (child == 0) {
        alarm(60);
        for (DispatchQueue* queue : queues) queue->async([] { _exit(1); });
        setMainQueuePoster(nullptr);
        stopMainQueue();
        runMainQueue();
        std::exit(isForkedChild() ? 0 : 2);
      }
      int status = 0;
      waitpid(child, &status, 0);
      if (status != 0) _exit(3);
    }
    isOver = true;
  });
}

}  // namespace
}  // namespace quillbay::platform
