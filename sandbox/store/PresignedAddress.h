#pragma once

#include <string>
#include <string_view>

#include "sandbox/http/Endpoint.h"
#include "sandbox/store/SignatureV4.h"

namespace quillbay::sandbox {

/// Makes addresses that allow one method on one path with one content type for a while, and checks
/// requests to them.
class PresignedAddress {
 public:
  PresignedAddress(Credentials credentials, Clock clock);

  /// `host` with its port; `path` is encoded as needed.
  std::string make(std::string_view method, std::string_view host, std::string_view path,
                   std::string_view contentType) const;

  /// Throws StoreError unless the request was signed for just this use and is still in time.
  void verify(const Call& call) const;

 private:
  Credentials credentials_;
  Clock clock_;
};

}  // namespace quillbay::sandbox
