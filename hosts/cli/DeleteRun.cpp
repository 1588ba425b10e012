#include "DeleteRun.h"

#include <cstring>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "ResultOutput.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {

DeleteRun::DeleteRun(Options options, ResultOutput& output, Console& console)
    : options_(std::move(options)), output_(output), console_(console), start_(Clock::now()) {}

void DeleteRun::start() {
  cloud::SessionController::deleteSession(options_.sessionIdentifier, options_.instanceIdentifier,
                                          options_.token,
                                          [this](auto result) { completed(result); });
}

void DeleteRun::cancel() {
  if (status_) return;
  status_ = ExitStatus::cancelled;
  console_.clearStatus();
  console_.printError("cancelled before the service answered: session " +
                      host::inQuotes(options_.sessionIdentifier) + " may be deleted, or not");
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
    const host::FailureContext context{.step = host::RunJournal::Step::deletingSession,
                                       .subject = host::inQuotes(options_.sessionIdentifier),
                                       .network = options_.network};
    printFailure(console_, result.error(), context);
    output_.failed(FailureReport::of(result.error()));
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
