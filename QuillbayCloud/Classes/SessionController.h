#pragma once

#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/model/SessionActivity.h>
#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/model/SessionContext.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/Observation.h>
#include <QuillbayPlatform/Progress.h>

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillbay::cloud {

class ActivityMonitor;
class FileFingerprint;
class RunActivity;
class SessionItemUploadQueue;
class Webservice;

/// Shares files: fingerprints them (SHA-256, FIPS 180-4), creates a session on the service, uploads
/// one file after the other, the last one first. Nothing is retried, and nothing that is done is
/// undone; what has not arrived can be uploaded later under the same link.
///
/// Threads: create, call and release it on the main queue's thread; every callback arrives there,
/// never inside the call that started the work. Callbacks are destroyed there too, and must not
/// throw.
///
/// Lifetime: work in flight does not keep the controller alive. Releasing it ends the run quietly:
/// a transfer in flight still runs to its end, and only a failure of the fingerprints or of the
/// creation of the session is still reported.
class QUILLBAY_EXPORT SessionController : public std::enable_shared_from_this<SessionController> {
 public:
  /// The session as the service created it.
  using SessionCreation = std::move_only_function<void(const Session&)>;
  /// How a run has ended: with the session, or with the error.
  using Completion = std::move_only_function<void(std::expected<Session, QuillbayCloudError>)>;
  /// How a deletion has ended.
  using DeletionCompletion = std::move_only_function<void(std::expected<void, QuillbayCloudError>)>;

  /// Does no work.
  static std::shared_ptr<SessionController> create(SessionContext context,
                                                   SessionConfiguration configuration);
  SessionController(const SessionController&) = delete;
  SessionController& operator=(const SessionController&) = delete;
  ~SessionController();

  /// As given to `create`.
  const SessionContext& context() const { return context_; }
  /// As given to `create`.
  const SessionConfiguration& configuration() const { return configuration_; }

  /// The upload of all files, 100 units a file, moving by bytes sent. Fingerprints and the creation
  /// of the session do not move it. Read and observe it on the main queue.
  const std::shared_ptr<platform::Progress>& progress() const { return progress_; }

  /// Starts a run and returns at once.
  ///
  /// `sessionCreation` is called at most once, before the first upload, so that the link can be
  /// shown while files are on their way; it may be empty. Then `completion` is called once with the
  /// same session when every file has arrived, or, at any stage, with the error that ended the run:
  ///
  /// - fingerprints: `fingerprintFailure` (a file cannot be read, or is in the list twice)
  /// - the request: `invalidFile` (a file vanished, a text is not UTF-8, or the expiration date is
  ///   not finite)
  /// - creation: `webservice`, `invalidResponse`, `underlying`
  /// - uploads: `aws`, `underlying`, `invalidFile`, `invalidResponse`, `webservice`,
  /// `missingItems`;
  ///   `invalidResponse` too for a session with more items than files, before any upload
  ///
  /// A run that is cancelled, or whose controller is released, ends without `completion`, except
  /// for the failures that `cancel` and the lifetime above name.
  void createSession(SessionCreation sessionCreation, Completion completion);
  /// The same without `sessionCreation`, for a host that shows the link at the end.
  void createSession(Completion completion);

  /// Uploads the files of an existing session that have not arrived, under its link, and returns at
  /// once. The session may come from an earlier launch: a host keeps it in the JSON form of
  /// `Session`, written with `JSONDatePolicy::secondsSince1970`. The context must list the files in
  /// the order in which they were announced, and the configuration have the link type of the
  /// session; the rest of it does not matter.
  ///
  /// `uploadedItems`: positions in the context's list of the files that have arrived, such as
  /// `uploadedItems()` of the run that was cut short; positions beyond the list are ignored. Those
  /// files need not exist any more.
  ///
  /// The files that are left are fingerprinted first. `completion` is called once with `session`,
  /// or with the error that ended the run: those of `createSession` after its creation,
  /// `fingerprintFailure` for a file that cannot be read, and `invalidFile`, before any upload, for
  /// one whose content is not the announced one; `activity` names it. A session that has expired or
  /// was deleted gives the service's refusal.
  void resumeSession(const Session& session, std::span<const std::size_t> uploadedItems,
                     Completion completion);

  /// What the latest run is doing.
  const SessionActivity& activity() const;

  /// Positions in the context's list of the files that the service has confirmed in the latest run,
  /// and of those that it was told of by `resumeSession`.
  const std::vector<std::size_t>& uploadedItems() const;

  /// Gets what the latest run is doing.
  using ActivityObserver = std::function<void(const SessionActivity&)>;

  /// Calls `observer` on the main queue after each change of the step, and at most ten times a
  /// second while bytes move; changes in one turn of the main queue arrive as one.
  [[nodiscard]] platform::Observation observeActivity(ActivityObserver observer);

  /// Ends the current run and every later one of this controller, for good. Stops no transfer
  /// and deletes nothing on the service.
  ///
  /// - While fingerprinting: the file being read is read to its end; no callback comes.
  /// - While the session is being created: the call runs on. `sessionCreation` is still called if
  ///   it succeeds, `completion` only if it fails.
  /// - While uploading: the upload in flight runs to its end; no callback comes.
  /// - Before a run: the run creates its session and stops as above.
  void cancel();

  /// Deletes a session on the service; needs no controller. Any thread. `completion` is called once
  /// on the main queue; errors: `webservice` (unknown session, wrong token), `invalidResponse`,
  /// `underlying`.
  static void deleteSession(std::string_view sessionIdentifier, std::string_view instanceIdentifier,
                            std::string_view token, DeletionCompletion completion);

 private:
  QUILLBAY_HIDDEN SessionController(SessionContext context, SessionConfiguration configuration);

  using Fingerprints = std::unordered_map<platform::URL, std::string>;
  /// What a run does once its files are fingerprinted.
  using Continuation =
      std::move_only_function<void(SessionController&, const Fingerprints&, Completion)>;

  /// `itemCount`: how many items the session has, or will have.
  QUILLBAY_HIDDEN std::shared_ptr<RunActivity> beginRun(std::size_t itemCount,
                                                        std::span<const std::size_t> uploadedItems);
  QUILLBAY_HIDDEN void fingerprintFiles(std::string_view operation, std::string_view nextStep,
                                        const std::shared_ptr<RunActivity>& run,
                                        Completion completion, Continuation proceed);
  QUILLBAY_HIDDEN void requestSession(const Fingerprints& fingerprints,
                                      const std::shared_ptr<RunActivity>& run,
                                      SessionCreation sessionCreation, Completion completion);
  QUILLBAY_HIDDEN void resumeUploads(const Session& session, const Fingerprints& fingerprints,
                                     const std::shared_ptr<RunActivity>& run,
                                     Completion completion);
  QUILLBAY_HIDDEN void uploadItems(const Session& session, const std::shared_ptr<RunActivity>& run,
                                   Completion completion);
  QUILLBAY_HIDDEN static void reportLater(const QuillbayCloudError& error, Completion completion);

  const SessionContext context_;
  const SessionConfiguration configuration_;
  const std::shared_ptr<platform::Progress> progress_;
  const std::shared_ptr<const Webservice> webservice_;
  bool cancelled_ = false;
  std::shared_ptr<SessionItemUploadQueue> uploader_;
  std::shared_ptr<FileFingerprint> fileFingerprint_;
  const std::shared_ptr<ActivityMonitor> activityMonitor_;
};

}  // namespace quillbay::cloud
