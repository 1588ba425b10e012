#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace quillbay::test {

/// Bytes of which no two stretches of a few bytes are alike, so that a lost, repeated or moved
/// piece shows.
inline std::string patternedBytes(std::size_t byteCount) {
  std::string bytes(byteCount, '\0');
  std::uint64_t state = 0x9E3779B97F4A7C15u;
  for (std::size_t offset = 0; offset < byteCount; offset += sizeof(state)) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    std::memcpy(bytes.data() + offset, &state, std::min(sizeof(state), byteCount - offset));
  }
  return bytes;
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return std::move(bytes).str();
}

/// A new empty folder, removed with all it holds when destroyed (by the process that made it).
class TemporaryFolder {
 public:
  TemporaryFolder() : owner_(::getpid()) {
    std::string name = (std::filesystem::temp_directory_path() / "quillbay-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp " + name);
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    if (::getpid() != owner_) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

  /// Writes a file of this name, replacing one that is there, and returns its path.
  std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const {
    const auto path = path_ / name;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string());
    return path;
  }

  /// A file of `byteCount` bytes with the content of `patternedBytes(byteCount)`.
  std::filesystem::path writePattern(const std::filesystem::path& name,
                                     std::size_t byteCount) const {
    return write(name, patternedBytes(byteCount));
  }

  /// A file of `byteCount` zero bytes that takes no room on the disk.
  std::filesystem::path writeSparse(const std::filesystem::path& name,
                                    std::uint64_t byteCount) const {
    const auto path = write(name, "");
    std::filesystem::resize_file(path, byteCount);
    return path;
  }

  /// Unpacks a ZIP archive into "unzipped". Returns what it holds by its path there, "folder" for
  /// folders; nothing if it is not whole.
  std::map<std::string, std::string> unzip(const std::filesystem::path& archive) const {
    const auto target = path_ / "unzipped";
    const std::string command = "LC_ALL=C.UTF-8 unzip '" + archive.string() + "' -d '" +
                                target.string() + "' >/dev/null 2>&1";
    std::map<std::string, std::string> contents;
    if (std::system(command.c_str()) != 0) return contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(target)) {
      contents[entry.path().lexically_relative(target)] =
          entry.is_directory() ? "folder" : readFile(entry);
    }
    return contents;
  }

 private:
  std::filesystem::path path_;
  pid_t owner_;
};

}  // namespace quillbay::test
