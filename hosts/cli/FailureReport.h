#pragma once

#include <QuillbayCloud/model/QuillbayCloudError.h>

#include <cstdint>
#include <optional>
#include <string>

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

  static FailureReport of(const cloud::QuillbayCloudError& error);

  /// The name of the case in the library.
  const char* caseName() const;
};

}  // namespace quillbay::cli
