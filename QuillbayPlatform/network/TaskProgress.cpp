#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/network/TaskProgress.h>

namespace quillbay::platform {
namespace {

constexpr std::chrono::milliseconds kPostInterval(100);

}  // namespace

// A transfer that ends sooner needs no update but the last.
TaskProgress::TaskProgress()
    : engineThreadNextPost_(std::chrono::steady_clock::now() + kPostInterval) {}

void TaskProgress::update(std::int64_t sentByteCount, std::int64_t expectedByteCount) {
  if (sentByteCount > sentByteCount_.load(std::memory_order_relaxed)) {
    expectedByteCount_.store(expectedByteCount, std::memory_order_relaxed);
    sentByteCount_.store(sentByteCount, std::memory_order_relaxed);
  }
  // Also when nothing was sent since the last call: an upload that stalls shows how far it is.
  if (sentByteCount_.load(std::memory_order_relaxed) == engineThreadPostedByteCount_) return;

  const auto now = std::chrono::steady_clock::now();
  if (now < engineThreadNextPost_) return;
  engineThreadNextPost_ = now + kPostInterval;
  engineThreadPostedByteCount_ = sentByteCount_.load(std::memory_order_relaxed);
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
