#pragma once

#include <functional>

namespace quillbay::platform {

/// Internal: brings up the libraries below and the one exit hook of this layer, once. Every place
/// that starts a thread calls it first. What a thread of ours may touch is used before the hook is
/// registered, so that at `exit()` our threads have ended before it is destroyed. Does nothing in
/// a forked child. Any thread.
void prepareProcess();

/// Internal: has `stop` called when the process exits, before libraries below are taken down;
/// what was registered last is called first. Never called in a forked child.
void stopAtExit(std::function<void()> stop);

/// Whether exit has begun. From then on no work starts: only what runs already is awaited. What
/// waits is kept, since destroying it could run code of the host. Any thread.
bool isProcessExiting();

/// Whether exit has begun on this thread, which is then in an exit handler of the host.
bool isThreadExitingProcess();

/// Whether this process is a fork of the one that used this layer first: it has none of the
/// threads, and a lock may be held for ever by one that it lacks. Asked before every lock and
/// before every start of a thread. Any thread.
bool isForkedChild();

}  // namespace quillbay::platform
