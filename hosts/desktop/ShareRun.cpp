#include "ShareRun.h"

#include <cmath>
#include <string>
#include <utility>

#include "Localized.h"
#include "RunLog.h"

namespace quillbay::desktop {
namespace {

using Clock = host::TransferEstimate::Clock;

constexpr std::chrono::seconds kCleanUpBound{10};

QString textOf(const cloud::QuillbayCloudError& error) {
  const std::string text = error.errorDescription().value_or("");
  return text.empty() ? localized("failure.plain") : QString::fromStdString(text);
}

}  // namespace

ShareRun::ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
                   const std::vector<std::uint64_t>& byteCounts)
    : controller_(cloud::SessionController::create(std::move(context), std::move(configuration))),
      byteCounts_(byteCounts),
      estimate_(byteCounts, Clock::now()) {
  deadline_.setSingleShot(true);
  deadline_.callOnTimeout([this] {
    // A creation without an answer has left a session, or not: nobody knows its link.
    isSessionLeft_ = session_.has_value();
    finish(outcome_);
  });
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
  if (isOver() || phase_ == Phase::cleaningUp) return;
  const bool mayCreateSession = phase() == Phase::creating;
  controller_->cancel();
  if (!mayCreateSession) return cleanUp(Phase::cancelled);
  // Once it is asked for, a session may come into being that nobody would know of.
  outcome_ = Phase::cancelled;
  deadline_.start(kCleanUpBound);
  setPhase(Phase::cleaningUp);
}

void ShareRun::sessionCreated(const cloud::Session& session) {
  if (isOver()) return;
  session_ = session;
  if (phase_ == Phase::cleaningUp) return cleanUp(outcome_);
  estimate_ = host::TransferEstimate(byteCounts_, Clock::now());
  setPhase(Phase::uploading);
}

void ShareRun::completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result) {
  if (isOver()) return;
  if (phase_ == Phase::cleaningUp) return finish(outcome_);
  if (result) return finish(Phase::done);
  failureText_ = textOf(result.error());
  cleanUp(Phase::failed);
}

void ShareRun::cleanUp(Phase outcome) {
  if (!session_) return finish(outcome);
  outcome_ = outcome;
  deadline_.start(kCleanUpBound);
  cloud::SessionController::deleteSession(
      session_->identifier(), controller_->context().instanceIdentifier(),
      session_->token().value_or(""), [self = std::weak_ptr(self_)](auto result) {
        const auto run = self.lock();
        if (!run || (*run)->isOver()) return;
        (*run)->isSessionLeft_ = !result;
        (*run)->finish((*run)->outcome_);
      });
  setPhase(Phase::cleaningUp);
}

void ShareRun::finish(Phase outcome) {
  deadline_.stop();
  setPhase(outcome);
}

void ShareRun::setPhase(Phase phase) {
  phase_ = phase;
  // A copy: it may release this object.
  if (const auto onChange = onChange_) onChange();
}

ShareRun::Phase ShareRun::phase() const {
  // The library tells of this step in its log alone.
  const bool isCreating =
      phase_ == Phase::fingerprinting && RunLog::step() == host::RunJournal::Step::creatingSession;
  return isCreating ? Phase::creating : phase_;
}

bool ShareRun::isOver() const {
  return phase_ == Phase::done || phase_ == Phase::failed || phase_ == Phase::cancelled;
}

QString ShareRun::link() const {
  return session_ ? QString::fromStdString(session_->url().absoluteString()) : QString();
}

std::size_t ShareRun::filesDone() const {
  if (phase_ == Phase::done) return fileCount();
  // Every file counts alike. A hair more: a sum of fractions may fall short of a whole one.
  const double done = controller_->progress()->fractionCompleted();
  return static_cast<std::size_t>((done * static_cast<double>(fileCount())) + 1e-6);
}

void ShareRun::updateEstimate() {
  estimate_.update(controller_->progress()->fractionCompleted(), Clock::now());
}

}  // namespace quillbay::desktop
