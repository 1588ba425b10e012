#pragma once

#include <filesystem>
#include <optional>
#include <variant>

namespace quillbay::sandbox {

struct CommandLine {
  int port = 8443;
  std::filesystem::path dataFolder;
  std::optional<std::filesystem::path> readyFile;
};

/// What the arguments ask for, or the exit status when help, the version or a complaint about them
/// has been printed.
std::variant<CommandLine, int> parseCommandLine(int argumentCount, char** arguments);

}  // namespace quillbay::sandbox
