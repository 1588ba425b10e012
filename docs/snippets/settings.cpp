#include <QuillbayCloud/QuillbayCloud.h>
// [languages]
#include <QuillbayPlatform/StringTable.h>
// [languages]

#include "Promises.h"

using namespace quillbay;

namespace {

// [logger]
struct Logger {
  using Message = cloud::Configuration::LogMessage;
  static void debug(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);
  static void error(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);
};
// [logger]

int errorCount = 0;

void Logger::debug(const Message&, std::string_view, std::string_view, int, const std::any&) {}
void Logger::error(const Message& message, std::string_view, std::string_view, int,
                   const std::any&) {
  if (!message().empty()) ++errorCount;
}

void log() {
  // [logger]
  cloud::Configuration::setLog<Logger>();
  // [logger]
  const auto controller = cloud::SessionController::create(
      {"my-app", {platform::URL::fileURL("missing")}}, cloud::SessionConfiguration::default_());
  controller->createSession([](const auto&) { platform::stopMainQueue(); });
  platform::runMainQueue();
  expect(errorCount > 0, "failures are told to the logger");
}

}  // namespace

int main() {
  // [network]
  platform::NetworkSettings::set({.connectTo = {"cloud.quillbay.example:443:127.0.0.1:8443"},
                                  .caBundlePath = "/path/to/ca.pem",
                                  .proxy = ""});
  // [network]
  expect(platform::NetworkSettings::isValidRoute(
             platform::NetworkSettings::current().connectTo.front()),
         "the route is one");

  const auto before = cloud::Localized("share-window.share-button.title");
  // [languages]
  platform::setPreferredLanguages({"de"});
  // [languages]
  expect(cloud::Localized("share-window.share-button.title") != before, "German is built in");

  log();
}
