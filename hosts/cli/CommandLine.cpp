#include "CommandLine.h"

#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>

#include "ExpirationArgument.h"
#include "hosts/common/OptionTable.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

constexpr std::string_view kUsage =
    "Shares files through Quillbay Cloud: prints a link, then uploads the files.\n"
    "\n"
    "Usage: quillbay share [options] FILE...\n"
    "       quillbay delete [options] SESSION --token TOKEN | --token-file FILE\n"
    "       quillbay help [COMMAND] | --help | --version\n"
    "\n"
    "'quillbay share --help' and 'quillbay delete --help' list the options.\n";

constexpr std::string_view kShareUsage =
    "Shares files: prints a link, then uploads them.\n"
    "\n"
    "Usage: quillbay share [options] FILE...\n"
    "\n"
    "Options:\n";

constexpr std::string_view kShareHelp =
    "\n"
    "WHEN is a time from now (30m, 12h, 7d, 2mo), never, or an instant such as\n"
    "2030-01-31T18:00:00Z.\n"
    "\n"
    "The link stands alone on standard output as soon as the session exists; the\n"
    "command ends when everything is uploaded. To use the link before that, read it\n"
    "from a pipe: quillbay share FILE | while read -r link; do ...; done\n"
    "On a terminal, standard error shows how far the upload is.\n"
    "\n"
    "Ctrl-C cancels and deletes the session; a second one ends at once. A share that\n"
    "fails deletes its session too. --keep leaves it in both cases. To delete a\n"
    "session later, keep \"id\" and \"token\" of the first line of --json, or the\n"
    "command that --verbose prints at the end.\n";

constexpr std::string_view kDeleteUsage =
    "Deletes a session that 'quillbay share' created: its link stops working.\n"
    "\n"
    "Usage: quillbay delete [options] SESSION --token TOKEN | --token-file FILE\n"
    "\n"
    "Options:\n";

constexpr std::string_view kDeleteHelp =
    "\n"
    "SESSION and TOKEN are \"id\" and \"token\" of the line {\"event\":\"session\",...}\n"
    "that 'quillbay share --json' prints. Other users of this computer can see a\n"
    "token on the command line; in a file they cannot.\n";

constexpr std::string_view kExitStatusHelp =
    "\n"
    "Exit status:\n"
    "  0    shared, or deleted\n"
    "  1    the run failed\n"
    "  2    the command line cannot be carried out as written; nothing was sent\n"
    "  130  cancelled by Ctrl-C, SIGTERM or SIGHUP\n";

constexpr std::string_view kEnvironmentHelp =
    "\n"
    "Environment:\n"
    "  QUILLBAY_CONNECT_TO  default of --connect-to; commas or blanks separate routes\n"
    "  QUILLBAY_CACERT      default of --cacert\n"
    "  https_proxy, all_proxy, no_proxy\n"
    "                       the proxy to use, and hosts to reach without it\n"
    "  NO_COLOR             if not empty, no colours\n";

/// The options as they are written, before they are checked.
struct RawCommon {
  bool help = false;
  std::optional<std::string> instanceIdentifier;
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  host::RawNetworkOptions network;
};

struct RawShare {
  RawCommon common;
  ShareOptions options;
  std::optional<std::string> expires;
  std::optional<std::string> link;
};

struct RawDelete {
  RawCommon common;
  DeleteOptions options;
};

using Failure = std::unexpected<std::string>;

void addCommonOptions(host::OptionTable& table, RawCommon& common) {
  table.addText("--instance", "ID",
                "name of this installation for the service\n(default quillbay-cli)",
                common.instanceIdentifier);
  table.addFlag("--json", "print events, one JSON object a line, in place of\nthe link",
                common.json);
  table.addFlag("--quiet", "print nothing but errors on standard error", common.quiet, "verbosity");
  table.addFlag("--verbose", "print each step on standard error", common.verbose, "verbosity");
  common.network.addTo(table);
  table.addEnding("-h, --help", "print this help", common.help);
}

