#pragma once

#include <QuillbayCloud/service/Configuration.h>

#include <any>
#include <string_view>

#include "hosts/common/RunJournal.h"

namespace quillbay::desktop {

/// The library's logger: keeps the journal of the run that is on. Any thread.
class RunLog {
 public:
  RunLog() = delete;

  /// A new run begins.
  static void begin();
  static const host::RunJournal& journal();

  static void debug(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);
  static void error(const cloud::Configuration::LogMessage& message, std::string_view file,
                    std::string_view function, int line, const std::any& context);
};

}  // namespace quillbay::desktop
