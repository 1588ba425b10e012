#pragma once

#include <QuillbayCloud/Classes/SessionController.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FailureAdvice.h"
#include "SharedFiles.h"
#include "TransferEstimate.h"

namespace quillbay::host {

class History;
struct RememberedFile;

/// One share from its first fingerprint to its end: creates the session, uploads the files, tries
/// again when the network fails, deletes the session of a run that is cancelled or fails, and keeps
/// the history up to date. It shows nothing: a program presents it.
///
/// Main queue only. It may be released at any time; calls in flight then report to nothing.
class ShareRun {
 public:
  using Clock = std::chrono::steady_clock;

  /// The steps of the library are those of `activity()`.
  enum class Phase {
    working,
    waiting,     ///< for the next try
    cancelling,  ///< the session's creation is in flight; its reply is awaited to delete it
    deleting,    ///< the session is being deleted
    over,
  };

  enum class Result { shared, failed, cancelled };

  /// What has become of the session of a run that is over.
  enum class SessionFate {
    none,         ///< there is none
    perhapsMade,  ///< its creation was not answered: it may exist, empty, with an unknown link
    complete,     ///< every file is behind the link
    unfinished,   ///< it stays without some of its files
    deleted,
    perhapsThere,  ///< its deletion was not confirmed: the link may still work
  };

  struct Settings {
    /// How often the network may fail in a row without a file having arrived in between.
    int retryCount = 5;
    /// The session of a cancelled or failed run stays.
    bool keepsSession = false;
    /// The session of a failed run stays if the history remembers it, so that it can be continued.
    bool keepsUnfinishedSession = false;
    /// How long a cancelled or failed run may take to clean up.
    std::chrono::milliseconds cancelBound{1500};
    std::chrono::milliseconds failureBound{10'000};
    NetworkOptions network = {};
    FailureAudience audience = FailureAudience::terminal;
    std::function<Clock::time_point()> clock = Clock::now;
  };

  /// A share of an earlier run that is to be continued.
  struct Unfinished {
    cloud::Session session;
    /// Positions of the files that have arrived.
    std::vector<std::size_t> uploadedItems;
    /// In the history; 0 if it is not remembered.
    std::int64_t historyIdentifier = 0;
  };

  struct Failure {
    cloud::QuillbayCloudError error;
    FailureContext context;
    /// Position of the file that it is about.
    std::optional<std::size_t> fileIndex = {};
    FailureAdvice advice;
  };

  /// Who presents the run. Each call may release the run.
  class Presenter {
   public:
    virtual ~Presenter() = default;
    /// The link exists. `isDoomed`: the run was cancelled meanwhile, and the session is about to be
    /// deleted.
    virtual void sessionCreated(const cloud::Session& session, bool isDoomed) = 0;
    /// The run has failed for good; what becomes of the session follows.
    virtual void failed(const Failure& failure) = 0;
    virtual void phaseChanged() = 0;
  };

  /// `history`, which may be null, and `presenter` outlive the run.
  ShareRun(std::string instanceIdentifier, cloud::SessionConfiguration configuration,
           SharedFiles files, Settings settings, History* history, Presenter& presenter);
  ShareRun(const ShareRun&) = delete;
  ShareRun& operator=(const ShareRun&) = delete;

  /// Makes the run continue an earlier share: under its link, and without deleting it whatever
  /// happens. Before `start`.
  void continueFrom(Unfinished share);

  void start();
  /// Ends the run within its bound. What exists of a new share is deleted.
  void cancel();
  /// As `cancel`, but the session stays, to be continued later.
  void suspend();
  /// As `cancel`, but the run has failed: its link could not be given to anyone.
  void giveUp();
  /// Does not wait any longer for the next try.
  void retryNow();
  /// Watches the time. Call it a few times a second.
  void tick();

