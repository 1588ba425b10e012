#include "TransferEstimate.h"

#include <algorithm>
#include <cmath>

namespace quillbay::host {
namespace {

// Three requests a file take about as long as this many bytes of it.
constexpr double kWorkPerFile = 128 * 1024;
// The speed of the last seconds counts, not that of a minute ago; but one stalled second must
// not make the time jump.
constexpr double kMemorySeconds = 8;
constexpr double kFirstEstimateSeconds = 1;
constexpr double kLongestEstimateSeconds = 4 * 24 * 3600;

double workOf(std::uint64_t byteCount, std::size_t fileCount) {
  return static_cast<double>(byteCount) + static_cast<double>(fileCount) * kWorkPerFile;
}

}  // namespace

TransferEstimate::TransferEstimate(std::uint64_t totalByteCount, std::size_t fileCount,
                                   Clock::time_point start)
    : totalWork_(workOf(totalByteCount, fileCount)), start_(start), updated_(start) {}

void TransferEstimate::restart(Clock::time_point now) {
  start_ = now;
  updated_ = now;
  workSpeed_ = 0;
}

void TransferEstimate::update(std::uint64_t byteCount, std::size_t fileCount,
                              Clock::time_point now) {
  const double previous = fraction_;
  if (totalWork_ > 0) {
    fraction_ = std::clamp(workOf(byteCount, fileCount) / totalWork_, fraction_, 1.0);
  }
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  const double step = std::chrono::duration<double>(now - updated_).count();
  if (step <= 0) return;
  updated_ = now;
  // While the memory fills, every second so far counts alike.
  const double weight =
      std::max(1 - std::exp(-step / kMemorySeconds), std::min(1.0, step / elapsed));
  workSpeed_ += weight * ((fraction_ - previous) / step - workSpeed_);
}

double TransferEstimate::speed() const {
  const double elapsed = std::chrono::duration<double>(updated_ - start_).count();
  return elapsed < kFirstEstimateSeconds ? 0 : workSpeed_ * totalWork_;
}

std::optional<std::chrono::seconds> TransferEstimate::remaining() const {
  const double elapsed = std::chrono::duration<double>(updated_ - start_).count();
  if (elapsed < kFirstEstimateSeconds || workSpeed_ <= 0) return std::nullopt;
  const double seconds = std::ceil((1 - fraction_) / workSpeed_);
  if (!(seconds <= kLongestEstimateSeconds)) return std::nullopt;
  return std::chrono::seconds(static_cast<std::chrono::seconds::rep>(seconds));
}

}  // namespace quillbay::host
