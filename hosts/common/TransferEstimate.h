#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quillbay::host {

/// How far the upload of several files is, and how long the rest will take. The library counts
/// every file alike, whatever its size; people wait for bytes.
class TransferEstimate {
 public:
  using Clock = std::chrono::steady_clock;

  TransferEstimate(std::uint64_t totalByteCount, std::size_t fileCount, Clock::time_point start);

  /// Uploads begin, or begin anew: the time until now tells nothing about their speed.
  void restart(Clock::time_point now);

  /// Takes the bytes that are sent and the files that have arrived at `now`, of all.
  void update(std::uint64_t byteCount, std::size_t fileCount, Clock::time_point now);

  /// Of the work, 0 to 1; never falls.
  double fraction() const { return fraction_; }
  /// Bytes in a second of late; 0 until there is something to tell from.
  double speed() const;
  /// Absent until there is something to tell from, and when it would be more than four days.
  std::optional<std::chrono::seconds> remaining() const;

 private:
  const double totalWork_;
  Clock::time_point start_;
  Clock::time_point updated_;
  double fraction_ = 0;
  /// Share of the work in a second.
  double workSpeed_ = 0;
};

}  // namespace quillbay::host
