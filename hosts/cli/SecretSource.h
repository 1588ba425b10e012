#pragma once

#include <expected>
#include <functional>
#include <optional>
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

  /// The first line of the file, without its line end and without a byte order mark; "-" is
  /// standard input, on a terminal with echo off. Refuses an empty
  /// line, what is not UTF-8, and what no line of a password or token is: more than 4096 bytes.
  /// `name` says what is sought ("password").
  Result readFile(const std::string& path, const std::string& name) const;

  /// What is wrong with a secret, for people, if anything.
  using Check = std::function<std::optional<std::string>(const std::string& secret)>;

  /// Asks for a new password on the controlling terminal, with echo off: twice, and again if
  /// `check` refuses the first answer or the answers differ.
  Result askPassword(const Check& check) const;

 private:
  struct Line {
    std::string text;
    /// It ended with a line end, and not with the end of the input.
    bool isWhole;
  };

  std::expected<Line, Failure> readLine(int descriptor, const std::string& failure) const;
  Result firstLine(int descriptor, const std::string& failure) const;
  Result prompt(int terminal, const std::string& text) const;

  const Interruption& interruption_;
};

}  // namespace quillbay::cli
