#include "DeleteRun.h"

#include <cstring>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "ResultOutput.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {

DeleteRun::DeleteRun(std::string sessionIdentifier, std::string instanceIdentifier,
                     std::string token, ResultOutput& output, Console& console)
    : sessionIdentifier_(std::move(sessionIdentifier)),
      instanceIdentifier_(std::move(instanceIdentifier)),
      token_(std::move(token)),
      output_(output),
      console_(console),
      start_(Clock::now()) {}

void DeleteRun::start() {
  cloud::SessionController::deleteSession(sessionIdentifier_, instanceIdentifier_, token_,
                                          [this](auto result) { completed(result); });
}

void DeleteRun::cancel() {
  if (status_) return;
  status_ = ExitStatus::cancelled;
  console_.clearStatus();
  console_.printError("cancelled before the service answered: session " +
                      host::inQuotes(sessionIdentifier_) + " may be deleted, or not");
}

void DeleteRun::tick(Clock::time_point now) {
  if (status_) return;
  console_.setStatus("Deleting the session  " +
                     host::durationText(std::chrono::floor<std::chrono::seconds>(now - start_)));
}

void DeleteRun::completed(const std::expected<void, cloud::QuillbayCloudError>& result) {
  if (status_) return;
  console_.clearStatus();
  if (!result) {
    const FailureReport report = FailureReport::of(result.error());
    for (const std::string& line : deletionFailureLines(report, sessionIdentifier_)) {
      console_.printError(line);
    }
    output_.failed(report);
    status_ = ExitStatus::failure;
    return;
  }
  output_.deleted();
  status_ = output_.writeError() == 0 ? ExitStatus::success : ExitStatus::failure;
  if (output_.writeError() == 0) return console_.printNote("Deleted.");
  console_.printError(std::string("the session was deleted, but standard output failed: ") +
                      std::strerror(output_.writeError()));
}

}  // namespace quillbay::cli
