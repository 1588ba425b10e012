#pragma once

namespace quillbay::cli {

/// What the program tells its caller. The help text and the manual page list them.
enum class ExitStatus : int {
  success = 0,      ///< shared, or deleted
  failure = 1,      ///< the run failed
  usage = 2,        ///< the command line cannot be carried out as written; nothing was sent
  cancelled = 130,  ///< ended by Ctrl-C or a request to terminate
};

constexpr int rawValue(ExitStatus status) { return static_cast<int>(status); }

}  // namespace quillbay::cli
