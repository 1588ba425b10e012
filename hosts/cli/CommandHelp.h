#pragma once

#include <string>
#include <string_view>

namespace quillbay::cli {

/// What `quillbay --help` prints: the commands and the exit statuses.
std::string programHelp();

/// What `quillbay COMMAND --help` prints. `options` is the help of the command's options.
std::string commandHelp(std::string_view command, std::string_view options);

}  // namespace quillbay::cli
