#pragma once

#include <QuillbayPlatform/Export.h>

#include <chrono>
#include <functional>

namespace quillbay::platform {

/// @file
/// How the main queue runs: in one of two ways.
///
/// - A program without an event loop drains it itself, on one thread, with `runMainQueue`.
/// - A host with a loop of its own calls `setMainQueuePoster` once, before first use.
///
/// Once the process exits, no item begins any more; one that runs on another thread is awaited for
/// a second.

/// Runs work items on this thread until `stopMainQueue`; work left over stays for the next run.
QUILLBAY_EXPORT void runMainQueue();

/// The same, but also ends as soon as `condition` holds (tested before each item and after the
/// last) or `bound` has passed. Returns whether the condition held.
QUILLBAY_EXPORT bool runMainQueue(const std::function<bool()>& condition,
                                  std::chrono::milliseconds bound);

/// Ends the current run of the main queue after the item in progress; without one, ends the next
/// run at once. Any thread, but no signal handler.
QUILLBAY_EXPORT void stopMainQueue();

/// Hands the main queue to a host's event loop. `post` is called from any thread, once for every
/// work item, and must run the function that it is given once, later, on the loop's thread (Qt:
/// `QMetaObject::invokeMethod` with a queued connection; GLib: `g_idle_add`). It is not called any
/// more once the process exits. An empty function gives the main queue back to `runMainQueue`.
QUILLBAY_EXPORT void setMainQueuePoster(std::function<void(std::function<void()> runOneItem)> post);

}  // namespace quillbay::platform
