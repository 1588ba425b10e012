#pragma once

#include <QuillbayCloud/service/Configuration.h>

#include <any>
#include <string_view>

namespace quillbay::host {
class RunJournal;
}

namespace quillbay::cli {

class Console;

/// The library's logger: keeps the journal, and with --verbose prints every message. Called on any
/// thread.
class HostLogger {
 public:
  HostLogger() = delete;

  /// Both must live as long as the library's threads; `console` is null without --verbose.
  static void install(host::RunJournal& journal, Console* console);

  static void debug(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);
  static void error(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);

 private:
  static host::RunJournal* journal_;
  static Console* console_;
};

}  // namespace quillbay::cli
