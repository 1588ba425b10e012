#include "sandbox/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

namespace quillbay::sandbox {

namespace {

constexpr int usageStatus = 2;

/// Following the XDG base directory rules; empty when there is no home.
std::filesystem::path defaultDataFolder() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::filesystem::path(state) / "quillbay-sandbox";
  const char* const home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return {};
  return std::filesystem::path(home) / ".local/state/quillbay-sandbox";
}

}  // namespace

std::variant<CommandLine, int> parseCommandLine(int argumentCount, char** arguments) {
  CommandLine line;
  line.dataFolder = defaultDataFolder();
  CLI::App app(
      "A local sharing service and object store: everything that quillbay needs, without an "
      "account.\nListens on 127.0.0.1 only. Prints the two settings that point quillbay at it.",
      "quillbay-sandbox");
  app.set_version_flag("--version", "quillbay-sandbox " QUILLBAY_VERSION);
  app.add_option("--port", line.port, "Port to listen on; 0 chooses a free one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  auto* const data =
      app.add_option("--data", line.dataFolder, "Folder for certificates, sessions and files")
          ->capture_default_str();
  app.add_option("--ready-file", line.readyFile,
                 "File to write the settings to once requests are answered; removed at the end");
  if (line.dataFolder.empty()) data->required();
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& result) {
    return app.exit(result) == 0 ? 0 : usageStatus;
  }
  return line;
}

}  // namespace quillbay::sandbox
