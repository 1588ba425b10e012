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

#include "ExitStatus.h"
#include "hosts/common/NetworkOptions.h"

namespace quillbay::cli {

inline constexpr std::string_view kDefaultInstance = "quillbay-cli";

/// How much standard error tells.
enum class Verbosity { normal, quiet, verbose };

/// What both commands share.
struct CommonOptions {
  std::string instanceIdentifier;
  /// Events on standard output, in place of the link.
  bool json = false;
  Verbosity verbosity = Verbosity::normal;
  host::NetworkOptions network;
};

struct ShareOptions {
  CommonOptions common;
  std::vector<std::string> files;
  std::optional<std::string> title;
  std::optional<platform::Date> expirationDate;
  cloud::SessionLinkType linkType = cloud::SessionLinkType::page;
  bool longLink = false;
  /// At most one of these two; "-" is standard input.
  std::optional<std::string> passwordFile;
  bool askPassword = false;
  bool keep = false;
};

struct DeleteOptions {
  CommonOptions common;
  std::string sessionIdentifier;
  /// Exactly one of these two; "-" is standard input.
  std::optional<std::string> token;
  std::optional<std::string> tokenFile;
};

using Command = std::variant<ShareOptions, DeleteOptions>;

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
