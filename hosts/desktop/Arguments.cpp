#include "Arguments.h"

#include <utility>

#include "hosts/common/InstanceOption.h"
#include "hosts/common/OptionTable.h"

namespace quillbay::desktop {
namespace {

constexpr const char* kDefaultInstance = "quillbay-desktop";

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
    "Environment:\n";

std::unexpected<ArgumentsEnd> refused(const std::string& message) {
  return std::unexpected(
      ArgumentsEnd{2, "quillbay-desktop: " + message + "\nTry 'quillbay-desktop --help'.\n"});
}

}  // namespace

std::expected<Arguments, ArgumentsEnd> parseArguments(std::span<const std::string> arguments,
                                                      const host::Environment& environment) {
  host::InstanceOption instance;
  host::RawNetworkOptions network;
  bool wantsHelp = false;
  bool wantsVersion = false;
  host::OptionTable table;
  instance.addTo(table, kDefaultInstance);
  network.addTo(table);
  table.addEnding("-V, --version", "print the version", wantsVersion);
  table.addEnding("-h, --help", "print this help", wantsHelp);

  auto files = table.read(arguments);
  if (!files) return refused(files.error());
  if (wantsHelp)
    return std::unexpected(ArgumentsEnd{
        0, kUsage + table.help() + kEnvironmentHelp + host::RawNetworkOptions::kEnvironmentHelp});
  if (wantsVersion) {
    return std::unexpected(ArgumentsEnd{0, "quillbay-desktop " QUILLBAY_VERSION "\n"});
  }
  const auto identifier = instance.checked();
  if (!identifier) return refused(identifier.error());
  auto checkedNetwork = network.checked(environment);
  if (!checkedNetwork) return refused(checkedNetwork.error());
  return Arguments{identifier->value_or(kDefaultInstance), std::move(*checkedNetwork),
                   std::move(*files)};
}

}  // namespace quillbay::desktop
