#include "sandbox/support/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
  throw std::system_error(errno, std::generic_category(), what + (" " + path.string()));
}

}  // namespace

FileDescriptor::~FileDescriptor() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

FileDescriptor openFile(const std::filesystem::path& path, int flags, mode_t mode) {
  FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, mode));
  if (file.get() < 0) fail("cannot open", path);
  return file;
}

void writeAll(int descriptor, std::string_view bytes, const std::filesystem::path& path) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("cannot write", path);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string readFile(const std::filesystem::path& path) {
  const FileDescriptor file = openFile(path, O_RDONLY);
  std::string text;
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("cannot read", path);
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

void writeFileAtomically(const std::filesystem::path& path, std::string_view text, mode_t mode) {
  std::filesystem::path temporary = path;
  temporary += "." + randomText(8) + ".part";
  try {
    const FileDescriptor file = openFile(temporary, O_WRONLY | O_CREAT | O_EXCL, mode);
    writeAll(file.get(), text, temporary);
    std::filesystem::rename(temporary, path);
  } catch (...) {
    ::unlink(temporary.c_str());
    throw;
  }
}

void createPrivateFolder(const std::filesystem::path& path) {
  if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
  if (::mkdir(path.c_str(), 0700) != 0 && !std::filesystem::is_directory(path)) {
    fail("cannot create the folder", path);
  }
}

}  // namespace quillbay::sandbox
