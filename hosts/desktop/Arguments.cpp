#include "Arguments.h"

#include <utility>

#include "hosts/common/OptionTable.h"
#include "hosts/common/PlainText.h"

namespace quillbay::desktop {
namespace {

constexpr const char* kUsage =
    "Shares files through Quillbay Cloud: shows the share sheet in a window, then the\n"
    "link and the upload.\n"
    "\n"
    "Usage: quillbay-desktop [options] [FILE...]\n"
    "\n"
    "Without files the window asks for them.\n"
    "\n"
    "Options:\n";

constexpr const char* kEnvironmentHelp =
    "\n"
    "Environment:\n"
    "  QUILLBAY_CONNECT_TO  default of --connect-to; commas or blanks separate routes\n"
    "  QUILLBAY_CACERT      default of --cacert\n";

std::unexpected<ArgumentsEnd> refused(const std::string& message) {
  return std::unexpected(
      ArgumentsEnd{2, "quillbay-desktop: " + message + "\nTry 'quillbay-desktop --help'.\n"});
}

}  // namespace

std::expected<Arguments, ArgumentsEnd> parseArguments(std::span<const std::string> arguments,
                                                      const host::Environment& environment) {
  std::optional<std::string> instance;
  host::RawNetworkOptions network;
  bool wantsHelp = false;
  bool wantsVersion = false;
  host::OptionTable table;
  table.addText("--instance", "ID",
                "name of this installation for the service\n(default quillbay-desktop)", instance);
  network.addTo(table);
  table.addEnding("--version", "print the version", wantsVersion);
  table.addEnding("--help", "print this help", wantsHelp);

  auto files = table.read(arguments);
  if (!files) return refused(files.error());
  if (wantsHelp) return std::unexpected(ArgumentsEnd{0, kUsage + table.help() + kEnvironmentHelp});
  if (wantsVersion) {
    return std::unexpected(ArgumentsEnd{0, "quillbay-desktop " QUILLBAY_VERSION "\n"});
  }
  const std::string identifier = instance.value_or("quillbay-desktop");
  if (identifier.empty()) return refused("--instance is empty");
  if (!host::codePointCount(identifier)) return refused("--instance is not UTF-8 text");
  auto checkedNetwork = network.checked(environment);
  if (!checkedNetwork) return refused(checkedNetwork.error());
  return Arguments{identifier, std::move(*checkedNetwork), std::move(*files)};
}

}  // namespace quillbay::desktop
