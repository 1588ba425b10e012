#include "TransferEstimate.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace quillbay::host {
namespace {

// Three requests a file take about as long as this many bytes of it.
constexpr double kWorkPerFile = 128 * 1024;
// The speed of the last seconds counts, not that of a minute ago; but one stalled second must
// not make the time jump.
constexpr double kMemorySeconds = 8;
constexpr double kFirstEstimateSeconds = 1;
constexpr double kLongestEstimateSeconds = 4 * 24 * 3600;

}  // namespace

TransferEstimate::TransferEstimate(const std::vector<std::uint64_t>& byteCounts,
                                   Clock::time_point start)
    : workOfLast_{0}, start_(start), updated_(start) {
  for (const std::uint64_t byteCount : byteCounts | std::views::reverse) {
    workOfLast_.push_back(workOfLast_.back() + kWorkPerFile + static_cast<double>(byteCount));
  }
}

void TransferEstimate::update(double fraction, Clock::time_point now) {
  const double total = workOfLast_.back();
  const double previous = fraction_;
  if (total > 0) fraction_ = std::max(fraction_, workAt(fraction) / total);

  const double elapsed = std::chrono::duration<double>(now - start_).count();
  const double step = std::chrono::duration<double>(now - updated_).count();
  if (step <= 0) return;
  updated_ = now;
  // While the memory fills, every second so far counts alike.
  const double weight =
      std::max(1 - std::exp(-step / kMemorySeconds), std::min(1.0, step / elapsed));
  speed_ += weight * ((fraction_ - previous) / step - speed_);
}

std::optional<std::chrono::seconds> TransferEstimate::remaining() const {
  const double elapsed = std::chrono::duration<double>(updated_ - start_).count();
  if (elapsed < kFirstEstimateSeconds || speed_ <= 0) return std::nullopt;
  const double seconds = std::ceil((1 - fraction_) / speed_);
  if (!(seconds <= kLongestEstimateSeconds)) return std::nullopt;
  return std::chrono::seconds(static_cast<std::chrono::seconds::rep>(seconds));
}

double TransferEstimate::workAt(double fraction) const {
  const auto fileCount = static_cast<double>(workOfLast_.size() - 1);
  const double position = std::clamp(fraction, 0.0, 1.0) * fileCount;
  const double whole = std::min(std::floor(position), fileCount - 1);
  const auto done = static_cast<std::size_t>(whole);
  return std::lerp(workOfLast_[done], workOfLast_[done + 1], position - whole);
}

}  // namespace quillbay::host
