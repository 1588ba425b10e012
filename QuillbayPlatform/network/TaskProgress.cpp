#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/network/TaskProgress.h>

namespace quillbay::platform {
namespace {

constexpr std::chrono::milliseconds kPostInterval(100);

}  // namespace

void TaskProgress::update(std::int64_t sentByteCount, std::int64_t expectedByteCount) {
  if (sentByteCount <= sentByteCount_.load(std::memory_order_relaxed)) return;
  expectedByteCount_.store(expectedByteCount, std::memory_order_relaxed);
  sentByteCount_.store(sentByteCount, std::memory_order_relaxed);

  const auto now = std::chrono::steady_clock::now();
  if (now < engineThreadNextPost_) return;
  engineThreadNextPost_ = now + kPostInterval;
  post();
}

void TaskProgress::complete() {
  complete_.store(true, std::memory_order_relaxed);
  post();
}

void TaskProgress::post() {
  if (postPending_.exchange(true)) return;
  DispatchQueue::main().async([self = shared_from_this()] { self->apply(); });
}

void TaskProgress::apply() {
  postPending_.exchange(false);  // acquires what the update that found it set has stored
  const std::int64_t expected = expectedByteCount_.load(std::memory_order_relaxed);
  if (complete_.load(std::memory_order_relaxed)) {
    const std::int64_t total = expected > 0 ? expected : progress_->totalUnitCount();
    progress_->setUnitCounts(total, total);
    return;
  }
  if (expected > 0) {
    progress_->setUnitCounts(sentByteCount_.load(std::memory_order_relaxed), expected);
  }
}

}  // namespace quillbay::platform
