#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CommandLine.h"
#include "Console.h"
#include "Interruption.h"
#include "Program.h"
#include "StandardStreams.h"

namespace {

using namespace quillbay::cli;

std::optional<std::string> environmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

ExitStatus print(const CommandLineEnd& end) {
  const int descriptor = end.status == ExitStatus::success ? STDOUT_FILENO : STDERR_FILENO;
  const int error = writeAll(descriptor, end.text);
  if (error == 0 || end.status != ExitStatus::success) return end.status;
  Console(STDERR_FILENO, false)
      .printError(std::string("cannot write to standard output: ") + std::strerror(error));
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
  const auto command = parseCommandLine(arguments, environmentVariable,
                                        quillbay::platform::Date(std::chrono::system_clock::now()));
  if (!command) return print(command.error());

  // The library's threads may still log while the process ends: the console outlives them.
  static Console console(STDERR_FILENO, wantsStatus(commonOptionsOf(*command)));
  ExitStatus status = ExitStatus::failure;
  try {
    Interruption interruption([] { console.abandonStatus(); });
    Program program(interruption, console);
    status = std::visit([&](const auto& options) { return program.run(options); }, *command);
    // At once: a file may still be hashed and an upload be stalled, whose results are of no use.
    if (status == ExitStatus::cancelled) ::_exit(rawValue(status));
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