host::OptionTable tableOf(RawShare& share) {
  host::OptionTable table;
  ShareOptions& options = share.options;
  table.addText("--title", "TEXT", "title of the page that the link opens", options.title);
  table.addText("--expires", "WHEN", "when the link stops working (default never)", share.expires);
  table.addText("--link", "page|download|direct",
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
  table.addFlag("--keep", "leave the session when the run is cancelled or fails", options.keep);
  addCommonOptions(table, share.common);
  return table;
}

host::OptionTable tableOf(RawDelete& deletion) {
  host::OptionTable table;
  DeleteOptions& options = deletion.options;
  table.addText("--token", "TOKEN", "the session's token", options.token, "token");
  table.addText("--token-file", "FILE",
                "the token is the first line of FILE ('-' is standard\ninput)", options.tokenFile,
                "token");
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
  common.instanceIdentifier = raw.instanceIdentifier.value_or(std::string(kDefaultInstance));
  common.json = raw.json;
  common.verbosity = verbosityOf(raw);
  if (common.instanceIdentifier.empty()) return Failure("--instance is empty");
  if (auto problem = problemOf(common.instanceIdentifier, "--instance")) return Failure(*problem);
  auto network = raw.network.checked(environment);
  if (!network) return Failure(network.error());
  common.network = std::move(*network);
  return common;
}

std::expected<Command, std::string> checked(RawShare& raw, std::vector<std::string> operands,
                                            const host::Environment& environment,
                                            platform::Date now) {
  ShareOptions options = std::move(raw.options);
  if (operands.empty()) return Failure("which files? name at least one");
  options.files = std::move(operands);

  auto common = checked(raw.common, environment);
  if (!common) return Failure(common.error());
  options.common = std::move(*common);
  if (options.title) {
    if (auto problem = problemOf(*options.title, "--title")) return Failure(*problem);
  }

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
  if (operands.empty()) return Failure("which session? give its identifier");
  if (operands.size() > 1) {
    return Failure("one session at a time; " + host::inQuotes(operands[1]) + " is one too many");
  }
  options.sessionIdentifier = operands.front();
  const std::string& identifier = options.sessionIdentifier;
  if (identifier.empty()) return Failure("SESSION is empty");
  if (auto problem = problemOf(identifier, "SESSION")) return Failure(*problem);
  if (identifier.find("://") != std::string::npos) {
    return Failure(host::inQuotes(identifier) +
                   " is a link; SESSION is the \"id\" that 'quillbay share --json' prints");
  }
  if (!options.token && !options.tokenFile) {
    return Failure("the session's token is needed: --token or --token-file");
  }

  auto common = checked(raw.common, environment);
  if (!common) return Failure(common.error());
  options.common = std::move(*common);
  return options;
}

using Result = std::expected<Command, CommandLineEnd>;

Result printed(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
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
  if (raw.common.help) {
    return printed({kShareUsage, table.help(), kShareHelp, kExitStatusHelp, kEnvironmentHelp});
  }
  return refusedOr(checked(raw, std::move(*operands), environment, now), "quillbay share");
}

Result parseDelete(std::span<const std::string> arguments, const host::Environment& environment) {
  RawDelete raw;
  const host::OptionTable table = tableOf(raw);
  auto operands = table.read(arguments);
  if (!operands) return refused(operands.error(), "quillbay delete");
  if (raw.common.help) {
    return printed({kDeleteUsage, table.help(), kDeleteHelp, kExitStatusHelp, kEnvironmentHelp});
  }
  return refusedOr(checked(raw, *operands, environment), "quillbay delete");
}

/// `quillbay help [COMMAND]`.
Result help(std::span<const std::string> commands) {
  if (commands.empty()) return printed({kUsage, kExitStatusHelp});
  if (commands.size() > 1) return refused("one command at a time", "quillbay");
  const std::vector<std::string> arguments{"--help"};
  if (commands.front() == "share") return parseShare(arguments, {}, {});
  if (commands.front() == "delete") return parseDelete(arguments, {});
  return refused("unknown command " + host::inQuotes(commands.front()), "quillbay");
}

}  // namespace

Result parseCommandLine(std::span<const std::string> arguments,
                        const host::Environment& environment, platform::Date now) {
  if (arguments.empty()) return refused("which command? share or delete", "quillbay");
  const std::string& first = arguments.front();
  if (first == "--help" || first == "-h") return help({});
  if (first == "help") return help(arguments.subspan(1));
  if (first == "--version" || first == "-V") return printed({"quillbay " QUILLBAY_VERSION "\n"});
  if (first == "share") return parseShare(arguments.subspan(1), environment, now);
  if (first == "delete") return parseDelete(arguments.subspan(1), environment);
  const char* kind = first.starts_with('-') ? "unknown option " : "unknown command ";
  return refused(kind + host::inQuotes(first), "quillbay");
}

}  // namespace quillbay::cli
