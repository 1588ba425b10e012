#include "RunLog.h"

namespace quillbay::desktop {
namespace {

/// The library's threads may write to it until the process ends.
constinit host::RunJournal runJournal;

}  // namespace

void RunLog::begin() {
  runJournal.restart();
  cloud::Configuration::setLog<RunLog>();
}

const host::RunJournal& RunLog::journal() { return runJournal; }

void RunLog::debug(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                   std::string_view function, int /*line*/, const std::any& /*context*/) {
  runJournal.note(function, message());
}

void RunLog::error(const cloud::Configuration::LogMessage& message, std::string_view /*file*/,
                   std::string_view function, int /*line*/, const std::any& /*context*/) {
  runJournal.noteError(function, message());
}

}  // namespace quillbay::desktop
