#pragma once

#include <stdexcept>
#include <string>

#include "sandbox/http/Reply.h"

namespace quillbay::sandbox {

/// A refusal of the object store.
class StoreError : public std::runtime_error {
 public:
  StoreError(int status, std::string code, const std::string& message, ReplyHeaders headers = {})
      : std::runtime_error(message),
        status_(status),
        code_(std::move(code)),
        headers_(std::move(headers)) {}

  /// The XML error document.
  Reply reply(const std::string& resource) const;

 private:
  int status_;
  std::string code_;
  ReplyHeaders headers_;
};

}  // namespace quillbay::sandbox
