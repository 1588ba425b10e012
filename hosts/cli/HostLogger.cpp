#include "HostLogger.h"

#include <string>

#include "Console.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/RunJournal.h"

namespace quillbay::cli {
namespace {

void print(Console& console, std::string_view level, std::string_view function,
           std::string_view message) {
  console.printLine(std::string(level) + " " + std::string(function) + ": " +
                    host::plainLine(message));
}

}  // namespace

host::RunJournal* HostLogger::journal_ = nullptr;
Console* HostLogger::console_ = nullptr;

void HostLogger::install(host::RunJournal& journal, Console* console) {
  journal_ = &journal;
  console_ = console;
  cloud::Configuration::setLog<HostLogger>();
}

void HostLogger::debug(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                       std::string_view function, int /*line*/, const std::any& /*context*/) {
  const std::string text = message();
  journal_->note(function, text);
  if (console_ != nullptr) print(*console_, "debug", function, text);
}

void HostLogger::error(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                       std::string_view function, int /*line*/, const std::any& /*context*/) {
  const std::string text = message();
  journal_->noteError(function, text);
  if (console_ != nullptr) print(*console_, "error", function, text);
}

}  // namespace quillbay::cli
