#include "SharePresenter.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "FailureReport.h"
#include "FileProblems.h"
#include "ResultOutput.h"
#include "hosts/common/History.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using cloud::QuillbayCloudError;
using Activity = cloud::SessionActivity;
using Phase = host::ShareRun::Phase;
using Result = host::ShareRun::Result;
using Fate = host::ShareRun::SessionFate;

const char* nameOf(Activity::Step step) {
  switch (step) {
    case Activity::Step::fingerprinting:
      return "fingerprinting";
    case Activity::Step::creatingSession:
      return "creatingSession";
    case Activity::Step::requestingAddress:
      return "requestingAddress";
    case Activity::Step::uploading:
      return "uploading";
    case Activity::Step::finalizing:
      return "finalizing";
    default:
      return "idle";
  }
}

}  // namespace

SharePresenter::SharePresenter(Share share, Surroundings surroundings)
    : options_(surroundings.options),
      instanceIdentifier_(share.instanceIdentifier),
      output_(surroundings.output),
      console_(surroundings.console),
      history_(surroundings.history),
      linkDisplay_(surroundings.linkDisplay),
      hasTemporaryFiles_(share.hasTemporaryFiles),
      progress_(console_),
      run_(std::move(share.instanceIdentifier), std::move(share.configuration),
           std::move(share.files), std::move(share.settings), history_, *this) {
  if (share.unfinished) run_.continueFrom(std::move(*share.unfinished));
}

void SharePresenter::start() {
  const bool isNew = !run_.session();
  if (isNew) {
    for (const std::string& problem : fileProblems(run_.files())) {
      console_.printError(problem);
      hasFileProblems_ = true;
    }
    for (const std::string& text : fileAliases(run_.files())) {
      console_.printNote("quillbay: " + text);
    }
  }
  warnOfHistory();
  run_.start();
  if (!isNew) sessionCreated(*run_.session(), false);
}

void SharePresenter::tick(Clock::time_point now) {
  run_.tick();
  const bool isWorking = run_.phase() == Phase::working;
  if (isWorking || run_.phase() == Phase::waiting) progress_.show(run_, now);
  if (!isWorking || !run_.session()) return;
  const Activity& activity = run_.activity();
  if (activity.isOver()) return;
  const auto fileIndex = activity.file ? std::optional(activity.file->index) : std::nullopt;
  output_.progressed({.fraction = run_.libraryFraction(),
                      .step = nameOf(activity.step),
                      .file = pathAt(fileIndex),
                      .byteCount = run_.sentByteCount(),
                      .totalByteCount = run_.files().totalByteCount()});
}

std::optional<ExitStatus> SharePresenter::status() const {
  if (run_.phase() != Phase::over) return std::nullopt;
  if (run_.result() == Result::cancelled) return ExitStatus::cancelled;
  const bool isShared = run_.result() == Result::shared && !isOutputLost_;
  return isShared ? ExitStatus::success : ExitStatus::failure;
}

void SharePresenter::sessionCreated(const cloud::Session& session, bool isDoomed) {
  warnOfHistory();
  // The link may go to the terminal that shows the status line.
  console_.clearStatus();
  if (isDoomed) {
    output_.doomedSessionCreated(session);
  } else {
    output_.sessionCreated(session);
  }
  isSessionWritten_ = output_.writeError() == 0;
  if (isSessionWritten_) {
    if (!isDoomed) linkDisplay_.show(session.url().absoluteString());
    return;
  }
  printOutputError(console_, output_.writeError());
  run_.giveUp();
}

void SharePresenter::failed(const host::ShareRun::Failure& failure) {
  console_.clearStatus();
  const bool isAboutFiles = failure.error == QuillbayCloudError::fingerprintFailure() ||
                            failure.error == QuillbayCloudError::invalidFile();
  // The reasons were printed when the run began.
  if (!run_.session() && isAboutFiles && hasFileProblems_) {
    console_.printError("nothing was shared");
  } else {
    printFailure(console_, failure.advice);
  }
  auto report = FailureReport::of(failure.error, failure.advice);
  report.file = pathAt(failure.fileIndex);
  output_.failed(report);
}

void SharePresenter::phaseChanged() {
  if (run_.result() == Result::cancelled) tellCancellation();
  switch (run_.phase()) {
    case Phase::working:
      return;
    case Phase::waiting:
      return tellRetry();
    case Phase::cancelling:
      return console_.setStatus("Cancelling...");
    case Phase::deleting:
      return console_.setStatus("Deleting the session...");
    case Phase::over:
      return tellEnd();
  }
}

