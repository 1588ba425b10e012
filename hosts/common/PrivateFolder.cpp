#include "PrivateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

namespace quillbay::host {

std::filesystem::path PrivateFolder::path() {
  const std::lock_guard lock(mutex_);
  if (!path_.empty()) return path_;
  std::string name = std::filesystem::temp_directory_path() / "quillbay-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::filesystem::filesystem_error("cannot make a folder", name,
                                            std::error_code(errno, std::generic_category()));
  }
  return path_ = std::move(name);
}

void PrivateFolder::remove() noexcept {
  const std::lock_guard lock(mutex_);
  std::error_code error;
  if (!path_.empty()) std::filesystem::remove_all(path_, error);
  path_.clear();
}

}  // namespace quillbay::host
