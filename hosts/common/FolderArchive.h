#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quillbay::host {

/// A folder packed into a ZIP file (APPNOTE.TXT, with ZIP64 where it is needed), under the folder's
/// name: every file, with its time of modification and its permissions, and every folder, the empty
/// ones too. Symbolic links, pipes, sockets and devices are left out: to those who unpack it on
/// another computer they lead nowhere.
struct FolderArchive {
  std::string path;
  /// What was left out and why, a sentence each.
  std::vector<std::string> omissions;
};

/// How far the packing of several folders is.
struct PackingProgress {
  /// Of the folders that were named.
  std::size_t folderIndex = 0;
  /// Of this folder's files; 0 of 0 while they are being counted.
  std::uint64_t packedByteCount = 0;
  std::uint64_t totalByteCount = 0;

  /// Of all bytes that are to be packed, 0 to 1.
  double fraction() const {
    return totalByteCount == 0
               ? 0
               : static_cast<double>(packedByteCount) / static_cast<double>(totalByteCount);
  }
};

/// Packs folders, one after the other, on a thread of its own. Main queue only.
class FolderPacking {
 public:
  /// The archives in the order of the folders; or why one could not be made, for people: what
  /// cannot be read, changes meanwhile or has a name that is not UTF-8 ends the packing.
  using Result = std::expected<std::vector<FolderArchive>, std::string>;

  /// Starts to pack `folders` into files in `destination`, an empty folder, which is left out where
  /// it lies in one of them. `completion` is called once on the main queue, unless this object was
  /// destroyed before. Throws `std::system_error` if there is no thread to be had.
  FolderPacking(std::vector<std::string> folders, std::filesystem::path destination,
                std::move_only_function<void(Result)> completion);
  FolderPacking(const FolderPacking&) = delete;
  FolderPacking& operator=(const FolderPacking&) = delete;
  /// Stops the thread and waits for it: as long as a read from a file may take.
  ~FolderPacking();

  PackingProgress progress() const;

  /// Between the thread and the main queue.
  struct State;

 private:
  std::shared_ptr<State> state_;
  std::jthread thread_;
};

}  // namespace quillbay::host
