#pragma once

#include <functional>

namespace quillbay::platform {

/// Internal: brings up the libraries below and the one exit hook of this layer, once. Every place
/// that starts a thread calls it first. OpenSSL and libcurl are initialised before the hook is
/// registered, so that at `exit()` our threads have ended before OpenSSL takes itself down.
/// Any thread.
void prepareProcess();

/// Internal: has `stop` called when the process exits, before libraries below are taken down;
/// what was registered last is called first. Never called in a forked child.
void stopAtExit(std::function<void()> stop);

/// Whether exit has begun. Any thread.
bool isProcessExiting();

/// Whether this process is a fork of the one that used this layer first: it has none of the
/// threads, and a lock may be held for ever by one that it lacks. Any thread.
bool isForkedChild();

}  // namespace quillbay::platform
