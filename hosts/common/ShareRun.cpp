#include "ShareRun.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <utility>

#include "History.h"

namespace quillbay::host {
namespace {

using cloud::QuillbayCloudError;
using cloud::Session;
using cloud::SessionActivity;
using cloud::SessionController;

/// A transaction for each small file costs some of the time of their share. What a killed program
/// has not written yet, the next one uploads again.
constexpr std::chrono::milliseconds kRememberInterval(100);

/// 1, 2, 4, 8, 16 seconds, and no longer ones.
std::chrono::seconds retryDelay(int attempt) {
  constexpr int kMaximumDoublings = 4;
  return std::chrono::seconds(1 << std::min(attempt - 1, kMaximumDoublings));
}

/// Null once the run has gone. Keeps no reference: the run asks later whether a call released it.
ShareRun* runOf(const std::weak_ptr<ShareRun*>& self) {
  const auto run = self.lock();
  return run ? *run : nullptr;
}

RememberedShare::State rememberedState(ShareRun::SessionFate fate) {
  using Fate = ShareRun::SessionFate;
  if (fate == Fate::complete) return RememberedShare::State::complete;
  if (fate == Fate::deleted) return RememberedShare::State::deleted;
  return RememberedShare::State::unfinished;
}

}  // namespace

ShareRun::ShareRun(std::string instanceIdentifier, cloud::SessionConfiguration configuration,
                   SharedFiles files, Settings settings, History* history, Presenter& presenter)
    : context_(std::move(instanceIdentifier), files.urls()),
      configuration_(std::move(configuration)),
      files_(std::move(files)),
      settings_(std::move(settings)),
      history_(history),
      presenter_(presenter),
      controller_(SessionController::create(context_, configuration_)),
      estimate_(files_.totalByteCount(), files_.count(), now()) {}

void ShareRun::continueFrom(Unfinished share) {
  isContinuation_ = true;
  session_ = std::move(share.session);
  arrivedItems_ = std::move(share.uploadedItems);
  rememberedItemCount_ = arrivedItems_.size();
  historyIdentifier_ = share.historyIdentifier;
}

void ShareRun::start() {
  if (isRemembered()) {
    history_->setState(historyIdentifier_, RememberedShare::State::uploading);
  }
  work();
}

/// A new controller for each try: the progress of one counts all its runs together.
void ShareRun::work() {
  nextTry_.reset();
  controller_ = SessionController::create(context_, configuration_);
  activityObservation_ =
      controller_->observeActivity([this](const SessionActivity& /*activity*/) { noteArrivals(); });
  arrivedByteCount_ = files_.byteCount(arrivedItems_);
  estimate_.restart(now());
  auto report = [self = std::weak_ptr(self_)](const SessionResult& result) {
    if (ShareRun* const run = runOf(self)) run->completed(result);
  };
  if (session_) {
    controller_->resumeSession(*session_, arrivedItems_, std::move(report));
  } else {
    controller_->createSession(
        [self = std::weak_ptr(self_)](const Session& session) {
          if (ShareRun* const run = runOf(self)) run->sessionCreated(session);
        },
        std::move(report));
  }
  setPhase(Phase::working);
}

void ShareRun::sessionCreated(const Session& session) {
  if (phase_ == Phase::over) return;
  session_ = session;
  estimate_.restart(now());
  if (history_) {
    historyIdentifier_ =
        history_->add(context_.instanceIdentifier(), session, configuration_.linkType(),
                      rememberedFiles(), std::chrono::system_clock::now());
  }
  const bool isCancelled = phase_ == Phase::cancelling;
  const std::weak_ptr self = self_;
  presenter_.sessionCreated(session, isCancelled && !keepsSession());
  if (!self.expired() && isCancelled) settleSession();
}

void ShareRun::completed(const SessionResult& result) {
  if (phase_ == Phase::over) return;
  noteArrivals();
  // The creation of a cancelled run has failed.
  if (phase_ == Phase::cancelling) {
    const bool mayBeMade = !result && failureOf(result.error()).advice.isUncertain;
    return end(mayBeMade ? SessionFate::perhapsMade : SessionFate::none);
  }
  if (!result) {
    Failure failure = failureOf(result.error());
    if (!scheduleRetry(failure)) fail(std::move(failure));
    return;
  }
  result_ = Result::shared;
  end(SessionFate::complete);
}

/// The library adds what arrives to the end of its list.
void ShareRun::noteArrivals() {
  const auto& uploadedItems = controller_->uploadedItems();
  while (arrivedItems_.size() < uploadedItems.size()) {
    const std::size_t index = uploadedItems[arrivedItems_.size()];
    arrivedItems_.push_back(index);
    attempt_ = 0;
  }
  if (now() >= nextRemembering_) rememberArrivals();
}

void ShareRun::rememberArrivals() {
  const auto news = std::span(arrivedItems_).subspan(rememberedItemCount_);
  if (news.empty()) return;
  nextRemembering_ = now() + kRememberInterval;
  rememberedItemCount_ = arrivedItems_.size();
  if (isRemembered()) history_->noteArrivals(historyIdentifier_, news);
}

std::vector<RememberedFile> ShareRun::rememberedFiles() const {
  std::vector<RememberedFile> files;
  for (std::size_t index = 0; index < files_.count(); ++index) {
    const auto path = std::filesystem::absolute(files_.paths()[index]);
    files.push_back({.path = path.string(), .byteCount = files_.byteCount(index)});
  }
  return files;
}

ShareRun::Failure ShareRun::failureOf(const QuillbayCloudError& error) const {
  const SessionActivity& activity = controller_->activity();
  const ShareStep step = stepOf(activity.endedIn);
  const bool isChecking = session_ && step == ShareStep::fingerprinting;
  FailureContext context{.step = isChecking ? ShareStep::checkingFiles : step,
                         .transportError = activity.transportError,
                         .network = settings_.network};
  const auto suspect = files_.suspect(activity);
  if (!suspect) return makeFailure(error, std::move(context), std::nullopt);
  context.subject = files_.displayName(suspect->index, settings_.audience);
  context.fileChange = suspect->change;
  // The library compares the content with the announced one only before it uploads anew.
  const bool isOther = context.step == ShareStep::checkingFiles &&
                       context.fileChange == FileChange::none &&
                       error == QuillbayCloudError::invalidFile();
  if (isOther) context.fileChange = FileChange::contentChanged;
  return makeFailure(error, std::move(context), suspect->index);
}

ShareRun::Failure ShareRun::makeFailure(const QuillbayCloudError& error, FailureContext context,
                                        std::optional<std::size_t> fileIndex) const {
  auto advice = FailureAdvice::of(error, context, settings_.audience);
  return {error, std::move(context), fileIndex, std::move(advice)};
}

bool ShareRun::scheduleRetry(const Failure& failure) {
  if (attempt_ >= settings_.retryCount) return false;
  if (!failure.advice.isWorthRetrying) return false;
  failure_ = failure;
  ++attempt_;
  nextTry_ = now() + retryDelay(attempt_);
  setPhase(Phase::waiting);
  return true;
}

void ShareRun::retryNow() {
  if (phase_ == Phase::waiting) work();
}

std::chrono::seconds ShareRun::untilNextTry() const {
  if (!nextTry_) return std::chrono::seconds(0);
  return std::max(std::chrono::seconds(0),
                  std::chrono::ceil<std::chrono::seconds>(*nextTry_ - now()));
}

void ShareRun::fail(Failure failure) {
  failure_ = std::move(failure);
  result_ = Result::failed;
  boundBy(settings_.failureBound);
  const std::weak_ptr self = self_;
  presenter_.failed(*failure_);
  if (self.expired()) return;
  if (settings_.keepsUnfinishedSession && isRemembered()) return end(SessionFate::unfinished);
  settleSession();
}

void ShareRun::cancel() { stop(Result::cancelled, settings_.cancelBound); }

void ShareRun::suspend() {
  isSuspended_ = true;
  cancel();
}

void ShareRun::giveUp() { stop(Result::failed, settings_.failureBound); }

void ShareRun::stop(Result result, std::chrono::milliseconds bound) {
  if (phase_ == Phase::over) return;
  boundBy(bound);
  if (phase_ == Phase::cancelling || phase_ == Phase::deleting) return;
  const bool isCreating = !session_ && phase_ == Phase::working &&
                          activity().step == SessionActivity::Step::creatingSession;
  result_ = result;
  controller_->cancel();
  // Creation is in flight: await its reply, so that the session can be deleted.
  if (isCreating) return setPhase(Phase::cancelling);
  settleSession();
}

/// What becomes of the session of a run that does not complete it.
void ShareRun::settleSession() {
  if (!session_) return end(SessionFate::none);
  if (keepsSession()) return end(SessionFate::unfinished);
  deleteSession();
}

void ShareRun::deleteSession() {
  SessionController::deleteSession(session_->identifier(), context_.instanceIdentifier(),
                                   session_->token().value_or(""),
                                   [self = std::weak_ptr(self_)](const auto& result) {
                                     if (ShareRun* const run = runOf(self)) {
                                       run->deletionCompleted(result);
                                     }
                                   });
  setPhase(Phase::deleting);
}

void ShareRun::deletionCompleted(const std::expected<void, QuillbayCloudError>& result) {
  if (phase_ == Phase::over) return;
  if (result) return end(SessionFate::deleted);
  deletionFailure_ = makeFailure(result.error(),
                                 {.step = ShareStep::deletingSession,
                                  .subject = session_->identifier(),
                                  .network = settings_.network},
                                 std::nullopt);
  end(SessionFate::perhapsThere);
}

void ShareRun::tick() {
  if (phase_ == Phase::over) return;
  if (now() >= nextRemembering_) rememberArrivals();
  if (deadline_ && now() >= *deadline_) return deadlinePassed();
  if (nextTry_ && now() >= *nextTry_) return work();
  if (phase_ == Phase::working) estimate_.update(sentByteCount(), arrivedItems_.size(), now());
}

void ShareRun::deadlinePassed() {
  end(phase_ == Phase::deleting ? SessionFate::perhapsThere : SessionFate::perhapsMade);
}

void ShareRun::boundBy(std::chrono::milliseconds bound) {
  const Clock::time_point latest = now() + bound;
  deadline_ = std::min(deadline_.value_or(latest), latest);
}

void ShareRun::end(SessionFate fate) {
  sessionFate_ = fate;
  deadline_.reset();
  nextTry_.reset();
  rememberArrivals();
  if (isRemembered()) history_->setState(historyIdentifier_, rememberedState(fate));
  setPhase(Phase::over);
}

std::uint64_t ShareRun::sentByteCount() const {
  return arrivedByteCount_ + controller_->activity().sentByteCount;
}

double ShareRun::sentFractionOfFile() const {
  const auto& file = activity().file;
  if (!file || files_.byteCount(file->index) == 0) return 0;
  const auto others = static_cast<double>(files_.byteCount(arrivedItems_));
  const double sent = static_cast<double>(sentByteCount()) - others;
  return std::clamp(sent / static_cast<double>(files_.byteCount(file->index)), 0.0, 1.0);
}

bool ShareRun::isRemembered() const {
  return history_ != nullptr && historyIdentifier_ != 0 && !history_->problem();
}

void ShareRun::setPhase(Phase phase) {
  phase_ = phase;
  presenter_.phaseChanged();
}

}  // namespace quillbay::host
