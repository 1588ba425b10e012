#pragma once

#include "hosts/common/FileDescriptor.h"

#include <poll.h>
#include <sys/eventfd.h>

namespace quillbay::test {

/// Closed until it is opened, then open for good. Any thread. Held by `std::shared_ptr`
/// wherever a server's thread may still be waiting at it.
class Gate {
 public:
  void open() { ::eventfd_write(event_.get(), 1); }
  bool isOpen() const {
    pollfd poll{event_.get(), POLLIN, 0};
    return ::poll(&poll, 1, 0) == 1;
  }

  /// Readable once the gate is open.
  int descriptor() const { return event_.get(); }

 private:
  host::FileDescriptor event_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace quillbay::test
