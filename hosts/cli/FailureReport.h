#pragma once

#include <QuillbayCloud/model/QuillbayCloudError.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/common/FailureAdvice.h"

namespace quillbay::cli {

/// An error of the library, taken apart for programs.
struct FailureReport {
  enum class Case {
    aws,
    webservice,
    underlying,
    invalidFile,
    invalidResponse,
    missingItems,
    fingerprintFailure,
  };

  Case kind = Case::underlying;
  /// What the error says to people; absent when it has nothing to say.
  std::optional<std::string> description = {};
  /// Of `aws`: the store's name for the error.
  std::optional<std::string> code = {};
  /// Of `webservice`.
  std::optional<std::int64_t> status = {};
  /// As `host::nameOf`.
  std::string_view cause = {};
  /// What failed and why, in English, as people read it on the terminal.
  std::string detail = {};
  /// Path of the file that it is about.
  std::optional<std::string> file = {};

  static FailureReport of(const cloud::QuillbayCloudError& error,
                          const host::FailureAdvice& advice);

  /// The name of the case in the library.
  const char* caseName() const;
};

}  // namespace quillbay::cli
