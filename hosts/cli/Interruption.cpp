#include "Interruption.h"

#include <QuillbayPlatform/DispatchQueue.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include "ExitStatus.h"

namespace quillbay::cli {
namespace {

// Two seconds were promised; the rest is for the system to take the process down.
constexpr std::chrono::milliseconds kOrderlyEndBound{1900};
constexpr std::chrono::milliseconds kForever{-1};

sigset_t signalsToWatch() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // A blocked signal is queued even if it is ignored, and would be read here.
    struct sigaction current{};
    if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN) continue;
    ::sigaddset(&signals, signal);
  }
  return signals;
}

host::FileDescriptor opened(int descriptor, const char* what) {
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
  return host::FileDescriptor(descriptor);
}

void raiseEvent(const host::FileDescriptor& event) {
  const std::uint64_t one = 1;
  static_cast<void>(::write(event.get(), &one, sizeof one) == 0);
}

}  // namespace

Interruption::Interruption(std::function<void()> beforeAbruptEnd)
    : beforeAbruptEnd_(std::move(beforeAbruptEnd)),
      occurrence_(opened(::eventfd(0, EFD_CLOEXEC), "eventfd")),
      stop_(opened(::eventfd(0, EFD_CLOEXEC), "eventfd")) {
  const sigset_t signals = signalsToWatch();
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signals_ = opened(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
  thread_ = std::thread([this] { watch(); });
}

Interruption::~Interruption() {
  raiseEvent(stop_);
  thread_.join();
}

void Interruption::watch() {
  if (wait(kForever) == Event::stop) return;
  hasOccurred_ = true;
  raiseEvent(occurrence_);
  platform::DispatchQueue::main().async([this] {
    if (handler_) handler_();
  });
  if (wait(kOrderlyEndBound) == Event::stop) return;
  beforeAbruptEnd_();
  ::_exit(rawValue(ExitStatus::cancelled));
}

Interruption::Event Interruption::wait(std::chrono::milliseconds bound) const {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + bound;
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    const bool isBounded = bound >= std::chrono::milliseconds::zero();
    if (isBounded && left <= std::chrono::milliseconds::zero()) return Event::timeout;
    std::array<pollfd, 2> events = {{{stop_.get(), POLLIN, 0}, {signals_.get(), POLLIN, 0}}};
    ::poll(events.data(), events.size(), isBounded ? static_cast<int>(left.count()) : -1);
    if (events[0].revents != 0) return Event::stop;
    signalfd_siginfo signal{};
    if (::read(signals_.get(), &signal, sizeof signal) > 0) return Event::signal;
  }
}

}  // namespace quillbay::cli
