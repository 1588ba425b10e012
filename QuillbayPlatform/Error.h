#pragma once

#include <QuillbayPlatform/Export.h>

#include <memory>
#include <optional>
#include <string>

namespace quillbay::platform {

/// Base of every error value: immutable, shared, never thrown.
///
/// Errors travel as `ErrorPtr` inside `std::expected` or as a callback's argument. Objects may be
/// read from any thread.
class QUILLBAY_EXPORT Error {
 public:
  virtual ~Error();

  /// One line for developers and logs, in English. Never holds a password, a token or the query
  /// of an address.
  virtual std::string description() const = 0;

  /// A sentence for the person at the screen, in their language; absent where the error has none.
  virtual std::optional<std::string> errorDescription() const { return std::nullopt; }

 protected:
  Error() = default;
  /// For derived classes alone: a copy of the base would lose what it says.
  Error(const Error&) = default;
  /// For derived classes alone.
  Error& operator=(const Error&) = default;
};

/// An error that is shared; null where there is none.
using ErrorPtr = std::shared_ptr<const Error>;

}  // namespace quillbay::platform
