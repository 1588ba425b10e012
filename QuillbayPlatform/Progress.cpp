#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/Progress.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace quillbay::platform {
namespace {

/// The sum, held at the type's limit where it would overflow. Neither may be negative.
std::int64_t saturatingSum(std::int64_t first, std::int64_t second) {
  constexpr std::int64_t kLimit = std::numeric_limits<std::int64_t>::max();
  return first > kLimit - second ? kLimit : first + second;
}

}  // namespace

std::shared_ptr<Progress> Progress::create(std::int64_t totalUnitCount) {
  return std::shared_ptr<Progress>(new Progress(std::max<std::int64_t>(totalUnitCount, 0)));
}

void Progress::setTotalUnitCount(std::int64_t count) { setUnitCounts(completedUnitCount_, count); }

void Progress::setCompletedUnitCount(std::int64_t count) { setUnitCounts(count, totalUnitCount_); }

void Progress::setUnitCounts(std::int64_t completed, std::int64_t total) {
  completed = std::max<std::int64_t>(completed, 0);
  total = std::max<std::int64_t>(total, 0);
  if (completed == completedUnitCount_ && total == totalUnitCount_) return;
  completedUnitCount_ = completed;
  totalUnitCount_ = total;
  didChange();
}

void Progress::addChild(const std::shared_ptr<Progress>& child, std::int64_t pendingUnitCount) {
  if (!child || !child->parent_.expired() || isSelfOrAncestor(*child)) return;
  children_.push_back({child, std::max<std::int64_t>(pendingUnitCount, 0)});
  child->parent_ = weak_from_this();
  if (child->isFinished()) absorb(*child);
  if (child->fractionCompleted() > 0) didChange();
}

double Progress::fractionCompleted() const {
  if (totalUnitCount_ <= 0) return 0;
  auto completed = static_cast<double>(completedUnitCount_);
  for (const Child& child : children_) {
    completed += static_cast<double>(child.pendingUnitCount) * child.progress->fractionCompleted();
  }
  return std::min(completed / static_cast<double>(totalUnitCount_), 1.0);
}

bool Progress::isFinished() const {
  return totalUnitCount_ > 0 && completedUnitCount_ >= totalUnitCount_;
}

Progress::Observation Progress::observe(Observer observer) {
  return observers_.add(std::move(observer));
}

bool Progress::isSelfOrAncestor(const Progress& other) const {
  for (auto node = shared_from_this(); node; node = node->parent_.lock()) {
    if (node.get() == &other) return true;
  }
  return false;
}

/// Upwards in a loop: a chain may be deeper than the stack.
void Progress::didChange() {
  scheduleNotification();
  auto child = shared_from_this();
  while (const auto parent = child->parent_.lock()) {
    if (child->isFinished()) parent->absorb(*child);
    parent->scheduleNotification();
    child = parent;
  }
}

void Progress::absorb(Progress& child) {
  const auto place =
      std::ranges::find(children_, &child, [](const Child& entry) { return entry.progress.get(); });
  if (place == children_.end()) return;
  completedUnitCount_ = saturatingSum(completedUnitCount_, place->pendingUnitCount);
  child.parent_.reset();
  children_.erase(place);
}

void Progress::scheduleNotification() {
  if (observers_.isEmpty() || std::exchange(isNotificationPending_, true)) return;
  DispatchQueue::main().async([weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) self->notify();
  });
}

void Progress::notify() {
  isNotificationPending_ = false;
  observers_.notify(*this);
}

}  // namespace quillbay::platform
