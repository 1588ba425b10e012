#pragma once

#include <httplib.h>

#include <optional>

#include "sandbox/http/Reply.h"
#include "sandbox/http/RequestBody.h"
#include "sandbox/http/Target.h"

namespace quillbay::sandbox {

/// One request as an endpoint sees it.
struct Call {
  const httplib::Request& request;
  const Target& target;
  RequestBody& body;

  std::string header(const char* name) const { return request.get_header_value(name); }
};

/// Answers the requests below one part of the address space. Called on many threads at once;
/// throws nothing.
class Endpoint {
 public:
  virtual ~Endpoint() = default;

  virtual Reply answer(Call& call) = 0;

  /// Asked while the client still holds its body back ("Expect: 100-continue"): a reply ends the
  /// request, nothing lets the body come and leads to `answer`.
  virtual std::optional<Reply> refuseEarly(Call&) { return std::nullopt; }
};

}  // namespace quillbay::sandbox