void SharePresenter::tellRetry() {
  const host::FailureAdvice& advice = run_.failure()->advice;
  output_.retrying(run_.untilNextTry(), run_.attempt(), host::nameOf(advice.cause));
  progress_.show(run_, Clock::now());
  const bool isWatched = options_.verbosity == Verbosity::verbose ||
                         (options_.verbosity == Verbosity::normal && ::isatty(STDERR_FILENO) != 0);
  if (console_.showsStatus() || !isWatched) return;
  console_.printError(failureText(advice) + "; " + nextTryText(run_));
}

void SharePresenter::tellCancellation() {
  if (!std::exchange(isCancellationTold_, true)) output_.cancelled();
}

void SharePresenter::tellEnd() {
  console_.clearStatus();
  warnOfHistory();
  switch (run_.sessionFate()) {
    case Fate::none:
      if (run_.result() == Result::failed) return;
      return console_.printNote("quillbay: cancelled; nothing was shared");
    case Fate::perhapsMade:
      return console_.printError(
          "the service has not answered; if it has created a session, that remains "
          "without files, and its link is unknown");
    case Fate::complete:
      return tellShared();
    case Fate::unfinished:
      return tellUnfinished();
    case Fate::deleted:
      return tellDeleted();
    case Fate::perhapsThere:
      if (const auto& failure = run_.deletionFailure()) {
        printFailure(console_, failure->advice);
      } else {
        console_.printError("the service has not confirmed that the session is deleted");
      }
      return printSession("may still exist");
  }
}

void SharePresenter::tellShared() {
  const std::uint64_t byteCount = run_.files().totalByteCount();
  output_.done(byteCount);
  // A reader that has left after the link, as `head -1` does, has all that it wanted. Any other
  // reader has the link, and everything is behind it: the session must stay.
  isOutputLost_ = output_.writeError() != 0 && output_.writeError() != EPIPE;
  if (isOutputLost_) {
    printOutputError(console_, output_.writeError());
    return printSession("is complete and remains");
  }
  console_.printNote("Shared " + host::fileCountText(run_.files().count()) + " (" +
                     host::byteCountText(byteCount) + ") in " +
                     host::durationText(progress_.elapsed(Clock::now())) + ".");
  if (options_.verbosity == Verbosity::verbose) printSession("is complete");
}

void SharePresenter::tellUnfinished() {
  if (!run_.isRemembered() || hasTemporaryFiles_) return printSession("remains, incomplete");
  console_.printError("the share is unfinished: " + std::to_string(run_.arrivedFileCount()) +
                      " of " + host::fileCountText(run_.files().count()) +
                      " uploaded; to continue it: " + historyCommand("resume", *run_.session()));
  console_.printError("to delete it: " + historyCommand("delete", *run_.session()));
}

void SharePresenter::tellDeleted() {
  output_.deleted();
  const std::string text = "the session was deleted; its link no longer works";
  // After a failure it matters to people who have the link. After Ctrl-C it is what was asked.
  if (run_.result() == Result::failed) return console_.printError(text);
  console_.printNote("quillbay: " + text);
}

void SharePresenter::printSession(const std::string& state) {
  const cloud::Session& session = *run_.session();
  console_.printError("session " + host::inQuotes(session.identifier()) + " " + state + ": " +
                      session.url().absoluteString());
  if (run_.isRemembered()) {
    console_.printError("to delete it: " + historyCommand("delete", session));
  } else if (options_.json && isSessionWritten_) {
    console_.printError("to delete it, use \"id\" and \"token\" of the session event");
  } else {
    console_.printError("to delete it, keep this command secret and run: " +
                        deletionCommand(session, instanceIdentifier_));
  }
}

void SharePresenter::warnOfHistory() {
  if (isHistoryWarned_ || history_ == nullptr || !history_->problem()) return;
  isHistoryWarned_ = true;
  if (options_.verbosity != Verbosity::quiet) console_.printError(*history_->problem());
}

std::optional<std::string> SharePresenter::pathAt(std::optional<std::size_t> fileIndex) const {
  if (!fileIndex) return std::nullopt;
  return run_.files().paths()[*fileIndex];
}

}  // namespace quillbay::cli
