#pragma once

#include <QuillbayCloud/service/Configuration.h>
#include <QuillbayPlatform/SingleLine.h>

#include <any>
#include <atomic>
#include <concepts>
#include <source_location>
#include <string_view>

namespace quillbay::cloud {

/// Internal: hands messages to the host's logger, if there is one; without one no message is made.
/// `function` is the operation's name with its argument labels. A message is handed over as
/// `singleLine`: the identifiers, entity tags and error texts in it come from servers. Any thread.
class Log {
 public:
  template <std::invocable MakeMessage>
  static void debug(std::string_view function, MakeMessage makeMessage,
                    std::source_location place = std::source_location::current()) {
    if (const auto* logger = installed()) write(logger->debug, function, makeMessage, place);
  }

  template <std::invocable MakeMessage>
  static void error(std::string_view function, MakeMessage makeMessage,
                    std::source_location place = std::source_location::current()) {
    if (const auto* logger = installed()) write(logger->error, function, makeMessage, place);
  }

 private:
  static const Configuration::EntryPoints* installed() {
    return installed_.load(std::memory_order_acquire);
  }

  template <class MakeMessage>
  static void write(Configuration::EntryPoint entryPoint, std::string_view function,
                    MakeMessage& makeMessage, const std::source_location& place) {
    const auto makeLine = [&] { return platform::singleLine(makeMessage()); };
    entryPoint(makeLine, place.file_name(), function, static_cast<int>(place.line()), std::any());
  }

  friend class Configuration;
  static std::atomic<const Configuration::EntryPoints*> installed_;
};

}  // namespace quillbay::cloud
