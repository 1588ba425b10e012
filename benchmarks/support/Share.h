#pragma once

#include <QuillbayCloud/QuillbayCloud.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainQueueRun.h"

namespace quillbay::bench {

inline std::shared_ptr<cloud::SessionController> shareController(
    const std::vector<std::string>& paths) {
  std::vector<platform::URL> files;
  files.reserve(paths.size());
  for (const auto& path : paths) files.push_back(platform::URL::fileURL(path));
  return cloud::SessionController::create({kUsualInstance, std::move(files)},
                                          cloud::SessionConfiguration::default_());
}

/// Runs the main queue until the files are shared; fails if they cannot be.
inline void share(cloud::SessionController& controller) {
  std::optional<bool> isShared;
  controller.createSession([&](const auto& result) { isShared = result.has_value(); });
  runMainQueueUntil([&] { return isShared.has_value(); });
  if (!*isShared) fail("the share failed");
}

}  // namespace quillbay::bench
