#pragma once

#include <QuillbayCloud/model/SessionActivity.h>
#include <QuillbayPlatform/Observation.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quillbay::cloud {

class RunActivity;

/// Internal: shows the activity of a controller's latest run to its observers. Main queue only.
class ActivityMonitor : public std::enable_shared_from_this<ActivityMonitor> {
 public:
  using Observer = platform::ObserverList<SessionActivity>::Observer;
  using Files = std::vector<SessionActivity::File>;

  static std::shared_ptr<ActivityMonitor> create(std::size_t fileCount);

  /// Of the latest run; `idle` before the first.
  const SessionActivity& activity() const;
  /// Of the latest run: see `RunActivity`.
  const std::vector<std::size_t>& uploadedItems() const;

  [[nodiscard]] platform::Observation observe(Observer observer) {
    return observers_.add(std::move(observer));
  }

  /// A new run takes the place of the one observed so far. `files`: those that it uploads.
  std::shared_ptr<RunActivity> beginRun(Files files, std::vector<std::size_t> uploadedItems);

  /// Cancels the latest run, if there is one that is not over.
  void cancelRun() const;

  /// Calls the observers, later, once for all changes of this turn of the main queue.
  void scheduleNotification();

 private:
  explicit ActivityMonitor(std::size_t fileCount);

  std::shared_ptr<RunActivity> latestRun_;
  platform::ObserverList<SessionActivity> observers_;
  bool isNotificationPending_ = false;
  const std::size_t fileCount_;
};

/// Internal: the activity of one run, as its stages report it. The stages of a run hold their own
/// one, so that what is left of an earlier run never shows in a later one. Main queue only.
class RunActivity {
 public:
  using Step = SessionActivity::Step;
  using Files = ActivityMonitor::Files;

  /// `files`: those that the run uploads, in the order of the context. The positions below count
  /// in this list.
  RunActivity(std::weak_ptr<ActivityMonitor> monitor, Files files, std::size_t fileCount,
              std::vector<std::size_t> uploadedItems);

  const SessionActivity& activity() const { return activity_; }
  const Files& files() const { return files_; }
  /// Positions in the context's list of the files that have arrived, in any order.
  const std::vector<std::size_t>& uploadedItems() const { return uploadedItems_; }

  /// The run begins with its fingerprints.
  void begin() { enter(Step::fingerprinting, std::nullopt); }
  void fingerprinting(std::size_t position, std::uint64_t byteCount, std::uint64_t totalByteCount);
  /// What was read of each file; nothing of one that yielded no fingerprint.
  void fingerprinted(const std::vector<std::optional<std::uint64_t>>& byteCounts);
  void creatingSession();

  /// `step`: one of the three of an upload.
  void uploading(Step step, std::size_t position);
  /// `byteCount`: of the file that is being uploaded.
  void sent(std::uint64_t byteCount);
  /// The object store did not reply to the upload.
  void uploadUnanswered(platform::ErrorPtr error) { activity_.transportError = std::move(error); }
  /// The file that was being finalized has arrived.
  void uploaded();

  /// Ends the run; only the first end counts, but a failure that the host is told of counts even
  /// after a cancellation.
  void finish();
  void cancel();
  void fail();
  /// The failure is about one file.
  void fail(std::size_t position);

 private:
  void enter(Step step, std::optional<std::size_t> position);
  void end(Step step);
  void changed() const;

  const std::weak_ptr<ActivityMonitor> monitor_;
  const Files files_;
  std::vector<std::uint64_t> byteCounts_;
  std::vector<std::size_t> uploadedItems_;
  std::optional<std::size_t> position_;
  /// Of the files that have arrived in this run.
  std::uint64_t arrivedByteCount_ = 0;
  SessionActivity activity_;
};

}  // namespace quillbay::cloud
