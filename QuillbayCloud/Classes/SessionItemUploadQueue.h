#pragma once

#include <QuillbayCloud/Classes/SessionItemUploader.h>
#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/Progress.h>
#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <vector>

namespace quillbay::cloud {

/// Internal: uploads the items of a session strictly one at a time, the last one first; the first
/// failure ends it. The n-th item is uploaded from the n-th file.
///
/// Main queue only. Its callbacks hold it weakly: when it is released, the upload in flight runs
/// on, and nothing is reported.
class SessionItemUploadQueue : public std::enable_shared_from_this<SessionItemUploadQueue> {
 public:
  using Result = std::expected<void, QuillbayCloudError>;
  using Completion = std::move_only_function<void(Result)>;

  /// `items`: the host's files, in the order in which they were announced. Those that `activity`
  /// knows as uploaded are left out.
  static std::shared_ptr<SessionItemUploadQueue> create(
      const std::shared_ptr<const Webservice>& webservice, const Session& session,
      const std::vector<platform::URL>& items, bool isInline,
      const std::shared_ptr<RunActivity>& activity);

  /// 100 units for each item that it uploads.
  const std::shared_ptr<platform::Progress>& progress() const { return progress_; }

  /// Starts and returns at once. `completion` is called at most once, later: with success, the
  /// first uploader's error, `missingItems` for a session without items, or `invalidResponse` for
  /// one with more items than files, before any upload.
  void start(Completion completion);

  /// To cancel: set `cancelled`, then clear the completion. No further item is started.
  void setCancelled(bool cancelled) { cancelled_ = cancelled; }
  void setCompletion(Completion completion);

 private:
  SessionItemUploadQueue(const std::shared_ptr<const Webservice>& webservice,
                         const Session& session, const std::vector<platform::URL>& files,
                         bool isInline, const std::shared_ptr<RunActivity>& activity);

  void uploadNextItem();
  void finish();
  void finish(const QuillbayCloudError& error);
  void report(Result result);

  const Session session_;
  const std::shared_ptr<platform::Progress> progress_;
  const bool hasFileForEachItem_;
  std::vector<std::shared_ptr<SessionItemUploader>> queue_;
  // Shared, so that a completion may clear or replace itself while it runs.
  std::shared_ptr<Completion> completion_;
  bool cancelled_ = false;
  std::shared_ptr<SessionItemUploader> currentUploader_;
};

}  // namespace quillbay::cloud
