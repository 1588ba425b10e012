#pragma once

#include <stdexcept>
#include <string>

namespace quillbay::sandbox {

/// A refusal of the sharing service: the HTTP status and a sentence for the user.
class ServiceError : public std::runtime_error {
 public:
  ServiceError(int status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  int status() const { return status_; }

 private:
  int status_;
};

}  // namespace quillbay::sandbox
