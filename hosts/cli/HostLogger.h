#pragma once

#include <QuillbayCloud/service/Configuration.h>

#include <any>
#include <string_view>

namespace quillbay::cli {

class Console;

/// The library's logger for --verbose: prints every message. Called on any thread.
class HostLogger {
 public:
  HostLogger() = delete;

  /// `console` must live as long as the library's threads.
  static void install(Console& console);

  static void debug(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);
  static void error(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);

 private:
  static Console* console_;
};

}  // namespace quillbay::cli
