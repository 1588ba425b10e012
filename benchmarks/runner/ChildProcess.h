#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillbay::bench {

/// A program, found like a shell does, and its arguments.
using Command = std::vector<std::string>;

/// What the system calls take, valid as long as the command.
std::vector<char*> argumentPointers(const Command& command);

/// What one run of a program took.
struct Usage {
  double wallSeconds = 0;
  double processorSeconds = 0;
  long peakKibibytes = 0;
};

/// Runs the program to its end, with nothing on standard input and standard output in
/// `outputFile`. Fails if the program does, or takes minutes.
Usage runCommand(const Command& command, const std::filesystem::path& outputFile);

/// The file's text.
std::string readText(const std::filesystem::path& path);

}  // namespace quillbay::bench
