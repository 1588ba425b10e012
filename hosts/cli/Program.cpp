#include "Program.h"

#include <unistd.h>

#include <utility>

#include "Console.h"
#include "DeleteRun.h"
#include "FileList.h"
#include "HostLogger.h"
#include "Interruption.h"
#include "ResultOutput.h"
#include "RunLoop.h"
#include "ShareRun.h"
#include "TerminalProgress.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/RunJournal.h"

namespace quillbay::cli {
namespace {

// As in the share sheet.
constexpr std::size_t kLeastPasswordCharacters = 4;

/// The library's threads may write to it until the process ends.
host::RunJournal& sharedJournal() {
  static host::RunJournal journal;
  return journal;
}

std::unique_ptr<ResultOutput> outputFor(const CommonOptions& options) {
  return options.json ? ResultOutput::json(STDOUT_FILENO) : ResultOutput::plain(STDOUT_FILENO);
}

/// What is wrong with a password, for people, if anything.
std::optional<std::string> passwordProblem(const std::string& password) {
  if (host::characterCount(password).value_or(0) >= kLeastPasswordCharacters) return std::nullopt;
  return "the password is too short: it needs at least 4 characters";
}

}  // namespace

ExitStatus Program::run(const ShareOptions& options) {
  const auto wantedPassword = password(options);
  if (!wantedPassword) return refuse(wantedPassword.error());
  if (!prepare(options.common)) return ExitStatus::usage;

  FileList files(options.files);
  const std::unique_ptr<ResultOutput> output = outputFor(options.common);
  TerminalProgress progress(console_, files, TerminalProgress::Clock::now());
  ShareRun run(cloud::SessionContext(options.common.instanceIdentifier, files.urls()),
               cloud::SessionConfiguration(options.title, options.expirationDate, options.linkType,
                                           *wantedPassword, options.longLink),
               {.keep = options.keep,
                .json = options.common.json,
                .tellsDeletion = options.common.verbosity == Verbosity::verbose,
                .network = options.common.network},
               {files, sharedJournal(), *output, console_, progress});
  return runUntilOver(run, interruption_);
}

ExitStatus Program::run(const DeleteOptions& options) {
  auto sessionToken = token(options);
  if (!sessionToken) return refuse(sessionToken.error());
  if (!prepare(options.common)) return ExitStatus::usage;

  const std::unique_ptr<ResultOutput> output = outputFor(options.common);
  DeleteRun run({options.sessionIdentifier, options.common.instanceIdentifier,
                 std::move(*sessionToken), options.common.network},
                *output, console_);
  return runUntilOver(run, interruption_);
}

std::expected<std::optional<std::string>, SecretSource::Failure> Program::password(
    const ShareOptions& options) const {
  if (!options.askPassword && !options.passwordFile) return std::nullopt;
  const SecretSource source(interruption_);
  auto password = options.askPassword ? source.askPassword(passwordProblem)
                                      : source.readFile(*options.passwordFile, "password");
  if (!password) return std::unexpected(std::move(password.error()));
  if (const auto problem = passwordProblem(*password)) {
    return std::unexpected(SecretSource::Failure{ExitStatus::usage, *problem});
  }
  return std::move(*password);
}

SecretSource::Result Program::token(const DeleteOptions& options) const {
  if (options.token) return *options.token;
  return SecretSource(interruption_).readFile(options.tokenFile.value_or("-"), "token");
}

bool Program::prepare(const CommonOptions& options) const {
  if (const auto problem = options.network.apply()) {
    console_.printError(*problem);
    return false;
  }
  const bool isVerbose = options.verbosity == Verbosity::verbose;
  HostLogger::install(sharedJournal(), isVerbose ? &console_ : nullptr);
  return true;
}

ExitStatus Program::refuse(const SecretSource::Failure& failure) const {
  if (!failure.message.empty()) console_.printError(failure.message);
  return failure.status;
}

}  // namespace quillbay::cli
