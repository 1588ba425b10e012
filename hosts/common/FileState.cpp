#include "FileState.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "FileDescriptor.h"
#include "PlainText.h"

namespace quillbay::host {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

FileChange problemOf(FileState& state, const std::string& path) {
  if (!S_ISREG(state.mode)) return FileChange::notRegular;
  const std::size_t slash = path.rfind('/');
  if (!codePointCount(path.substr(slash == std::string::npos ? 0 : slash + 1))) {
    return FileChange::nameNotText;
  }
  // Without blocking and without a controlling terminal, should it have changed its kind.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) {
    state.systemErrorNumber = errno;
    return FileChange::unreadable;
  }
  char byte = 0;
  const bool hidesContent = state.byteCount == 0 && ::read(file.get(), &byte, 1) > 0;
  return hidesContent ? FileChange::sizeUnknown : FileChange::none;
}

}  // namespace

FileState FileState::of(const std::string& path) {
  FileState state;
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) {
    state.systemErrorNumber = errno;
    const bool isGone = errno == ENOENT || errno == ENOTDIR;
    state.problem = isGone ? FileChange::vanished : FileChange::unreadable;
    return state;
  }
  state.mode = status.st_mode;
  state.device = status.st_dev;
  state.number = status.st_ino;
  state.modified = status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec;
  if (S_ISREG(status.st_mode)) state.byteCount = static_cast<std::uint64_t>(status.st_size);
  state.problem = problemOf(state, path);
  return state;
}

FileChange changeOf(const FileState& before, const FileState& now) {
  if (now.problem != FileChange::none) return now.problem;
  if (before.problem != FileChange::none) return before.problem;
  if (now.byteCount > before.byteCount) return FileChange::grew;
  if (now.byteCount < before.byteCount) return FileChange::shrank;
  return now == before ? FileChange::none : FileChange::overwritten;
}

}  // namespace quillbay::host
