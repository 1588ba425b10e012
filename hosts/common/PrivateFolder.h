#pragma once

#include <filesystem>
#include <mutex>

namespace quillbay::host {

/// A folder for temporary files that only this user can read, below TMPDIR. It is made when it is
/// first needed, and removed with all it holds when it is destroyed. Any thread.
class PrivateFolder {
 public:
  PrivateFolder() = default;
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder() { remove(); }

  /// Makes the folder if there is none. Throws `std::filesystem::filesystem_error` if it cannot.
  std::filesystem::path path();

  /// Removes the folder. For a program that ends without running destructors.
  void remove() noexcept;

 private:
  std::mutex mutex_;
  std::filesystem::path path_;
};

}  // namespace quillbay::host
