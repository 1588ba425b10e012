#pragma once

#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/model/SessionContext.h>
#include <QuillbayPlatform/Progress.h>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillbay::cloud {

class FileFingerprint;
class SessionItemUploadQueue;
class Webservice;

/// Shares files: fingerprints them (SHA-256, FIPS 180-4), creates a session on the service, uploads
/// one file after the other, the last one first. Nothing is retried, and nothing that is done is
/// undone.
///
/// Threads: create, call and release it on the main queue's thread; every callback arrives there,
/// never inside the call that started the work. Callbacks are destroyed there too, and must not
/// throw.
///
/// Lifetime: work in flight does not keep the controller alive. Releasing it ends the run quietly:
/// a transfer in flight still runs to its end, and only a failure of the fingerprints or of the
/// creation of the session is still reported.
class SessionController : public std::enable_shared_from_this<SessionController> {
 public:
  /// The session as the service created it.
  using SessionCreation = std::move_only_function<void(const Session&)>;
  using Completion = std::move_only_function<void(std::expected<Session, QuillbayCloudError>)>;
  using DeletionCompletion = std::move_only_function<void(std::expected<void, QuillbayCloudError>)>;

  /// Does no work.
  static std::shared_ptr<SessionController> create(SessionContext context,
                                                   SessionConfiguration configuration);
  SessionController(const SessionController&) = delete;
  SessionController& operator=(const SessionController&) = delete;
  ~SessionController();

  const SessionContext& context() const { return context_; }
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
  /// - fingerprints: `fingerprintFailure` (a file cannot be read, or stands twice in the list)
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
  void createSession(Completion completion);

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
  SessionController(SessionContext context, SessionConfiguration configuration);

  void requestSession(const std::unordered_map<platform::URL, std::string>& fingerprints,
                      SessionCreation sessionCreation, Completion completion);
  void uploadItems(const Session& session, Completion completion);

  const SessionContext context_;
  const SessionConfiguration configuration_;
  const std::shared_ptr<platform::Progress> progress_;
  const std::shared_ptr<const Webservice> webservice_;
  bool cancelled_ = false;
  std::shared_ptr<SessionItemUploadQueue> uploader_;
  std::shared_ptr<FileFingerprint> fileFingerprint_;
};

}  // namespace quillbay::cloud
