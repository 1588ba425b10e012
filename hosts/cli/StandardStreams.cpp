#include "StandardStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

namespace quillbay::cli {

void occupyStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest free number is this one: those below are taken by now. Opened for the direction
    // that is not used, so that using it is still an error and no result vanishes unseen.
    static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

int writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      // Another process that shares the stream has made it non-blocking.
      pollfd stream{descriptor, POLLOUT, 0};
      ::poll(&stream, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

std::optional<std::size_t> terminalColumnCount(int descriptor) {
  winsize size{};
  const bool isKnown = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  // The last column stays free: a terminal that has filled it may have moved to the next line.
  return isKnown ? std::optional<std::size_t>(size.ws_col - 1) : std::nullopt;
}

bool canWriteNow(int descriptor) {
  pollfd stream{descriptor, POLLOUT, 0};
  // An error counts: the write will tell which one it is.
  return ::poll(&stream, 1, 0) == 1;
}

}  // namespace quillbay::cli
