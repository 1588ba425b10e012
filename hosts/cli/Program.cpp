#include "Program.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <utility>

#include "Console.h"
#include "DeleteRun.h"
#include "ErrorMessage.h"
#include "HostLogger.h"
#include "Interruption.h"
#include "PackRun.h"
#include "PathList.h"
#include "ResultOutput.h"
#include "RunLoop.h"
#include "ShareLookup.h"
#include "SharePresenter.h"
#include "ShareTable.h"
#include "StandardStreams.h"
#include "hosts/common/Continuation.h"
#include "hosts/common/History.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/PrivateFolder.h"

namespace quillbay::cli {
namespace {

// As in the share sheet.
constexpr std::size_t kLeastPasswordCharacters = 4;

using State = host::RememberedShare::State;

std::unique_ptr<ResultOutput> outputFor(const CommonOptions& options) {
  return options.json ? ResultOutput::json(STDOUT_FILENO) : ResultOutput::plain(STDOUT_FILENO);
}

host::ShareRun::Settings settingsFor(const CommonOptions& options, int retryCount) {
  // A person who sees the failure can continue the share.
  return {.retryCount = retryCount,
          .keepsUnfinishedSession = ::isatty(STDERR_FILENO) != 0,
          .network = options.network};
}

platform::Date now() { return std::chrono::system_clock::now(); }

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
  auto chosen = files(options);
  if (!chosen) return refuse(chosen.error());

