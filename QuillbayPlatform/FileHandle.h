#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace quillbay::platform {

/// What the file system knows of a file.
struct FileAttributes {
  /// Size in bytes; absent for anything but a regular file (after links).
  std::optional<std::uint64_t> byteCount;
};

/// Reads the attributes of the file at a file URL, following links. Any thread; blocks on the file
/// system. Fails with a `FileError`.
std::expected<FileAttributes, ErrorPtr> fileAttributes(const URL& fileURL);

/// A failed operation on a file: which, and the system's reason. The description shows the path as
/// `singleLine` does: a name may hold any byte.
class FileError final : public Error {
 public:
  FileError(std::string operation, std::string path, int systemErrorNumber);
  FileError(std::string operation, std::string path, std::string reason);

  std::string description() const override;

 private:
  std::string operation_;
  std::string path_;
  std::string reason_;
};

/// A regular file open for reading from its first byte. Close-on-exec. One thread at a time.
class FileHandle {
 public:
  /// Opens without blocking; a folder, FIFO, socket or device is refused.
  static std::expected<FileHandle, ErrorPtr> openForReading(const URL& fileURL);

  FileHandle(FileHandle&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)),
        path_(std::move(other.path_)),
        initialByteCount_(other.initialByteCount_) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(path_, other.path_);
    std::swap(initialByteCount_, other.initialByteCount_);
    return *this;
  }
  ~FileHandle();

  /// Reads the next bytes, at most the buffer's size; 0 at the end of the file. A process that is
  /// ending gets an error, so that a long hash does not hold up its exit.
  std::expected<std::size_t, ErrorPtr> read(std::span<std::byte> buffer);

  /// Moves to `offset` bytes from the file's beginning.
  bool seek(std::uint64_t offset);

  /// Size in bytes when the file was opened.
  std::uint64_t initialByteCount() const { return initialByteCount_; }

  /// Tells the system that the file will be read once from beginning to end.
  void adviseSequential();

 private:
  FileHandle(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

  int descriptor_;
  std::string path_;
  std::uint64_t initialByteCount_ = 0;
};

}  // namespace quillbay::platform
