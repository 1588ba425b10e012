#pragma once

#include <expected>
#include <string>

#include "ExitStatus.h"

namespace quillbay::cli {

class Interruption;

/// Where passwords and tokens come from: the first line of a file or of standard input, or the
/// person at the terminal. Waiting ends at the first Ctrl-C.
class SecretSource {
 public:
  /// Why there is no secret. Without a message the person has cancelled.
  struct Failure {
    ExitStatus status;
    std::string message;
  };
  using Result = std::expected<std::string, Failure>;

  explicit SecretSource(const Interruption& interruption) : interruption_(interruption) {}

  /// The first line of the file, without its line end; "-" is standard input. Refuses an empty
  /// line, what is not UTF-8, and what no line of a password or token is: more than 4096 bytes.
  /// `name` says what is sought ("password").
  Result readFile(const std::string& path, const std::string& name) const;

  /// Asks for a new password on the controlling terminal, with echo off: twice, and again if the
  /// answers differ.
  Result askPassword() const;

 private:
  Result readLine(int descriptor, const std::string& failure) const;
  Result prompt(int terminal, const std::string& text) const;

  const Interruption& interruption_;
};

}  // namespace quillbay::cli
