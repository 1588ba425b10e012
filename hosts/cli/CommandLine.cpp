#include "CommandLine.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

#include "CommandHelp.h"
#include "ExpirationArgument.h"
#include "hosts/common/InstanceOption.h"
#include "hosts/common/OptionTable.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

/// The options as they are written, before they are checked.
struct RawCommon {
  bool help = false;
  host::InstanceOption instance;
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  host::RawNetworkOptions network;
};

struct RawShare {
  RawCommon common;
  ShareOptions options;
  bool isNullSeparated = false;
  std::optional<std::string> expires;
  std::optional<std::string> link;
  std::optional<std::string> retries;
};

struct RawResume {
  RawCommon common;
  LinkDisplayOptions linkDisplay;
  bool last = false;
  std::optional<std::string> retries;
};

struct RawDelete {
  RawCommon common;
  DeleteOptions options;
  bool last = false;
};

struct RawList {
  RawCommon common;
  ListOptions options;
};

struct RawForget {
  RawCommon common;
  bool expired = false;
};

using Failure = std::unexpected<std::string>;

void addInstance(host::OptionTable& table, RawCommon& common) {
  common.instance.addTo(table, kDefaultInstance);
}

void addRetry(host::OptionTable& table, std::optional<std::string>& retries) {
  table.addText("--retry", "N",
                "how often in a row to try again when the network\n"
                "fails, 0 to 99 (default 5)",
                retries);
}

void addLinkDisplay(host::OptionTable& table, LinkDisplayOptions& display) {
  table.addFlag("--copy", "copy the link to the clipboard of the terminal", display.copy);
  table.addFlag("--qr", "show the link as a QR code on the terminal", display.qrCode);
}

void addHelp(host::OptionTable& table, RawCommon& common) {
  table.addEnding("-h, --help", "print this help", common.help);
}

void addCommonOptions(host::OptionTable& table, RawCommon& common) {
  table.addFlag("--json", "print events, one JSON object a line, in place of\nthe link",
                common.json);
  table.addFlag("-q, --quiet", "print nothing but errors on standard error", common.quiet,
                "verbosity");
  table.addFlag("-v, --verbose", "print each step on standard error", common.verbose, "verbosity");
  common.network.addTo(table);
  addHelp(table, common);
}

host::OptionTable tableOf(RawShare& share) {
  host::OptionTable table;
  ShareOptions& options = share.options;
  table.addText("-t, --title", "TEXT", "title of the page that the link opens", options.title);
  table.addText("-e, --expires", "WHEN", "when the link stops working (default never)",
                share.expires);
  table.addText("-l, --link", "page|download|direct",
                "where the link leads: to a page, to a download, or to\n"
                "the content itself (default page)",
                share.link);
  table.addFlag("--long-link", "make a long link that is hard to guess", options.longLink);
  table.addText("--password-file", "FILE",
                "recipients need the password in the first line of\n"
                "FILE ('-' is standard input); at least 4 characters",
                options.passwordFile, "password");
  table.addFlag("--ask-password", "ask for that password on the terminal", options.askPassword,
                "password");
  table.addText("--files-from", "FILE",
                "share the files that FILE names, one a line, too\n('-' is standard input)",
                options.filesFrom);
  table.addFlag("-0, --null", "in that list, a NUL byte ends each name", share.isNullSeparated);
  table.addFlag("--zip", "pack each folder into a ZIP file and share that", options.zip);
  addLinkDisplay(table, options.linkDisplay);
  table.addFlag("--keep", "leave the session when the run is cancelled or fails", options.keep);
  addRetry(table, share.retries);
  table.addFlag("--no-history", "do not remember the share", options.noHistory);
  addInstance(table, share.common);
  addCommonOptions(table, share.common);
  return table;
}

host::OptionTable tableOf(RawResume& resumption) {
  host::OptionTable table;
  table.addFlag("--last", "the newest unfinished share", resumption.last);
  addRetry(table, resumption.retries);
  addLinkDisplay(table, resumption.linkDisplay);
  addCommonOptions(table, resumption.common);
  return table;
}

