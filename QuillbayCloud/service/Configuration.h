#pragma once

#include <QuillbayPlatform/Export.h>

#include <any>
#include <functional>
#include <string>
#include <string_view>

namespace quillbay::cloud {

/// Settings of the library as a whole.
class QUILLBAY_EXPORT Configuration {
 public:
  Configuration() = delete;

  /// Makes the text of a message. Valid during the call that hands it over; may be called there any
  /// number of times, or not at all.
  using LogMessage = std::function<std::string()>;

  /// Installs a logger, handed over by type; the last one installed wins. Any thread, at any time.
  ///
  ///     struct Logger {
  ///       static void debug(const Configuration::LogMessage& message, std::string_view file,
  ///                         std::string_view function, int line, const std::any& context);
  ///       static void error(... the same ...);
  ///     };
  ///     Configuration::setLog<Logger>();
  ///
  /// `debug` tells of progress, `error` of failures. `file` is the source file, `function` the name
  /// of the operation with its argument labels ("uploadItem(url:)"), `line` counts from 1,
  /// `context` is always empty. They are called on the main queue, on background queues and on the
  /// network thread, several at a time, and must not throw; one that waits holds up every transfer.
  /// Messages are single lines of UTF-8 without control characters, and hold no password, no token
  /// and no presigned query.
  template <class Logger>
  static void setLog() {
    static constexpr EntryPoints entryPoints = {&Logger::debug, &Logger::error};
    install(entryPoints);
  }

 private:
  friend class Log;

  using EntryPoint = void (*)(const LogMessage& message, std::string_view file,
                              std::string_view function, int line, const std::any& context);
  struct EntryPoints {
    EntryPoint debug;
    EntryPoint error;
  };

  /// `entryPoints` must live as long as the process.
  static void install(const EntryPoints& entryPoints);
};

}  // namespace quillbay::cloud
