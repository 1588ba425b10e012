#include "RunJournal.h"

namespace quillbay::host {

void RunJournal::restart() {
  step_ = Step::fingerprinting;
  filesDone_ = 0;
  isUploadUnanswered_ = false;
}

void RunJournal::note(std::string_view function, std::string_view message) {
  if (function == "createSession(sessionCreation:completion:)") {
    const bool isHashing = message == "Creating fingerprints...";
    step_ = isHashing ? Step::fingerprinting : Step::creatingSession;
  } else if (function == "requestUploadUrl()") {
    step_ = Step::sending;
  } else if (function == "finalizeUpload(etag:)") {
    const bool isFinished = message == "Finished upload finalization";
    step_ = isFinished ? Step::requestingAddress : Step::finalizing;
    if (isFinished) ++filesDone_;
  }
}

void RunJournal::noteError(std::string_view function, std::string_view message) {
  if (function == "uploadResult(data:response:error:url:)") {
    isUploadUnanswered_ = message == "Unexpected response";
  }
}

}  // namespace quillbay::host
