#pragma once

#include <memory>
#include <string>
#include <utility>

#include "CommandLine.h"
#include "ExitStatus.h"
#include "SecretSource.h"

namespace quillbay::host {
class History;
class PrivateFolder;
struct RememberedShare;
}  // namespace quillbay::host

namespace quillbay::cli {

class Console;
class Interruption;
class ResultOutput;

/// Carries out one command on the streams and signals of this process. Main thread only.
class Program {
 public:
  /// `temporaryFiles` takes what is needed until the program ends.
  Program(Interruption& interruption, Console& console, host::Environment environment,
          host::PrivateFolder& temporaryFiles)
      : interruption_(interruption),
        console_(console),
        environment_(std::move(environment)),
        temporaryFiles_(temporaryFiles) {}

  ExitStatus run(const ShareOptions& options);
  ExitStatus run(const ResumeOptions& options);
  ExitStatus run(const DeleteOptions& options);
  ExitStatus run(const ListOptions& options);
  ExitStatus run(const ForgetOptions& options);
  ExitStatus run(const CompleteOptions& options);

 private:
  struct FileChoice {
    std::vector<std::string> paths;
    bool hasArchives = false;
  };

  /// The password for the link, empty when none is wanted.
  std::expected<std::optional<std::string>, SecretSource::Failure> password(
      const ShareOptions& options) const;
  /// What is to be shared: archives in the place of folders that are to be packed.
  std::expected<FileChoice, SecretSource::Failure> files(const ShareOptions& options);
  SecretSource::Result token(const DeleteOptions& options) const;

  /// Points the library to the network and installs the logger; false if the options name a file
  /// that cannot be read.
  bool prepare(const CommonOptions& options) const;
  ExitStatus refuse(const SecretSource::Failure& failure) const;
  /// For a command that cannot work without the history.
  ExitStatus failBecauseOf(const host::History& history) const;
  /// Why `history` or `problem` keeps a command from doing anything.
  ExitStatus refuse(const host::History& history, const std::string& problem) const;

  /// Continues a share of which nothing is left.
  ExitStatus finish(const host::RememberedShare& share, host::History& history,
                    const CommonOptions& options) const;
  ExitStatus print(const std::string& text) const;

  Interruption& interruption_;
  Console& console_;
  const host::Environment environment_;
  host::PrivateFolder& temporaryFiles_;
};

}  // namespace quillbay::cli
