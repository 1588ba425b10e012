#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quillbay::host {

/// How far the upload of several files is, and how long the rest will take. The library counts
/// every file alike, whatever its size; people wait for bytes.
class TransferEstimate {
 public:
  using Clock = std::chrono::steady_clock;

  /// `byteCounts` in the order of the list; files are uploaded from its end.
  TransferEstimate(const std::vector<std::uint64_t>& byteCounts, Clock::time_point start);

  /// Takes the library's fraction, 0 to 1, as it is at `now`.
  void update(double fraction, Clock::time_point now);

  /// Of the work, 0 to 1; never falls.
  double fraction() const { return fraction_; }
  /// Absent until there is something to tell from, and when it would be more than four days.
  std::optional<std::chrono::seconds> remaining() const;

 private:
  double workAt(double fraction) const;

  /// Work that is done when the last n files are, for each n.
  std::vector<double> workOfLast_;
  Clock::time_point start_;
  Clock::time_point updated_;
  double fraction_ = 0;
  /// Of the work, in a second.
  double speed_ = 0;
};

}  // namespace quillbay::host
