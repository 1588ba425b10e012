#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "sandbox/http/Reply.h"

namespace quillbay::sandbox {

/// A refusal of the sharing service: the HTTP status, a sentence for the user, and headers where
/// the status asks for some.
class ServiceError : public std::runtime_error {
 public:
  ServiceError(int status, const std::string& message, ReplyHeaders headers = {})
      : std::runtime_error(message), status_(status), headers_(std::move(headers)) {}

  int status() const { return status_; }
  const ReplyHeaders& headers() const { return headers_; }

 private:
  int status_;
  ReplyHeaders headers_;
};

}  // namespace quillbay::sandbox
