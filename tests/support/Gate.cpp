#include "Gate.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <stdexcept>

namespace quillbay::test {

Gate::Gate() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_.isOpen()) throw std::runtime_error("eventfd");
}

void Gate::open() { ::eventfd_write(event_.get(), 1); }

bool Gate::isOpen() const {
  pollfd poll{event_.get(), POLLIN, 0};
  return ::poll(&poll, 1, 0) == 1;
}

}  // namespace quillbay::test
