#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/RarelySet.h>

#include <regex>
#include <string>
#include <utility>

namespace quillbay::platform {
namespace {

constinit RarelySet<NetworkSettings> processSettings;

bool isPort(const std::string& digits) {
  if (digits.empty()) return true;
  const int port = std::stoi(digits);
  return port >= 1 && port <= 65535;
}

}  // namespace

bool NetworkSettings::isValidRoute(const std::string& route) {
  const std::regex pattern(
      R"((?:\[[0-9A-Fa-f:.%]*\]|[^:\[\]\s]*):(\d{0,5}):(?:\[[0-9A-Fa-f:.%]*\]|[^:\[\]\s]*):(\d{0,5}))");
  std::smatch match;
  if (!std::regex_match(route, match, pattern)) return false;
  return isPort(match[1]) && isPort(match[2]);
}

void NetworkSettings::set(NetworkSettings settings) { processSettings.set(std::move(settings)); }

NetworkSettings NetworkSettings::current() { return processSettings.get(); }

}  // namespace quillbay::platform
