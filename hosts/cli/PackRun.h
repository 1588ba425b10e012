#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "ExitStatus.h"
#include "hosts/common/FolderArchive.h"

namespace quillbay::cli {

class Console;

/// Packs the folders among the paths to be shared, and shows how far that is. Main thread only; it
/// must live until the main queue runs no more.
class PackRun {
 public:
  using Clock = std::chrono::steady_clock;

  /// `destination` is an empty folder for the archives. `console` outlives the run.
  PackRun(std::vector<std::string> paths, std::filesystem::path destination, Console& console);
  PackRun(const PackRun&) = delete;
  PackRun& operator=(const PackRun&) = delete;

  static bool isFolder(const std::string& path);

  void start();
  void cancel();
  void tick(Clock::time_point now);
  /// Present when the run is over; `success` if every folder was packed, `usage` if one cannot be.
  std::optional<ExitStatus> status() const { return status_; }

  /// Of a run that succeeded: the paths, with an archive in the place of each folder.
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  void completed(const host::FolderPacking::Result& result);

  std::vector<std::string> paths_;
  /// Positions of the folders in the list.
  std::vector<std::size_t> folders_;
  const std::filesystem::path destination_;
  Console& console_;
  std::optional<host::FolderPacking> packing_;
  std::optional<ExitStatus> status_;
};

}  // namespace quillbay::cli
