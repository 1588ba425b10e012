#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace quillbay::test {

/// A new empty folder, removed with all it holds when destroyed (by the process that made it).
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

  /// Writes a file of this name, replacing one that is there, and returns its path.
  std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const;

  /// A file of `byteCount` bytes with the content of `patternedBytes(byteCount)`.
  std::filesystem::path writePattern(const std::filesystem::path& name,
                                     std::size_t byteCount) const;

  /// A file of `byteCount` zero bytes that takes no room on the disk.
  std::filesystem::path writeSparse(const std::filesystem::path& name,
                                    std::uint64_t byteCount) const;

  /// Unpacks a ZIP archive into "unzipped". Returns what it holds by its path there, "folder" for
  /// folders; nothing if it is not whole.
  std::map<std::string, std::string> unzip(const std::filesystem::path& archive) const;

 private:
  std::filesystem::path path_;
  pid_t owner_;
};

/// Bytes of which no two stretches of a few bytes are alike, so that a lost, repeated or moved
/// piece shows.
std::string patternedBytes(std::size_t byteCount);

std::string readFile(const std::filesystem::path& path);

}  // namespace quillbay::test
