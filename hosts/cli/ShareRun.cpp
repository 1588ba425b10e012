#include "ShareRun.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "FileList.h"
#include "ResultOutput.h"
#include "TerminalProgress.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/RunJournal.h"

namespace quillbay::cli {
namespace {

// After Ctrl-C two seconds are all there is, for an answer to the creation and to the deletion.
constexpr std::chrono::milliseconds kCancelBound{1500};
// After a failure nobody has asked for haste, but somebody waits.
constexpr std::chrono::milliseconds kFailureBound{10'000};

}  // namespace

ShareRun::ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
                   bool keep, Surroundings surroundings)
    : controller_(cloud::SessionController::create(std::move(context), std::move(configuration))),
      keep_(keep),
      files_(surroundings.files),
      journal_(surroundings.journal),
      output_(surroundings.output),
      console_(surroundings.console),
      progress_(surroundings.progress) {}

void ShareRun::start() {
  for (const std::string& problem : files_.findProblems()) console_.printError(problem);
  for (const std::string& text : files_.aliases()) console_.printNote("quillbay: " + text);
  controller_->createSession([this](const cloud::Session& session) { sessionCreated(session); },
                             [this](auto result) { completed(result); });
}

void ShareRun::tick(Clock::time_point now) {
  if (isOver_) return;
  if (deadline_ && now >= *deadline_) return deadlinePassed();
  if (status_) return;
  const double fraction = controller_->progress()->fractionCompleted();
  progress_.show(journal_, fraction, now);
  if (!session_) return;
  output_.progressed(fraction);
  stopIfOutputFailed();
}

void ShareRun::cancel() {
  if (isOver_) return;
  isCancelled_ = true;
  status_ = ExitStatus::cancelled;
  controller_->cancel();
  const Clock::time_point latest = Clock::now() + kCancelBound;
  deadline_ = std::min(deadline_.value_or(latest), latest);
  if (isDeleting_) return;
  console_.setStatus("Cancelling...");
  if (session_) return cleanUp(kCancelBound);
  // Once it is asked for, a session may come into being that nobody would know of.
  if (journal_.step() == host::RunJournal::Step::creatingSession) return;
  console_.clearStatus();
  console_.printNote("quillbay: cancelled; nothing was shared");
  end();
}

void ShareRun::sessionCreated(const cloud::Session& session) {
  if (isOver_) return;
  session_ = session;
  journal_.noteSession();
  // The link may go to the terminal on which the status line stands.
  console_.clearStatus();
  if (isCancelled_ && !keep_) {
    output_.doomedSessionCreated(session);
  } else {
    output_.sessionCreated(session);
  }
  if (stopIfOutputFailed()) return;
  if (isCancelled_) cleanUp(kCancelBound);
}

void ShareRun::completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result) {
  if (isOver_) return;
  // Cancelled in the middle of a creation that then failed: nothing is left behind.
  if (isCancelled_) return end();
  if (!result) return fail(FailureReport::of(result.error()));
  console_.clearStatus();
  output_.done();
  if (output_.writeError() != 0) return loseOutput();
  status_ = ExitStatus::success;
  console_.printNote("Shared " + host::fileCountText(files_.count()) + " (" +
                     host::byteCountText(files_.totalByteCount()) + ") in " +
                     host::durationText(progress_.elapsed(Clock::now())) + ".");
  end();
}

void ShareRun::fail(const FailureReport& report) {
  status_ = ExitStatus::failure;
  console_.clearStatus();
  for (const std::string& problem : files_.findProblems()) console_.printError(problem);
  // Files are uploaded from the end of the list.
  const std::size_t done = std::min(journal_.filesDone(), files_.count() - 1);
  const std::string fileName = files_.name(files_.count() - 1 - done);
  for (const std::string& line : shareFailureLines(report, journal_.step(), fileName)) {
    console_.printError(line);
  }
  output_.failed(report);
  cleanUp(kFailureBound);
}

bool ShareRun::stopIfOutputFailed() {
  if (output_.writeError() == 0) return false;
  if (!status_) status_ = ExitStatus::failure;
  controller_->cancel();
  printOutputError();
  cleanUp(isCancelled_ ? kCancelBound : kFailureBound);
  return true;
}

void ShareRun::loseOutput() {
  // The reader has the link, and everything is behind it: nobody wants it deleted.
  status_ = ExitStatus::failure;
  printOutputError();
  console_.printError("everything was uploaded; the session stays");
  end();
}

void ShareRun::printOutputError() {
  console_.printError(std::string("cannot write to standard output: ") +
                      std::strerror(output_.writeError()));
}

void ShareRun::cleanUp(std::chrono::milliseconds bound) {
  if (isDeleting_) return;
  if (!session_) return end();
  if (keep_) {
    printOutcome("the session stays, incomplete: " + session_->url().absoluteString());
    return end();
  }
  isDeleting_ = true;
  if (!deadline_) deadline_ = Clock::now() + bound;
  console_.setStatus("Deleting the session...");
  cloud::SessionController::deleteSession(
      session_->identifier(), controller_->context().instanceIdentifier(),
      session_->token().value_or(""), [this](auto result) { deletionCompleted(result); });
}

void ShareRun::deletionCompleted(const std::expected<void, cloud::QuillbayCloudError>& result) {
  if (isOver_) return;
  console_.clearStatus();
  if (result) {
    output_.deleted();
    printOutcome("the session was deleted; its link no longer works");
  } else {
    console_.printError("the session could not be deleted, its link may still work: " +
                        reasonText(FailureReport::of(result.error())));
  }
  end();
}

void ShareRun::printOutcome(const std::string& text) {
  // After a failure it matters to whoever has the link by now. After Ctrl-C it is what was asked.
  if (status_ == ExitStatus::failure) return console_.printError(text);
  console_.printNote("quillbay: " + text);
}

void ShareRun::deadlinePassed() {
  console_.clearStatus();
  if (isDeleting_ && session_) {
    console_.printError(
        "the service has not confirmed that the session is deleted; its link may "
        "still work: " +
        session_->url().absoluteString());
  } else {
    console_.printError(
        "the service has not answered; if it has created a session, that stays, "
        "empty, and its link is known to nobody");
  }
  end();
}

void ShareRun::end() {
  console_.clearStatus();
  isOver_ = true;
}

}  // namespace quillbay::cli
