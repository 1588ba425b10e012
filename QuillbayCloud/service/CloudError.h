#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/JSONDecoder.h>

#include <cstdint>
#include <expected>
#include <string>

namespace quillbay::cloud {

/// Internal: the JSON body of every refusal by the service. A value; any thread.
struct CloudError {
  /// For the user, in the user's language.
  std::string message;
  /// The status as the body states it.
  std::int64_t status;

  /// Both "message" (text) and "status" (integer) are required.
  static std::expected<CloudError, platform::ErrorPtr> decode(platform::JSONReader& reader);

  friend bool operator==(const CloudError&, const CloudError&) = default;
};

}  // namespace quillbay::cloud
