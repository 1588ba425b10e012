#pragma once

#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/NetworkSettings.h>

#include <chrono>
#include <functional>
#include <string>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {

/// Runs the main queue until `condition` holds; fails if that takes minutes.
inline void runMainQueueUntil(const std::function<bool()>& condition) {
  if (!platform::runMainQueue(condition, std::chrono::minutes(3))) fail("the work does not end");
}

/// Points the library at the benchmark's server.
inline void useServer(const std::string& authorityFile, const std::string& route) {
  platform::NetworkSettings settings;
  settings.connectTo = {route};
  settings.caBundlePath = authorityFile;
  platform::NetworkSettings::set(settings);
}

}  // namespace quillbay::bench