  Phase phase() const { return phase_; }
  /// What the library is doing, or was doing when the run ended.
  const cloud::SessionActivity& activity() const { return controller_->activity(); }
  const std::optional<cloud::Session>& session() const { return session_; }
  const SharedFiles& files() const { return files_; }
  const std::string& instanceIdentifier() const { return context_.instanceIdentifier(); }
  /// The history knows the share, and can be used to continue or delete it.
  bool isRemembered() const;
  /// The share in the history; 0 if that does not know it.
  std::int64_t historyIdentifier() const { return historyIdentifier_; }

  /// Of a run that is over.
  Result result() const { return result_; }
  SessionFate sessionFate() const { return sessionFate_; }
  /// Of a run that failed or waits for its next try.
  const std::optional<Failure>& failure() const { return failure_; }
  /// Why the session could not be deleted; absent if the service did not answer in time.
  const std::optional<Failure>& deletionFailure() const { return deletionFailure_; }

  /// Of a run that is waiting: which try comes next (1 is the first repetition), and when.
  int attempt() const { return attempt_; }
  int retryCount() const { return settings_.retryCount; }
  std::chrono::seconds untilNextTry() const;

  /// The library's measure: 0 to 1, every file alike.
  double libraryFraction() const { return controller_->progress()->fractionCompleted(); }
  /// By bytes, and the files of earlier runs included.
  std::size_t arrivedFileCount() const { return arrivedItems_.size(); }
  std::uint64_t sentByteCount() const;
  /// Of the file of the activity: 0 to 1.
  double sentFractionOfFile() const;
  /// Positions of the files that have arrived, in the order in which they did.
  const std::vector<std::size_t>& arrivedItems() const { return arrivedItems_; }
  const TransferEstimate& estimate() const { return estimate_; }

 private:
  using SessionResult = std::expected<cloud::Session, cloud::QuillbayCloudError>;

  void work();
  void sessionCreated(const cloud::Session& session);
  void completed(const SessionResult& result);
  void noteArrivals();
  void rememberArrivals();

  Failure failureOf(const cloud::QuillbayCloudError& error) const;
  Failure makeFailure(const cloud::QuillbayCloudError& error, FailureContext context,
                      std::optional<std::size_t> fileIndex) const;
  std::vector<RememberedFile> rememberedFiles() const;
  bool scheduleRetry(const Failure& failure);
  void fail(Failure failure);
  void stop(Result result, std::chrono::milliseconds bound);
  /// The link of an earlier run may be in use.
  bool keepsSession() const { return isContinuation_ || isSuspended_ || settings_.keepsSession; }
  void settleSession();
  void deleteSession();
  void deletionCompleted(const std::expected<void, cloud::QuillbayCloudError>& result);
  void deadlinePassed();
  void boundBy(std::chrono::milliseconds bound);
  void end(SessionFate fate);
  void setPhase(Phase phase);
  Clock::time_point now() const { return settings_.clock(); }

  const cloud::SessionContext context_;
  const cloud::SessionConfiguration configuration_;
  const SharedFiles files_;
  const Settings settings_;
  History* const history_;
  Presenter& presenter_;

  std::shared_ptr<cloud::SessionController> controller_;
  platform::Observation activityObservation_;
  /// An earlier run has made the session.
  bool isContinuation_ = false;
  bool isSuspended_ = false;
  std::optional<cloud::Session> session_;
  std::int64_t historyIdentifier_ = 0;
  /// Positions of the files that have arrived.
  std::vector<std::size_t> arrivedItems_;
  std::uint64_t arrivedByteCount_ = 0;
  /// Of these, how many the history knows of, and when it is to be told of the next.
  std::size_t rememberedItemCount_ = 0;
  Clock::time_point nextRemembering_;

  Phase phase_ = Phase::working;
  Result result_ = Result::shared;
  SessionFate sessionFate_ = SessionFate::none;
  std::optional<Failure> failure_;
  std::optional<Failure> deletionFailure_;
  int attempt_ = 0;
  std::optional<Clock::time_point> nextTry_;
  std::optional<Clock::time_point> deadline_;
  TransferEstimate estimate_;
  /// Callbacks of the library may come when this object has gone.
  const std::shared_ptr<ShareRun*> self_ = std::make_shared<ShareRun*>(this);
};

}  // namespace quillbay::host
