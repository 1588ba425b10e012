#include <QuillbayCloud/Classes/ActivityMonitor.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace quillbay::cloud {

std::shared_ptr<ActivityMonitor> ActivityMonitor::create(std::size_t fileCount) {
  return std::shared_ptr<ActivityMonitor>(new ActivityMonitor(fileCount));
}

ActivityMonitor::ActivityMonitor(std::size_t fileCount)
    : latestRun_(std::make_shared<RunActivity>(std::weak_ptr<ActivityMonitor>(), Files(), fileCount,
                                               std::vector<std::size_t>())),
      fileCount_(fileCount) {}

const SessionActivity& ActivityMonitor::activity() const { return latestRun_->activity(); }

const std::vector<std::size_t>& ActivityMonitor::uploadedItems() const {
  return latestRun_->uploadedItems();
}

std::shared_ptr<RunActivity> ActivityMonitor::beginRun(Files files,
                                                       std::vector<std::size_t> uploadedItems) {
  latestRun_ = std::make_shared<RunActivity>(weak_from_this(), std::move(files), fileCount_,
                                             std::move(uploadedItems));
  latestRun_->begin();
  return latestRun_;
}

void ActivityMonitor::cancelRun() const { latestRun_->cancel(); }

void ActivityMonitor::scheduleNotification() {
  if (observers_.isEmpty() || std::exchange(isNotificationPending_, true)) return;
  platform::DispatchQueue::main().async([weakSelf = weak_from_this()] {
    const auto self = weakSelf.lock();
    if (!self) return;
    self->isNotificationPending_ = false;
    // An observer may start the next run.
    const auto run = self->latestRun_;
    self->observers_.notify(run->activity());
  });
}

RunActivity::RunActivity(std::weak_ptr<ActivityMonitor> monitor, Files files, std::size_t fileCount,
                         std::vector<std::size_t> uploadedItems)
    : monitor_(std::move(monitor)),
      files_(std::move(files)),
      byteCounts_(files_.size()),
      uploadedItems_(std::move(uploadedItems)) {
  activity_.fileCount = fileCount;
  activity_.finishedFileCount = uploadedItems_.size();
}

void RunActivity::fingerprinting(std::size_t position, std::uint64_t byteCount,
                                 std::uint64_t totalByteCount) {
  if (activity_.isOver()) return;
  activity_.fingerprintedByteCount = byteCount;
  activity_.totalByteCount = totalByteCount;
  enter(Step::fingerprinting, position);
}

void RunActivity::fingerprinted(const std::vector<std::optional<std::uint64_t>>& byteCounts) {
  if (activity_.isOver()) return;
  for (std::size_t position = 0; position < byteCounts.size(); ++position) {
    byteCounts_[position] = byteCounts[position].value_or(0);
    if (!byteCounts[position]) activity_.filesWithoutFingerprint.push_back(files_[position]);
  }
  activity_.totalByteCount =
      std::accumulate(byteCounts_.begin(), byteCounts_.end(), std::uint64_t{0});
  activity_.fingerprintedByteCount = activity_.totalByteCount;
  // The last file hashed is not what the step is about any more.
  activity_.file.reset();
}

void RunActivity::creatingSession() { enter(Step::creatingSession, std::nullopt); }

void RunActivity::uploading(Step step, std::size_t position) {
  enter(step, position);
  // All of it is sent, even if its last progress comes later than the store's reply.
  const bool isSent = step == Step::finalizing && !activity_.isOver();
  if (isSent) activity_.sentByteCount = arrivedByteCount_ + byteCounts_[position];
}

void RunActivity::sent(std::uint64_t byteCount) {
  if (activity_.step != Step::uploading) return;
  // An empty file's progress counts no bytes; one that has grown is cut where it was announced.
  activity_.sentByteCount = arrivedByteCount_ + std::min(byteCount, byteCounts_[*position_]);
  changed();
}

void RunActivity::uploaded() {
  if (!position_) return;
  uploadedItems_.push_back(files_[*position_].index);
  arrivedByteCount_ += byteCounts_[*position_];
  if (activity_.isOver()) return;
  activity_.sentByteCount = arrivedByteCount_;
  ++activity_.finishedFileCount;
}

void RunActivity::finish() {
  if (activity_.isOver()) return;
  activity_.file.reset();
  end(Step::finished);
}

void RunActivity::cancel() {
  if (activity_.step != Step::idle) end(Step::cancelled);
}

void RunActivity::fail() {
  if (activity_.step == Step::cancelled) {
    activity_.step = Step::failed;
    return changed();
  }
  end(Step::failed);
}

void RunActivity::fail(std::size_t position) {
  activity_.file = files_[position];
  fail();
}

void RunActivity::enter(Step step, std::optional<std::size_t> position) {
  position_ = position;
  if (activity_.isOver()) return;
  activity_.step = step;
  activity_.file.reset();
  if (position) activity_.file = files_[*position];
  changed();
}

void RunActivity::end(Step step) {
  if (activity_.isOver()) return;
  activity_.endedIn = std::exchange(activity_.step, step);
  changed();
}

void RunActivity::changed() const {
  if (const auto monitor = monitor_.lock()) monitor->scheduleNotification();
}

}  // namespace quillbay::cloud
