#include "HostLogger.h"

#include <string>

#include "Console.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

void print(Console& console, std::string_view level, std::string_view function,
           std::string_view message) {
  console.printLine(std::string(level) + " " + std::string(function) + ": " +
                    host::plainLine(message));
}

}  // namespace

Console* HostLogger::console_ = nullptr;

void HostLogger::install(Console& console) {
  console_ = &console;
  cloud::Configuration::setLog<HostLogger>();
}

void HostLogger::debug(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                       std::string_view function, int /*line*/, const std::any& /*context*/) {
  print(*console_, "debug", function, message());
}

void HostLogger::error(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                       std::string_view function, int /*line*/, const std::any& /*context*/) {
  print(*console_, "error", function, message());
}

}  // namespace quillbay::cli
