#include "benchmarks/runner/ThreadActivity.h"

#include <filesystem>
#include <fstream>
#include <string>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {

ThreadActivity ThreadActivity::of(pid_t process) {
  ThreadActivity total;
  for (const auto& thread :
       std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::uint64_t processorNanoseconds = 0;
    std::uint64_t waitingNanoseconds = 0;
    std::uint64_t wakeUpCount = 0;
    std::ifstream(thread.path() / "schedstat") >> processorNanoseconds >> waitingNanoseconds >>
        wakeUpCount;
    ++total.threadCount;
    total.processorNanoseconds += processorNanoseconds;
    total.wakeUpCount += wakeUpCount;
  }
  if (total.processorNanoseconds == 0) fail("the kernel does not count what threads do");
  return total;
}

}  // namespace quillbay::bench