host::OptionTable tableOf(RawList& list) {
  host::OptionTable table;
  table.addFlag("--all", "deleted and expired shares, too", list.options.all);
  table.addFlag("--json", "print one JSON object a line for each share", list.common.json);
  addHelp(table, list.common);
  return table;
}

host::OptionTable tableOf(RawForget& removal) {
  host::OptionTable table;
  table.addFlag("--expired", "all shares that have expired or were deleted", removal.expired);
  addHelp(table, removal.common);
  return table;
}

host::OptionTable tableOf(RawDelete& deletion) {
  host::OptionTable table;
  DeleteOptions& options = deletion.options;
  table.addFlag("--last", "the newest share", deletion.last, "token");
  table.addText("--token", "TOKEN", "the session's token", options.token, "token");
  table.addText("--token-file", "FILE",
                "the token is the first line of FILE ('-' is standard\ninput)", options.tokenFile,
                "token");
  addInstance(table, deletion.common);
  addCommonOptions(table, deletion.common);
  return table;
}

Verbosity verbosityOf(const RawCommon& common) {
  if (common.quiet) return Verbosity::quiet;
  return common.verbose ? Verbosity::verbose : Verbosity::normal;
}

/// What is wrong with a text that is to be sent as JSON or as part of an address, if anything.
std::optional<std::string> problemOf(const std::string& text, const char* name) {
  if (!host::codePointCount(text)) return std::string(name) + " is not UTF-8 text";
  return std::nullopt;
}

std::expected<CommonOptions, std::string> checked(const RawCommon& raw,
                                                  const host::Environment& environment) {
  CommonOptions common;
  auto instance = raw.instance.checked();
  if (!instance) return Failure(instance.error());
  common.instanceIdentifier = std::move(*instance);
  common.json = raw.json;
  common.verbosity = verbosityOf(raw);
  auto network = raw.network.checked(environment);
  if (!network) return Failure(network.error());
  common.network = std::move(*network);
  return common;
}

std::expected<int, std::string> checkedRetryCount(const std::optional<std::string>& text) {
  if (!text) return kDefaultRetryCount;
  const bool isNumber = std::ranges::all_of(*text, [](char c) { return c >= '0' && c <= '9'; });
  if (!isNumber || text->empty() || text->size() > 2) {
    return Failure("--retry: " + host::inQuotes(*text) + " is no number from 0 to 99");
  }
  return std::stoi(*text);
}

/// The one share that a command is about; absent if `otherFlag` is given instead.
std::expected<std::optional<std::string>, std::string> checkedShare(
    const std::vector<std::string>& operands, bool hasOtherFlag, const std::string& otherFlag) {
  if (operands.empty() && hasOtherFlag) return std::nullopt;
  if (operands.empty()) return Failure("which share? give its link or session, or " + otherFlag);
  if (hasOtherFlag) {
    return Failure(host::inQuotes(operands.front()) + " and " + otherFlag + " exclude each other");
  }
  if (operands.size() > 1) {
    return Failure("one share at a time; " + host::inQuotes(operands[1]) + " is one too many");
  }
  if (operands.front().empty()) return Failure("SHARE is empty");
  if (auto problem = problemOf(operands.front(), "SHARE")) return Failure(*problem);
  return operands.front();
}

