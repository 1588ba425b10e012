#include "ShareRun.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "FailureReport.h"
#include "FileList.h"
#include "ResultOutput.h"
#include "TerminalProgress.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/RunJournal.h"

namespace quillbay::cli {
namespace {

// Ctrl-C ends the program within two seconds, the replies to creation and deletion included.
constexpr std::chrono::milliseconds kCancelBound{1500};
// After a failure there is more time, but a person may be waiting.
constexpr std::chrono::milliseconds kFailureBound{10'000};

}  // namespace

ShareRun::ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
                   Options options, Surroundings surroundings)
    : controller_(cloud::SessionController::create(std::move(context), std::move(configuration))),
      options_(std::move(options)),
      files_(surroundings.files),
      journal_(surroundings.journal),
      output_(surroundings.output),
      console_(surroundings.console),
      progress_(surroundings.progress) {}

void ShareRun::start() {
  for (const std::string& problem : files_.problems()) console_.printError(problem);
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
  if (session_) output_.progressed(fraction);
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
  // Creation is in flight: await its reply, so that the session can be deleted.
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
  if (isCancelled_ && !options_.keep) {
    output_.doomedSessionCreated(session);
  } else {
    output_.sessionCreated(session);
  }
  if (output_.writeError() != 0) return stopWithoutLink();
  isSessionWritten_ = true;
  if (isCancelled_) cleanUp(kCancelBound);
}

void ShareRun::completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result) {
  if (isOver_) return;
  // Cancelled in the middle of a creation that then failed: nothing is left behind.
  if (isCancelled_) return end();
  if (!result) return fail(result.error());
  console_.clearStatus();
  output_.done();
  // A reader that has left after the link, as `head -1` does, has all that it wanted.
  if (output_.writeError() != 0 && output_.writeError() != EPIPE) return loseOutput();
  status_ = ExitStatus::success;
  console_.printNote("Shared " + host::fileCountText(files_.count()) + " (" +
                     host::byteCountText(files_.totalByteCount()) + ") in " +
                     host::durationText(progress_.elapsed(Clock::now())) + ".");
  if (options_.tellsDeletion) printSession("is complete");
  end();
}

void ShareRun::fail(const cloud::QuillbayCloudError& error) {
  status_ = ExitStatus::failure;
  console_.clearStatus();
  printReason(error);
  output_.failed(FailureReport::of(error));
  cleanUp(kFailureBound);
}

void ShareRun::printReason(const cloud::QuillbayCloudError& error) const {
  const bool isAboutFiles = error == cloud::QuillbayCloudError::fingerprintFailure() ||
                            error == cloud::QuillbayCloudError::invalidFile();
  // The reasons were printed when the run began.
  if (!session_ && isAboutFiles && !files_.problems().empty()) {
    return console_.printError("nothing was shared");
  }
  const auto suspect = files_.watch().suspect(journal_);
  printFailure(console_, error,
               {.step = journal_.step(),
                .subject = files_.name(suspect.index),
                .fileChange = suspect.change,
                .isUploadUnanswered = journal_.isUploadUnanswered(),
                .network = options_.network});
}

void ShareRun::stopWithoutLink() {
  if (!status_) status_ = ExitStatus::failure;
  controller_->cancel();
  printOutputError();
  cleanUp(isCancelled_ ? kCancelBound : kFailureBound);
}

void ShareRun::loseOutput() {
  // The reader has the link, and everything is behind it: the session must stay.
  status_ = ExitStatus::failure;
  printOutputError();
  printSession("is complete and remains");
  end();
}

void ShareRun::printOutputError() {
  console_.printError(std::string("cannot write to standard output: ") +
                      std::strerror(output_.writeError()));
}

void ShareRun::cleanUp(std::chrono::milliseconds bound) {
  if (isDeleting_) return;
  if (!session_) return end();
  if (options_.keep) {
    printSession("remains, incomplete");
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
    const std::string text = "the session was deleted; its link no longer works";
    // After a failure it matters to people who have the link. After Ctrl-C it is what was asked.
    if (status_ == ExitStatus::failure) {
      console_.printError(text);
    } else {
      console_.printNote("quillbay: " + text);
    }
  } else {
    printFailure(console_, result.error(),
                 {.step = host::RunJournal::Step::deletingSession,
                  .subject = host::inQuotes(session_->identifier()),
                  .network = options_.network});
    printSession("may still exist");
  }
  end();
}

void ShareRun::printSession(const std::string& state) {
  console_.printError("session " + host::inQuotes(session_->identifier()) + " " + state + ": " +
                      session_->url().absoluteString());
  if (options_.json && isSessionWritten_) {
    return console_.printError("to delete it, use \"id\" and \"token\" of the session event");
  }
  console_.printError("to delete it, keep this command secret and run: " +
                      deletionCommand(*session_, controller_->context().instanceIdentifier()));
}

void ShareRun::deadlinePassed() {
  console_.clearStatus();
  if (isDeleting_) {
    console_.printError("the service has not confirmed that the session is deleted");
    printSession("may still exist");
  } else {
    console_.printError(
        "the service has not answered; if it has created a session, that remains "
        "without files, and its link is unknown");
  }
  end();
}

void ShareRun::end() {
  console_.clearStatus();
  isOver_ = true;
}

}  // namespace quillbay::cli
