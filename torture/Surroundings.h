#pragma once

#include <atomic>
#include <cstdint>

namespace quillbay::torture {

/// What `surroundings.cpp`, preloaded, makes a program find. Lies in a file that the program and
/// the torturer map, so that it can change while the program runs.
struct Surroundings {
  static constexpr const char* kVariable = "TORTURE_SURROUNDINGS";
  static constexpr std::int64_t kUnlimited = -1;

  /// Of the disk, as far as standard streams do not lead there.
  std::atomic<std::int64_t> freeByteCount = kUnlimited;
  /// How far the wall clock has jumped.
  std::atomic<std::int64_t> wallClockJumpSeconds = 0;
  /// The steady clock is so many times as fast. Does not change while the program runs.
  std::int64_t steadyClockSpeed = 1;
};

}  // namespace quillbay::torture
