#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CommandLine.h"
#include "Console.h"
#include "ErrorMessage.h"
#include "Interruption.h"
#include "Program.h"
#include "StandardStreams.h"
#include "hosts/common/PrivateFolder.h"

namespace {

using namespace quillbay::cli;

ExitStatus print(const CommandLineEnd& end) {
  const int descriptor = end.status == ExitStatus::success ? STDOUT_FILENO : STDERR_FILENO;
  const int error = writeAll(descriptor, end.text);
  if (error == 0 || end.status != ExitStatus::success) return end.status;
  Console console(STDERR_FILENO, false);
  printOutputError(console, error);
  return ExitStatus::failure;
}

/// Whether a bar belongs on standard error. Events on the same terminal tell as much.
bool wantsStatus(const CommonOptions& options) {
  const bool isQuiet = options.verbosity == Verbosity::quiet;
  if (isQuiet || !Console::canShowStatus(STDERR_FILENO)) return false;
  return !options.json || ::isatty(STDOUT_FILENO) == 0;
}

const CommonOptions& commonOptionsOf(const Command& command) {
  return std::visit([](const auto& options) -> const CommonOptions& { return options.common; },
                    command);
}

ExitStatus runProgram(const std::vector<std::string>& arguments) {
  const auto environment = quillbay::host::processEnvironment();
  const auto command = parseCommandLine(arguments, environment,
                                        quillbay::platform::Date(std::chrono::system_clock::now()));
  if (!command) return print(command.error());

  // The library's threads may still log while the process ends: the console outlives them.
  static Console console(STDERR_FILENO, wantsStatus(commonOptionsOf(*command)));
  quillbay::host::PrivateFolder temporaryFiles;
  ExitStatus status = ExitStatus::failure;
  try {
    Interruption interruption([&] {
      console.abandonStatus();
      temporaryFiles.remove();
    });
    Program program(interruption, console, environment, temporaryFiles);
    status = std::visit([&](const auto& options) { return program.run(options); }, *command);
    // At once: a file may still be hashed and an upload be stalled, whose results are of no use.
    if (status == ExitStatus::cancelled) {
      temporaryFiles.remove();
      ::_exit(rawValue(status));
    }
  } catch (const std::exception& error) {
    console.printError(error.what());
  }
  return status;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  occupyStandardStreams();
  // A reader that leaves is an error of the write, and no reason to leave a session behind.
  std::signal(SIGPIPE, SIG_IGN);
  return rawValue(runProgram(std::vector<std::string>(arguments + 1, arguments + argumentCount)));
}
