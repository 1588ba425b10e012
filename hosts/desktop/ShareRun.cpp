#include "ShareRun.h"

#include <string>
#include <utility>

#include "RunLog.h"
#include "ShownText.h"
#include "hosts/common/FailureAdvice.h"

namespace quillbay::desktop {
namespace {

using Clock = host::TransferEstimate::Clock;

constexpr std::chrono::seconds kCleanUpBound{5};

}  // namespace

ShareRun::ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
                   std::vector<std::string> paths, host::NetworkOptions network)
    : controller_(cloud::SessionController::create(std::move(context), std::move(configuration))),
      watch_(std::move(paths)),
      network_(std::move(network)),
      estimate_(byteCounts(), Clock::now()) {
  deadline_.setSingleShot(true);
  // A creation without an answer may have left a session too, but its link went to no one.
  deadline_.callOnTimeout([this] { deletionEnded(!session_.has_value()); });
}

void ShareRun::start() {
  RunLog::begin();
  controller_->createSession(
      [self = std::weak_ptr(self_)](const cloud::Session& session) {
        if (const auto run = self.lock()) (*run)->sessionCreated(session);
      },
      [self = std::weak_ptr(self_)](auto result) {
        if (const auto run = self.lock()) (*run)->completed(result);
      });
}

void ShareRun::cancel() {
  if (isOver() || phase_ == Phase::cleaningUp || phase_ == Phase::deleting) return;
  const bool mayCreateSession = phase() == Phase::creating;
  controller_->cancel();
  if (!mayCreateSession) return cleanUp(Phase::cancelled);
  // Creation is in flight: await its reply, so that the session can be deleted.
  outcome_ = Phase::cancelled;
  deadline_.start(kCleanUpBound);
  setPhase(Phase::cleaningUp);
}

void ShareRun::sessionCreated(const cloud::Session& session) {
  if (isOver()) return;
  session_ = session;
  if (phase_ == Phase::cleaningUp) return cleanUp(outcome_);
  estimate_ = host::TransferEstimate(byteCounts(), Clock::now());
  setPhase(Phase::uploading);
}

void ShareRun::completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result) {
  if (isOver()) return;
  if (phase_ == Phase::cleaningUp) return finish(outcome_);
  if (result) return finish(Phase::done);
  failureText_ = textOf(result.error());
  cleanUp(Phase::failed);
}

void ShareRun::deleteShare() {
  if (phase_ != Phase::done) return;
  outcome_ = Phase::deleted;
  isSessionLeft_ = false;
  deleteSession();
  setPhase(Phase::deleting);
}

void ShareRun::cleanUp(Phase outcome) {
  if (!session_) return finish(outcome);
  outcome_ = outcome;
  deleteSession();
  setPhase(Phase::cleaningUp);
}

void ShareRun::deleteSession() {
  deadline_.start(kCleanUpBound);
  cloud::SessionController::deleteSession(
      session_->identifier(), controller_->context().instanceIdentifier(),
      session_->token().value_or(""), [self = std::weak_ptr(self_)](auto result) {
        if (const auto run = self.lock()) (*run)->deletionEnded(result.has_value());
      });
}

void ShareRun::deletionEnded(bool isDeleted) {
  // The reply may come after the deadline.
  if (isOver()) return;
  isSessionLeft_ = !isDeleted;
  finish(phase_ == Phase::deleting && isSessionLeft_ ? Phase::done : outcome_);
}

void ShareRun::finish(Phase outcome) {
  deadline_.stop();
  outcome_ = outcome;
  setPhase(outcome);
}

void ShareRun::setPhase(Phase phase) {
  phase_ = phase;
  // A copy: it may release this object.
  if (const auto onChange = onChange_) onChange();
}

QString ShareRun::textOf(const cloud::QuillbayCloudError& error) const {
  const host::RunJournal& journal = RunLog::journal();
  const auto [index, change] = watch_.suspect(journal);
  const std::string name = controller_->context().items()[index].lastPathComponent();
  const auto advice = host::FailureAdvice::of(error,
                                              {.step = journal.step(),
                                               .subject = quotedName(name).toStdString(),
                                               .fileChange = change,
                                               .isUploadUnanswered = journal.isUploadUnanswered(),
                                               .network = network_},
                                              host::FailureAudience::window);
  return QString::fromStdString(host::sentence(advice.whatFailed) + "\n" +
                                host::sentence(advice.whatToDo));
}

std::vector<std::uint64_t> ShareRun::byteCounts() const {
  std::vector<std::uint64_t> byteCounts;
  byteCounts.reserve(fileCount());
  for (std::size_t index = 0; index < fileCount(); ++index) {
    byteCounts.push_back(watch_.before(index).byteCount);
  }
  return byteCounts;
}

ShareRun::Phase ShareRun::phase() const {
  // The library tells of this step in its log alone.
  const bool isCreating = phase_ == Phase::fingerprinting &&
                          RunLog::journal().step() == host::RunJournal::Step::creatingSession;
  return isCreating ? Phase::creating : phase_;
}

bool ShareRun::isOver() const {
  return phase_ == Phase::done || phase_ == Phase::failed || phase_ == Phase::cancelled ||
         phase_ == Phase::deleted;
}

QString ShareRun::link() const {
  return session_ ? QString::fromStdString(session_->url().absoluteString()) : QString();
}

std::size_t ShareRun::filesDone() { return RunLog::journal().filesDone(); }

void ShareRun::updateEstimate() {
  estimate_.update(controller_->progress()->fractionCompleted(), Clock::now());
}

}  // namespace quillbay::desktop