std::expected<Command, std::string> checked(RawShare& raw, std::vector<std::string> operands,
                                            const host::Environment& environment,
                                            platform::Date now) {
  ShareOptions options = std::move(raw.options);
  if (operands.empty() && !options.filesFrom) return Failure("which files? name at least one");
  options.files = std::move(operands);
  if (raw.isNullSeparated && !options.filesFrom) return Failure("--null needs --files-from");
  if (raw.isNullSeparated) options.separator = PathSeparator::null;
  if (options.filesFrom == "-" && options.passwordFile == "-") {
    return Failure("--files-from and --password-file cannot both read standard input");
  }

  auto common = checked(raw.common, environment);
  if (!common) return Failure(common.error());
  options.common = std::move(*common);
  if (options.title) {
    if (auto problem = problemOf(*options.title, "--title")) return Failure(*problem);
  }

  const auto retryCount = checkedRetryCount(raw.retries);
  if (!retryCount) return Failure(retryCount.error());
  options.retryCount = *retryCount;

  const std::string link = raw.link.value_or("page");
  const auto linkType = cloud::SessionLinkType::fromRawValue(link);
  if (!linkType)
    return Failure("--link: " + host::inQuotes(link) + " is not page, download or direct");
  options.linkType = *linkType;
  // As in the share sheet. Silence would publish what the user meant to protect.
  const bool hasPassword = options.askPassword || options.passwordFile;
  if (hasPassword && *linkType == cloud::SessionLinkType::directLink) {
    return Failure("a direct link cannot have a password; choose --link page or --link download");
  }

  auto expirationDate = parseExpiration(raw.expires.value_or("never"), now);
  if (!expirationDate) return Failure("--expires: " + expirationDate.error());
  options.expirationDate = *expirationDate;
  return options;
}

std::expected<Command, std::string> checked(RawDelete& raw,
                                            const std::vector<std::string>& operands,
                                            const host::Environment& environment) {
  DeleteOptions options = std::move(raw.options);
  auto share = checkedShare(operands, raw.last, "--last");
  if (!share) return Failure(share.error());
  options.share = std::move(*share);
  auto common = checked(raw.common, environment);
  if (!common) return Failure(common.error());
  options.common = std::move(*common);
  return options;
}

std::expected<Command, std::string> checked(RawResume& raw,
                                            const std::vector<std::string>& operands,
                                            const host::Environment& environment) {
  auto share = checkedShare(operands, raw.last, "--last");
  if (!share) return Failure(share.error());
  const auto retryCount = checkedRetryCount(raw.retries);
  if (!retryCount) return Failure(retryCount.error());
  auto common = checked(raw.common, environment);
  if (!common) return Failure(common.error());
  return ResumeOptions{std::move(*common), std::move(*share), *retryCount, raw.linkDisplay};
}

std::expected<Command, std::string> checked(RawList& raw, const std::vector<std::string>& operands,
                                            const host::Environment& /*environment*/) {
  if (!operands.empty()) return Failure("list takes no names");
  raw.options.common.json = raw.common.json;
  return raw.options;
}

std::expected<Command, std::string> checked(RawForget& raw,
                                            const std::vector<std::string>& operands,
                                            const host::Environment& /*environment*/) {
  auto share = checkedShare(operands, raw.expired, "--expired");
  if (!share) return Failure(share.error());
  return ForgetOptions{.common = {}, .share = std::move(*share)};
}

using Result = std::expected<Command, CommandLineEnd>;

Result printed(std::string text) {
  return std::unexpected(CommandLineEnd{ExitStatus::success, std::move(text)});
}

Result refused(const std::string& message, const std::string& command) {
  return std::unexpected(CommandLineEnd{
      ExitStatus::usage, "quillbay: " + message + "\nTry '" + command + " --help'.\n"});
}

Result refusedOr(std::expected<Command, std::string> command, const std::string& name) {
  if (!command) return refused(command.error(), name);
  return std::move(*command);
}

Result parseShare(std::span<const std::string> arguments, const host::Environment& environment,
                  platform::Date now) {
  RawShare raw;
  const host::OptionTable table = tableOf(raw);
  auto operands = table.read(arguments);
  if (!operands) return refused(operands.error(), "quillbay share");
  if (raw.common.help) return printed(commandHelp("share", table.help()));
  return refusedOr(checked(raw, std::move(*operands), environment, now), "quillbay share");
}

/// A command other than `share`.
template <class Raw>
Result parseCommand(const std::string& name, std::span<const std::string> arguments,
                    const host::Environment& environment) {
  const std::string fullName = "quillbay " + name;
  Raw raw;
  const host::OptionTable table = tableOf(raw);
  auto operands = table.read(arguments);
  if (!operands) return refused(operands.error(), fullName);
  if (raw.common.help) return printed(commandHelp(name, table.help()));
  return refusedOr(checked(raw, *operands, environment), fullName);
}

