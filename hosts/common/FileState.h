#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quillbay::host {

/// What became of a file between two looks at it.
enum class FileChange {
  none,
  grew,
  shrank,
  overwritten,  ///< same size, but written to or replaced
  vanished,
  unreadable,      ///< it exists, and the system refuses to open it
  notRegular,      ///< a folder, pipe, socket or device
  nameNotText,     ///< its name is not UTF-8 and cannot be sent
  contentChanged,  ///< its content is not the one that was announced to the service
  sizeUnknown,     ///< the system states no size for content that exists, as in /proc
};

/// A file as it is at one moment. Any thread; blocks on the file system.
struct FileState {
  /// Looks at the file at `path`, following links, without waiting for a pipe's other end.
  static FileState of(const std::string& path);

  /// Why the file cannot be shared as it is; `none` if it can.
  FileChange problem = FileChange::vanished;
  /// Of a failed call of the system; else 0.
  int systemErrorNumber = 0;
  /// Of a file that exists: type and permissions as in `stat`.
  unsigned mode = 0;
  /// Of a regular file.
  std::uint64_t byteCount = 0;
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  /// Nanoseconds since 1970.
  std::int64_t modified = 0;

  friend bool operator==(const FileState&, const FileState&) = default;
};

/// What happened to a file from `before` to `now`.
FileChange changeOf(const FileState& before, const FileState& now);

}  // namespace quillbay::host
