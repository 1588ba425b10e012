#include "DeleteRun.h"

#include <cstring>
#include <utility>

#include "Console.h"
#include "ErrorMessage.h"
#include "ResultOutput.h"
#include "hosts/common/History.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {

DeleteRun::DeleteRun(Options options, Surroundings surroundings)
    : options_(std::move(options)),
      output_(surroundings.output),
      console_(surroundings.console),
      history_(surroundings.history),
      start_(Clock::now()) {}

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
    const host::FailureContext context{.step = host::ShareStep::deletingSession,
                                       .subject = host::inQuotes(options_.sessionIdentifier),
                                       .network = options_.network};
    const auto advice =
        host::FailureAdvice::of(result.error(), context, host::FailureAudience::terminal);
    printFailure(console_, advice);
    output_.failed(FailureReport::of(result.error(), advice));
    status_ = ExitStatus::failure;
    return;
  }
  if (options_.historyIdentifier != 0) {
    history_.setState(options_.historyIdentifier, host::RememberedShare::State::deleted);
  }
  output_.deleted();
  status_ = output_.writeError() == 0 ? ExitStatus::success : ExitStatus::failure;
  if (output_.writeError() == 0) return console_.printNote("Deleted.");
  console_.printError(std::string("the session was deleted, but standard output failed: ") +
                      std::strerror(output_.writeError()));
}

}  // namespace quillbay::cli
