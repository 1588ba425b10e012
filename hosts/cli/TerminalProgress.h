#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "hosts/common/ShareRun.h"

namespace quillbay::cli {

class Console;

/// What a terminal can show.
struct LineStyle {
  std::size_t columnCount = 79;
  bool colours = false;
  bool unicode = false;

  /// By NO_COLOR and the locale's encoding as the environment names them.
  static LineStyle ofEnvironment();
};

/// The line of an upload in at most `columnCount` columns: percent, bar, files done of files, the
/// current file, bytes, speed, elapsed and remaining time, as many of them as there is room for.
struct UploadLine {
  double fraction = 0;
  std::size_t filesDone = 0;
  std::size_t fileCount = 0;
  /// Name of the current file, a plain line; left out where there is only one.
  std::string file = {};
  std::uint64_t byteCount = 0;
  std::uint64_t totalByteCount = 0;
  /// Bytes in a second; 0 if it is not known.
  double speed = 0;
  std::chrono::seconds elapsed{};
  std::optional<std::chrono::seconds> remaining = {};

  std::string text(const LineStyle& style) const;
};

/// The status line of a run: fingerprinting, creating the session, the upload's bar, and the wait
/// for the next try. Main thread only.
class TerminalProgress {
 public:
  using Clock = host::ShareRun::Clock;

  explicit TerminalProgress(Console& console);

  /// Shows where the run is. Call it at most ten times a second.
  void show(const host::ShareRun& run, Clock::time_point now);

  std::chrono::seconds elapsed(Clock::time_point now) const;

 private:
  std::string text(const host::ShareRun& run, Clock::time_point now);
  std::string waitingText(const char* activity, const host::ShareRun& run,
                          Clock::time_point now) const;
  std::string fingerprintText(const host::ShareRun& run, Clock::time_point now) const;
  std::string uploadText(const host::ShareRun& run, Clock::time_point now);

  Console& console_;
  const Clock::time_point start_ = Clock::now();
  LineStyle style_ = LineStyle::ofEnvironment();
  std::optional<Clock::time_point> uploadStart_;
};

/// "next try in 4 s (2 of 5)", of a run that is waiting.
std::string nextTryText(const host::ShareRun& run);

}  // namespace quillbay::cli
