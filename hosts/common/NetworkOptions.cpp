#include "NetworkOptions.h"

#include <QuillbayPlatform/NetworkSettings.h>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "FileDescriptor.h"
#include "OptionTable.h"
#include "PlainText.h"

namespace quillbay::host {
namespace {

using Failure = std::unexpected<std::string>;

std::vector<std::string> splitRoutes(std::string_view text) {
  constexpr std::string_view kSeparators = ", \t\r\n";
  std::vector<std::string> routes;
  while (true) {
    const std::size_t start = text.find_first_not_of(kSeparators);
    if (start == std::string_view::npos) return routes;
    const std::size_t end = std::min(text.find_first_of(kSeparators, start), text.size());
    routes.emplace_back(text.substr(start, end - start));
    text.remove_prefix(end);
  }
}

bool namesProxy(const Environment& environment) {
  if (environment("no_proxy").value_or(environment("NO_PROXY").value_or("")) == "*") return false;
  return std::ranges::any_of(
      std::array{"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"},
      [&](const char* name) { return !environment(name).value_or("").empty(); });
}

}  // namespace

Environment processEnvironment() {
  return [](const char* name) -> std::optional<std::string> {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
  };
}

std::optional<std::string> NetworkOptions::apply() const {
  if (!caBundlePath.empty()) {
    const FileDescriptor file(::open(caBundlePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
      return "cannot read the certificates in " + inQuotes(caBundlePath) + ": " +
             std::strerror(errno);
    }
  }
  platform::NetworkSettings::set(
      {.connectTo = connectTo, .caBundlePath = caBundlePath, .proxy = {}});
  return std::nullopt;
}

void RawNetworkOptions::addTo(OptionTable& table) {
  table.addList("--connect-to", "HOST:PORT:HOST:PORT",
                "send connections for the first host and port to the\n"
                "second, as curl does (repeatable)",
                connectTo_);
  table.addText("--cacert", "FILE",
                "PEM file with the authorities to trust in place of\nthe system's", caBundlePath_);
}

std::expected<NetworkOptions, std::string> RawNetworkOptions::checked(
    const Environment& environment) const {
  NetworkOptions options{connectTo_, caBundlePath_.value_or(""), namesProxy(environment)};
  const bool fromEnvironment = options.connectTo.empty();
  if (fromEnvironment) {
    options.connectTo = splitRoutes(environment("QUILLBAY_CONNECT_TO").value_or(""));
  }
  for (const std::string& route : options.connectTo) {
    if (platform::NetworkSettings::isValidRoute(route)) continue;
    return Failure((fromEnvironment ? "QUILLBAY_CONNECT_TO: " : "--connect-to: ") +
                   inQuotes(route) + " is not of the form HOST:PORT:HOST:PORT");
  }
  if (caBundlePath_ && caBundlePath_->empty()) return Failure("--cacert is empty");
  if (!caBundlePath_) options.caBundlePath = environment("QUILLBAY_CACERT").value_or("");
  return options;
}

}  // namespace quillbay::host
