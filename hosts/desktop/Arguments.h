#pragma once

#include <expected>
#include <span>
#include <string>
#include <vector>

#include "hosts/common/NetworkOptions.h"

namespace quillbay::desktop {

struct Arguments {
  std::string instanceIdentifier;
  host::NetworkOptions network;
  std::vector<std::string> files;
};

/// Nothing is to be run: help or the version for standard output (0), or what is wrong with the
/// command line for standard error (2).
struct ArgumentsEnd {
  int status;
  std::string text;
};

/// Reads the arguments after the program's name. Touches no file.
std::expected<Arguments, ArgumentsEnd> parseArguments(std::span<const std::string> arguments,
                                                      const host::Environment& environment);

}  // namespace quillbay::desktop
