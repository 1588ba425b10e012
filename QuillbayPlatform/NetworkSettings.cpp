#include <QuillbayPlatform/NetworkSettings.h>

#include <mutex>
#include <regex>
#include <string>
#include <utility>

namespace quillbay::platform {
namespace {

struct Slot {
  std::mutex mutex;
  NetworkSettings settings;  // guarded by mutex
};

Slot& slot() {
  // Never destroyed: the network thread reads it until the process ends.
  static auto* const instance = new Slot;
  return *instance;
}

bool isPort(const std::string& digits) {
  if (digits.empty()) return true;
  const int port = std::stoi(digits);
  return port >= 1 && port <= 65535;
}

}  // namespace

bool NetworkSettings::isValidRoute(const std::string& route) {
  static const auto* const pattern = new std::regex(
      R"((?:\[[0-9A-Fa-f:.%]*\]|[^:\[\]\s]*):(\d{0,5}):(?:\[[0-9A-Fa-f:.%]*\]|[^:\[\]\s]*):(\d{0,5}))");
  std::smatch match;
  if (!std::regex_match(route, match, *pattern)) return false;
  return isPort(match[1]) && isPort(match[2]);
}

void NetworkSettings::set(NetworkSettings settings) {
  const std::lock_guard lock(slot().mutex);
  slot().settings = std::move(settings);
}

NetworkSettings NetworkSettings::current() {
  const std::lock_guard lock(slot().mutex);
  return slot().settings;
}

}  // namespace quillbay::platform
