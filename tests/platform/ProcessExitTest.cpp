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

using namespace std::chrono_literals;

/// Each case ends a process of its own, under a watchdog.
class ProcessExitTest : public testing::Test {
 protected:
  ProcessExitTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static constexpr unsigned kWatchdogSeconds = 60;
};

void note(const char* text) { std::fputs(text, stderr); }

TEST_F(ProcessExitTest, StopsInReverseOrderAndTakesWhatIsRegisteredMeanwhile) {
  const auto run = [] {
    alarm(kWatchdogSeconds);
    prepareProcess();
    stopAtExit([] { note("first;"); });
    stopAtExit([] {
      note(isProcessExiting() ? "second;" : "too early;");
      stopAtExit([] { note("third;"); });
    });
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "second;third;first;");
}

TEST_F(ProcessExitTest, CallbacksThatWaitStillRunAndAreJoined) {
  const auto run = [] {
    alarm(kWatchdogSeconds);
    const auto queue = DispatchQueue::makeSerial();
    // Stands for the network: registered after the queue, it hands over its last outcomes.
    stopAtExit([queue] { queue->async([] { note("last outcome;"); }); });
    queue->async([] {
      while (!isProcessExiting()) std::this_thread::yield();
      note("running;");
    });
    queue->async([] { note("waiting;"); });
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^running;waiting;last outcome;$");
}

TEST_F(ProcessExitTest, ALongReadEndsAndWorkThatHasNotBegunNeverDoes) {
  const auto run = [] {
    alarm(kWatchdogSeconds);
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
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(ProcessExitTest, ExitMayBeCalledByAWorkItem) {
  for (const bool isSerial : {true, false}) {
    const auto run = [=] {
      alarm(kWatchdogSeconds);
      const auto serial = DispatchQueue::makeSerial();
      DispatchQueue& queue = isSerial ? *serial : DispatchQueue::globalUserInitiated();
      DispatchQueue::makeSerial()->async([] {});
      queue.async([] { std::exit(7); });
      runMainQueue();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(7), "");
  }
}

TEST_F(ProcessExitTest, AHostsLoopIsNotCalledAnyMore) {
  const auto run = [] {
    alarm(kWatchdogSeconds);
    setMainQueuePoster([](std::function<void()>) { note("posted;"); });
    const auto queue = DispatchQueue::makeSerial();
    stopAtExit([queue] { queue->async([] { DispatchQueue::main().async([] {}); }); });
    DispatchQueue::main().async([] {});
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^posted;$");
}

TEST_F(ProcessExitTest, AForkedChildRunsNoWorkAndExits) {
  const auto run = [] {
    alarm(kWatchdogSeconds);
    const auto serial = DispatchQueue::makeSerial();
    DispatchQueue* const queues[] = {&DispatchQueue::main(), &DispatchQueue::globalUserInitiated(),
                                     serial.get()};
    // Keeps the queues busy, so that the forks come upon any state of theirs.
    std::atomic<bool> isOver = false;
    std::jthread busy([&] {
      while (!isOver) {
        std::latch ran(2);
        queues[0]->async([] {});
        queues[1]->async([&] { ran.count_down(); });
        queues[2]->async([&] { ran.count_down(); });
        ran.wait();
      }
    });
    for (int round = 0; round < 8; ++round) {
      bool isTurnOver = false;
      queues[0]->async([&] { isTurnOver = true; });
      runMainQueue([&] { return isTurnOver; }, 60s);
      const pid_t child = fork();
      if (child == 0) {
        alarm(kWatchdogSeconds);
        for (DispatchQueue* queue : queues) queue->async([] { _exit(1); });
        DispatchQueue::makeSerial()->async([] { _exit(1); });
        setMainQueuePoster(nullptr);
        stopMainQueue();
        runMainQueue();
        std::exit(isForkedChild() ? 0 : 2);
      }
      int status = 0;
      waitpid(child, &status, 0);
      if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) _exit(3);
    }
    isOver = true;
    busy.join();
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quillbay::platform
