#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace quillbay::sandbox {

/// Owns a file descriptor.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

/// All of these throw std::system_error, naming the path.
FileDescriptor openFile(const std::filesystem::path& path, int flags, mode_t mode = 0600);
void writeAll(int descriptor, std::string_view bytes, const std::filesystem::path& path);
std::string readFile(const std::filesystem::path& path);
/// Readers see the old text or the new one, never a part.
void writeFileAtomically(const std::filesystem::path& path, std::string_view text,
                         mode_t mode = 0600);
/// Creates the folder and its parents; only its owner can enter it.
void createPrivateFolder(const std::filesystem::path& path);

}  // namespace quillbay::sandbox