/// Absent if there is no command of this name.
std::optional<Result> parseNamed(const std::string& name, std::span<const std::string> arguments,
                                 const host::Environment& environment, platform::Date now) {
  if (name == "share") return parseShare(arguments, environment, now);
  if (name == "resume") return parseCommand<RawResume>(name, arguments, environment);
  if (name == "delete") return parseCommand<RawDelete>(name, arguments, environment);
  if (name == "list") return parseCommand<RawList>(name, arguments, environment);
  if (name == "forget") return parseCommand<RawForget>(name, arguments, environment);
  return std::nullopt;
}

void offerCommands(Completion& completion, const std::string& typed) {
  const Completion::Candidate commands[] = {{"share", "share files"},
                                            {"list", "list the shares"},
                                            {"resume", "continue a share"},
                                            {"delete", "delete a share"},
                                            {"forget", "remove shares from the history"}};
  for (const Completion::Candidate& command : commands) completion.offer(command, typed);
}

/// `operand` is what is offered in the place of an operand.
template <class Raw>
Completion completeCommand(std::span<const std::string> words, Completion operand) {
  Raw raw;
  return completeOption(tableOf(raw), words).value_or(std::move(operand));
}

/// What the last of `words`, the arguments after the program's name, can be.
Completion completionOf(std::span<const std::string> words) {
  using Shares = Completion::Shares;
  Completion completion;
  const std::string& typed = words.back();
  const std::string& name = words.front();
  if (words.size() == 1) {
    offerCommands(completion, typed);
    completion.offer({"help", "explain a command"}, typed);
    completion.offer({"--help", "print help"}, typed);
    completion.offer({"--version", "print the version"}, typed);
    return completion;
  }
  const auto rest = words.subspan(1);
  if (name == "share") return completeCommand<RawShare>(rest, {.takesFiles = true});
  if (name == "list") return completeCommand<RawList>(rest, {});
  if (name == "resume") return completeCommand<RawResume>(rest, {.shares = Shares::unfinished});
  if (name == "delete") return completeCommand<RawDelete>(rest, {.shares = Shares::undeleted});
  if (name == "forget") return completeCommand<RawForget>(rest, {.shares = Shares::all});
  if (name == "help" && rest.size() == 1) offerCommands(completion, typed);
  return completion;
}

/// `quillbay complete -- WORD...` is for the completion scripts alone, and in no help.
Result parseComplete(std::span<const std::string> arguments) {
  std::vector<std::string> words(arguments.begin(), arguments.end());
  if (!words.empty() && words.front() == "--") words.erase(words.begin());
  if (words.empty()) words.emplace_back();
  return CompleteOptions{.common = {}, .completion = completionOf(words), .typed = words.back()};
}

/// `quillbay help [COMMAND]`.
Result help(std::span<const std::string> commands) {
  if (commands.empty()) return printed(programHelp());
  if (commands.size() > 1) return refused("one command at a time", "quillbay");
  const std::vector<std::string> arguments{"--help"};
  if (auto result = parseNamed(commands.front(), arguments, {}, {})) return std::move(*result);
  return refused("unknown command " + host::inQuotes(commands.front()), "quillbay");
}

}  // namespace

Result parseCommandLine(std::span<const std::string> arguments,
                        const host::Environment& environment, platform::Date now) {
  if (arguments.empty())
    return refused("which command? share, list, resume, delete or forget", "quillbay");
  const std::string& first = arguments.front();
  if (first == "--help" || first == "-h") return help({});
  if (first == "help") return help(arguments.subspan(1));
  if (first == "--version" || first == "-V") return printed("quillbay " QUILLBAY_VERSION "\n");
  if (first == "complete") return parseComplete(arguments.subspan(1));
  if (auto result = parseNamed(first, arguments.subspan(1), environment, now)) {
    return std::move(*result);
  }
  const char* kind = first.starts_with('-') ? "unknown option " : "unknown command ";
  return refused(kind + host::inQuotes(first), "quillbay");
}

}  // namespace quillbay::cli
