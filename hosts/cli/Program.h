#pragma once

#include <memory>
#include <string>

#include "CommandLine.h"
#include "ExitStatus.h"
#include "SecretSource.h"

namespace quillbay::cli {

class Console;
class Interruption;
class ResultOutput;

/// Carries out one command on the streams and signals of this process. Main thread only.
class Program {
 public:
  Program(Interruption& interruption, Console& console)
      : interruption_(interruption), console_(console) {}

  ExitStatus run(const ShareOptions& options);
  ExitStatus run(const DeleteOptions& options);

 private:
  /// The password for the link, empty when none is wanted.
  std::expected<std::optional<std::string>, SecretSource::Failure> password(
      const ShareOptions& options) const;
  SecretSource::Result token(const DeleteOptions& options) const;

  /// Points the library to the network and installs the logger; false if the options name a file
  /// that cannot be read.
  bool prepare(const CommonOptions& options) const;
  ExitStatus refuse(const SecretSource::Failure& failure) const;

  Interruption& interruption_;
  Console& console_;
};

}  // namespace quillbay::cli
