#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>

#include <string>

namespace quillbay::platform {

/// Why a JSON text could not be read into a record, or a record not written.
class QUILLBAY_EXPORT JSONError final : public Error {
 public:
  /// What is wrong with the value.
  enum class Kind {
    missingKey,     ///< a required key is absent
    nullValue,      ///< a required value is null
    wrongType,      ///< a value has another JSON type
    corruptValue,   ///< a value of the right type with content that makes no sense
    invalidSyntax,  ///< the text is no JSON, or nested too deeply
    unwritable,     ///< a text is no UTF-8, or a number not finite
  };

  /// `keyPath`: as `keyPath()` returns it.
  JSONError(Kind kind, std::string keyPath) : kind_(kind), keyPath_(std::move(keyPath)) {}

  /// What is wrong with the value at `keyPath()`.
  Kind kind() const { return kind_; }
  /// Keys and positions from the root, joined with dots ("items.2.fingerprint"); empty for the
  /// root.
  const std::string& keyPath() const { return keyPath_; }

  std::string description() const override;

 private:
  Kind kind_;
  std::string keyPath_;
};

}  // namespace quillbay::platform
