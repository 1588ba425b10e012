#pragma once

#include <pthread.h>
#include <signal.h>

namespace quillbay::platform {

/// Internal: blocks all signals on this thread for its own lifetime, so that threads started
/// meanwhile never run the host's handlers nor die of a broken pipe.
class SignalMask {
 public:
  SignalMask() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace quillbay::platform
