#pragma once

#include <QuillbayCloud/model/SessionLinkType.h>
#include <QuillbayPlatform/Date.h>

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Completion.h"
#include "ExitStatus.h"
#include "LinkDisplay.h"
#include "PathList.h"
#include "hosts/common/NetworkOptions.h"

namespace quillbay::cli {

inline constexpr std::string_view kDefaultInstance = "quillbay-cli";
inline constexpr int kDefaultRetryCount = 5;

/// How much standard error tells.
enum class Verbosity { normal, quiet, verbose };

/// What both commands share.
struct CommonOptions {
  /// Absent: the default, or the one under which the history remembers the share.
  std::optional<std::string> instanceIdentifier;
  /// Events on standard output, in place of the link.
  bool json = false;
  Verbosity verbosity = Verbosity::normal;
  host::NetworkOptions network;
};

struct ShareOptions {
  CommonOptions common;
  std::vector<std::string> files;
  /// A list of further files; "-" is standard input.
  std::optional<std::string> filesFrom;
  PathSeparator separator = PathSeparator::newline;
  /// Folders are packed.
  bool zip = false;
  LinkDisplayOptions linkDisplay;
  std::optional<std::string> title;
  std::optional<platform::Date> expirationDate;
  cloud::SessionLinkType linkType = cloud::SessionLinkType::page;
  bool longLink = false;
  /// At most one of these two; "-" is standard input.
  std::optional<std::string> passwordFile;
  bool askPassword = false;
  bool keep = false;
  int retryCount = kDefaultRetryCount;
  bool noHistory = false;
};

struct ResumeOptions {
  CommonOptions common;
  /// Link or session; absent: the newest unfinished share.
  std::optional<std::string> share;
  int retryCount = kDefaultRetryCount;
  LinkDisplayOptions linkDisplay = {};
};

struct DeleteOptions {
  CommonOptions common;
  /// Link or session; absent: the newest share.
  std::optional<std::string> share;
  /// At most one of these two; "-" is standard input. Without any the history knows the token.
  std::optional<std::string> token;
  std::optional<std::string> tokenFile;
};

struct ListOptions {
  CommonOptions common;
  /// Deleted and expired shares, too.
  bool all = false;
};

struct ForgetOptions {
  CommonOptions common;
  /// Link or session; absent: all that have expired or were deleted.
  std::optional<std::string> share;
};

/// For the completion script of a shell.
struct CompleteOptions {
  CommonOptions common;
  /// The links of its shares are still to be added.
  Completion completion;
  /// The word that is being typed.
  std::string typed;
};

using Command = std::variant<ShareOptions, ResumeOptions, DeleteOptions, ListOptions, ForgetOptions,
                             CompleteOptions>;

/// Nothing is to be run: help or the version for standard output (success), or what is wrong with
/// the command line for standard error (usage).
struct CommandLineEnd {
  ExitStatus status;
  std::string text;
};

/// Reads the arguments after the program's name. Touches no file.
std::expected<Command, CommandLineEnd> parseCommandLine(std::span<const std::string> arguments,
                                                        const host::Environment& environment,
                                                        platform::Date now);

}  // namespace quillbay::cli
