#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace quillbay::bench {

/// What the threads of a process have done since they began, as the kernel counts it. Looking does
/// not disturb them.
struct ThreadActivity {
  std::size_t threadCount = 0;
  std::uint64_t processorNanoseconds = 0;
  /// How often a thread was given a processor: a thread that sleeps on adds nothing.
  std::uint64_t wakeUpCount = 0;

  /// Fails if the kernel does not count.
  static ThreadActivity of(pid_t process);
};

}  // namespace quillbay::bench