  auto settings = settingsFor(options.common, options.retryCount);
  // Its archives will be gone.
  if (chosen->hasArchives) settings.keepsUnfinishedSession = false;
  settings.keepsSession = options.keep;
  const auto history =
      options.noHistory
          ? nullptr
          : std::make_unique<host::History>(host::History::standardFile(environment_));
  const std::unique_ptr<ResultOutput> output = outputFor(options.common);
  const LinkDisplay linkDisplay(options.linkDisplay, console_, environment_);
  SharePresenter run({.instanceIdentifier =
                          options.common.instanceIdentifier.value_or(std::string(kDefaultInstance)),
                      .configuration = cloud::SessionConfiguration(
                          options.title, options.expirationDate, options.linkType, *wantedPassword,
                          options.longLink),
                      .files = host::SharedFiles(std::move(chosen->paths)),
                      .settings = std::move(settings),
                      .hasTemporaryFiles = chosen->hasArchives},
                     {options.common, *output, console_, history.get(), linkDisplay});
  return runUntilOver(run, interruption_);
}

ExitStatus Program::run(const ResumeOptions& options) {
  if (!prepare(options.common)) return ExitStatus::usage;
  host::History history(host::History::standardFile(environment_));
  const auto share = continuableShare(history, options.share, now());
  if (!share) return refuse(history, share.error());
  if (share->arrivedFileCount == share->fileCount) return finish(*share, history, options.common);
  // Another program may have begun in this very moment.
  if (!history.claim(share->identifier)) return refuse(history, inUseText(*share));

  auto rest = host::Continuation::of(*share, history.files(share->identifier));
  const std::unique_ptr<ResultOutput> output = outputFor(options.common);
  const LinkDisplay linkDisplay(options.linkDisplay, console_, environment_);
  SharePresenter run({.instanceIdentifier = share->instanceIdentifier,
                      .configuration = std::move(rest.configuration),
                      .files = std::move(rest.files),
                      .settings = settingsFor(options.common, options.retryCount),
                      .unfinished = std::move(rest.share)},
                     {options.common, *output, console_, &history, linkDisplay});
  return runUntilOver(run, interruption_);
}

ExitStatus Program::finish(const host::RememberedShare& share, host::History& history,
                           const CommonOptions& options) const {
  history.setState(share.identifier, State::complete);
  const std::unique_ptr<ResultOutput> output = outputFor(options);
  output->sessionCreated(share.session);
  output->done(share.byteCount);
  console_.printNote("Nothing is left to upload: " + host::fileCountText(share.fileCount) +
                     " arrived before.");
  if (output->writeError() == 0) return ExitStatus::success;
  printOutputError(console_, output->writeError());
  return ExitStatus::failure;
}

ExitStatus Program::run(const DeleteOptions& options) {
  host::History history(host::History::standardFile(environment_));
  const auto share = rememberedShare(history, options.share);
  const bool hasToken = options.token || options.tokenFile;
  if (!share && !hasToken) return refuse(history, share.error());
  if (!share && options.share->contains("://")) return refuse({ExitStatus::usage, share.error()});
  if (share && !hasToken && share->state == State::deleted) {
    return refuse(history,
                  host::inQuotes(share->session.url().absoluteString()) + " was deleted before");
  }
  auto sessionToken = hasToken ? token(options) : share->session.token().value_or("");
  if (!sessionToken) return refuse(sessionToken.error());
  if (!prepare(options.common)) return ExitStatus::usage;

  const std::string instance = share ? share->instanceIdentifier : std::string(kDefaultInstance);
  const std::unique_ptr<ResultOutput> output = outputFor(options.common);
  DeleteRun run({.sessionIdentifier = share ? share->session.identifier() : *options.share,
                 .instanceIdentifier = options.common.instanceIdentifier.value_or(instance),
                 .token = std::move(*sessionToken),
                 .network = options.common.network,
                 .historyIdentifier = share ? share->identifier : 0},
                {*output, console_, history});
  return runUntilOver(run, interruption_);
}

ExitStatus Program::run(const ListOptions& options) {
  host::History history(host::History::standardFile(environment_));
  std::vector<host::RememberedShare> shares = history.shares();
  if (!options.all) {
    std::erase_if(shares, [&](const host::RememberedShare& share) {
      return share.state == State::deleted || share.isExpired(now());
    });
  }
  if (history.problem()) return failBecauseOf(history);
  if (options.common.json) return print(shareObjects(shares, now()));
  if (shares.empty()) {
    console_.printNote("No shares.");
    return ExitStatus::success;
  }
  return print(shareTable(shares, now(), terminalColumnCount(STDOUT_FILENO)));
}

ExitStatus Program::run(const ForgetOptions& options) {
  host::History history(host::History::standardFile(environment_));
  if (!options.share) {
    const std::size_t count = history.forgetExpired(now());
    if (history.problem()) return failBecauseOf(history);
    console_.printNote(std::to_string(count) + (count == 1 ? " share" : " shares") + " forgotten.");
    return ExitStatus::success;
  }
  const auto share = rememberedShare(history, options.share);
  if (!share) return refuse(history, share.error());
  if (share->state == State::uploading) return refuse(history, inUseText(*share));
  history.forget(share->identifier);
  return history.problem() ? failBecauseOf(history) : ExitStatus::success;
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

ExitStatus Program::run(const CompleteOptions& options) {
  Completion completion = options.completion;
  const auto file = host::History::standardFile(environment_);
  // A history must not begin to exist because a key was pressed.
  if (completion.shares != Completion::Shares::none && file && std::filesystem::exists(*file)) {
    completion.offerShares(host::History(file).shares(), now(), options.typed);
  }
  return print(completion.text());
}

std::expected<Program::FileChoice, SecretSource::Failure> Program::files(
    const ShareOptions& options) {
  FileChoice chosen{.paths = options.files};
  if (options.filesFrom) {
    auto listed = readPathList(*options.filesFrom, options.separator, interruption_);
    if (!listed) return std::unexpected(std::move(listed.error()));
    std::ranges::move(*listed, std::back_inserter(chosen.paths));
  }
  chosen.hasArchives = options.zip && std::ranges::any_of(chosen.paths, PackRun::isFolder);
  if (!chosen.hasArchives) return chosen;
  PackRun packing(std::move(chosen.paths), temporaryFiles_.path(), console_);
  const ExitStatus status = runUntilOver(packing, interruption_);
  if (status != ExitStatus::success) return std::unexpected(SecretSource::Failure{status, {}});
  chosen.paths = packing.paths();
  return chosen;
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
  if (isVerbose) HostLogger::install(console_);
  return true;
}

ExitStatus Program::refuse(const SecretSource::Failure& failure) const {
  if (!failure.message.empty()) console_.printError(failure.message);
  return failure.status;
}

ExitStatus Program::failBecauseOf(const host::History& history) const {
  console_.printError(*history.problem());
  return ExitStatus::failure;
}

ExitStatus Program::refuse(const host::History& history, const std::string& problem) const {
  if (history.problem()) return failBecauseOf(history);
  return refuse({ExitStatus::usage, problem});
}

ExitStatus Program::print(const std::string& text) const {
  const int error = writeAll(STDOUT_FILENO, text);
  if (error == 0) return ExitStatus::success;
  printOutputError(console_, error);
  return ExitStatus::failure;
}

}  // namespace quillbay::cli
