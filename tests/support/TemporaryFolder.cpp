#include "TemporaryFolder.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quillbay::test {

TemporaryFolder::TemporaryFolder() : owner_(::getpid()) {
  std::string name = (std::filesystem::temp_directory_path() / "quillbay-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp " + name);
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  if (::getpid() != owner_) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::write(const std::filesystem::path& name,
                                             std::string_view content) const {
  const auto path = path_ / name;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
  return path;
}

std::filesystem::path TemporaryFolder::writePattern(const std::filesystem::path& name,
                                                    std::size_t byteCount) const {
  return write(name, patternedBytes(byteCount));
}

std::filesystem::path TemporaryFolder::writeSparse(const std::filesystem::path& name,
                                                   std::uint64_t byteCount) const {
  const auto path = write(name, "");
  std::filesystem::resize_file(path, byteCount);
  return path;
}

std::map<std::string, std::string> TemporaryFolder::unzip(
    const std::filesystem::path& archive) const {
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

std::string patternedBytes(std::size_t byteCount) {
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

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace quillbay::test
