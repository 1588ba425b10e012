#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "hosts/common/RunJournal.h"
#include "hosts/common/TransferEstimate.h"

namespace quillbay::cli {

class Console;
class FileList;

/// What a terminal can show.
struct LineStyle {
  std::size_t columnCount = 79;
  bool colours = false;
  bool unicode = false;

  /// By NO_COLOR and the locale's encoding as the environment names them.
  static LineStyle ofEnvironment();
};

/// The line of an upload in at most `columnCount` columns: percent, bar, files done of files,
/// elapsed and remaining time, as many of them as there is room for.
struct UploadLine {
  double fraction = 0;
  std::size_t filesDone = 0;
  std::size_t fileCount = 0;
  std::chrono::seconds elapsed{};
  std::optional<std::chrono::seconds> remaining = {};

  std::string text(const LineStyle& style) const;
};

/// The status line of a run: fingerprinting, creating the session, then the upload's bar. Main
/// thread only.
class TerminalProgress {
 public:
  using Clock = host::TransferEstimate::Clock;

  TerminalProgress(Console& console, const FileList& files, Clock::time_point start);

  /// Shows where the run is. Call it at most ten times a second.
  void show(const host::RunJournal& journal, double fraction, Clock::time_point now);

  std::chrono::seconds elapsed(Clock::time_point now) const;

 private:
  std::string waitingText(const char* activity, Clock::time_point now) const;
  std::string uploadText(const host::RunJournal& journal, double fraction, Clock::time_point now);

  Console& console_;
  const FileList& files_;
  const Clock::time_point start_;
  LineStyle style_;
  std::optional<host::TransferEstimate> estimate_;
  Clock::time_point uploadStart_;
};

}  // namespace quillbay::cli
