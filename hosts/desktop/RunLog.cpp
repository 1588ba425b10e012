#include "RunLog.h"

namespace quillbay::desktop {
namespace {

/// The library's threads may write to it until the process ends.
host::RunJournal& journal() {
  static host::RunJournal journal;
  return journal;
}

}  // namespace

void RunLog::begin() {
  journal().restart();
  cloud::Configuration::setLog<RunLog>();
}

host::RunJournal::Step RunLog::step() { return journal().step(); }

void RunLog::debug(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                   std::string_view function, int /*line*/, const std::any& /*context*/) {
  journal().note(function, message());
}

void RunLog::error(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                   std::string_view function, int /*line*/, const std::any& /*context*/) {
  journal().noteError(function, message());
}

}  // namespace quillbay::desktop
