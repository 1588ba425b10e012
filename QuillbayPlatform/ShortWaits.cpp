#include <QuillbayPlatform/ShortWaits.h>

#include <algorithm>
#include <thread>

namespace quillbay::platform {
namespace {

const bool kHasManyProcessors = std::thread::hardware_concurrency() > 1;

/// How much of the average is from before the last wait: enough that a short wait between long
/// ones changes nothing.
constexpr int kMemory = 8;

}  // namespace

void ShortWaits::letOthersRun() { std::this_thread::yield(); }

bool ShortWaits::areShort() const {
  // On a single processor, what is waited for needs the one that this thread has.
  return kHasManyProcessors && average_ < kShort;
}

void ShortWaits::add(Clock::duration wait) {
  average_ += (std::min(wait, kLongestCounted) - average_) / kMemory;
}

}  // namespace quillbay::platform
