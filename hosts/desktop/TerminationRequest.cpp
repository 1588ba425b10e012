#include "TerminationRequest.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace quillbay::desktop {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

// A signal handler reaches nothing else. Written before the handlers are installed.
int event = -1;

extern "C" void raiseEvent(int /*signal*/) {
  const int savedError = errno;
  const std::uint64_t one = 1;
  static_cast<void>(::write(event, &one, sizeof one) == 0);
  errno = savedError;
}

}  // namespace

TerminationRequest::TerminationRequest(std::function<void()> handler) {
  event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (event < 0) return;
  auto* const notifier = new QSocketNotifier(event, QSocketNotifier::Read, qApp);
  QObject::connect(notifier, &QSocketNotifier::activated, qApp,
                   [notifier, handler = std::move(handler)] {
                     notifier->setEnabled(false);
                     handler();
                   });
  for (const int signal : kSignals) {
    // A handler, not a blocked signal: the browser that we start would inherit that.
    struct sigaction action{};
    action.sa_handler = raiseEvent;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    struct sigaction before{};
    ::sigaction(signal, &action, &before);
    // What the caller has chosen to ignore stays ignored.
    if (before.sa_handler == SIG_IGN) ::sigaction(signal, &before, nullptr);
  }
}

TerminationRequest::~TerminationRequest() {
  for (const int signal : kSignals) {
    struct sigaction current{};
    ::sigaction(signal, nullptr, &current);
    if (current.sa_handler == raiseEvent) std::signal(signal, SIG_DFL);
  }
  if (event >= 0) ::close(std::exchange(event, -1));
}

}  // namespace quillbay::desktop
