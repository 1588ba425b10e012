#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/ProcessExit.h>
#include <QuillbayPlatform/SingleLine.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

namespace quillbay::platform {
namespace {

/// In English whatever the host's locale, and safe in threads.
std::string systemErrorText(int systemErrorNumber) {
  const char* text = strerrordesc_np(systemErrorNumber);
  return text != nullptr ? text : "system error " + std::to_string(systemErrorNumber);
}

template <class... Reason>
std::unexpected<ErrorPtr> fileError(const char* operation, const std::string& path,
                                    Reason... reason) {
  return std::unexpected<ErrorPtr>(std::make_shared<FileError>(operation, path, reason...));
}

/// The local path of a file URL, ready for the system's calls.
std::expected<std::string, ErrorPtr> localPath(const URL& fileURL, const char* operation) {
  if (!fileURL.isFileURL()) return fileError(operation, fileURL.redacted(), "not a local file");
  std::string path = fileURL.path();
  // The system would see another, shorter path.
  if (path.find('\0') != std::string::npos) return fileError(operation, path, EINVAL);
  return path;
}

}  // namespace

FileError::FileError(std::string operation, std::string path, int systemErrorNumber)
    : FileError(std::move(operation), std::move(path), systemErrorText(systemErrorNumber)) {}

FileError::FileError(std::string operation, std::string path, std::string reason)
    : operation_(std::move(operation)), path_(std::move(path)), reason_(std::move(reason)) {}

std::string FileError::description() const {
  return singleLine("Cannot " + operation_ + " " + path_ + ": " + reason_);
}

std::expected<FileAttributes, ErrorPtr> fileAttributes(const URL& fileURL) {
  constexpr const char* kOperation = "read the attributes of";
  const auto path = localPath(fileURL, kOperation);
  if (!path) return std::unexpected(path.error());
  struct stat status;
  if (::stat(path->c_str(), &status) != 0) return fileError(kOperation, *path, errno);
  FileAttributes attributes;
  if (S_ISREG(status.st_mode)) attributes.byteCount = static_cast<std::uint64_t>(status.st_size);
  return attributes;
}

std::expected<FileHandle, ErrorPtr> FileHandle::openForReading(const URL& fileURL) {
  constexpr const char* kOperation = "open";
  constexpr const char* kNotRegular = "not a regular file";
  auto path = localPath(fileURL, kOperation);
  if (!path) return std::unexpected(path.error());
  // O_NONBLOCK: a FIFO without a writer would hold the caller for ever.
  const int descriptor = ::open(path->c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0 && errno == ENXIO) return fileError(kOperation, *path, kNotRegular);
  if (descriptor < 0) return fileError(kOperation, *path, errno);
  FileHandle file(descriptor, std::move(*path));
  struct stat status;
  if (::fstat(descriptor, &status) != 0) return fileError(kOperation, file.path_, errno);
  if (!S_ISREG(status.st_mode)) return fileError(kOperation, file.path_, kNotRegular);
  file.initialByteCount_ = static_cast<std::uint64_t>(status.st_size);
  return file;
}

FileHandle::~FileHandle() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::expected<std::size_t, ErrorPtr> FileHandle::read(std::span<std::byte> buffer) {
  if (isProcessExiting()) return fileError("read", path_, "the process is ending");
  for (;;) {
    const ssize_t byteCount = ::read(descriptor_, buffer.data(), buffer.size());
    if (byteCount >= 0) return static_cast<std::size_t>(byteCount);
    if (errno != EINTR) return fileError("read", path_, errno);
  }
}

// NOLINTNEXTLINE(readability-make-member-function-const): moves the file's own position.
bool FileHandle::seek(std::uint64_t offset) {
  if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return false;
  return ::lseek(descriptor_, static_cast<off_t>(offset), SEEK_SET) >= 0;
}

// NOLINTNEXTLINE(readability-make-member-function-const): changes how the file is read.
void FileHandle::adviseSequential() {
  // Advice: a file system that takes none is no failure.
  static_cast<void>(::posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL));
}

}  // namespace quillbay::platform
