#include "benchmarks/support/FileFingerprints.h"

#include <optional>

#include "benchmarks/support/MainQueueRun.h"

namespace quillbay::bench {

std::vector<std::string> fileFingerprints(const std::vector<std::string>& paths) {
  std::vector<platform::URL> files;
  files.reserve(paths.size());
  for (const auto& path : paths) files.push_back(platform::URL::fileURL(path));

  const auto hasher = cloud::FileFingerprint::create(std::move(files));
  std::optional<cloud::FileFingerprint::Fingerprints> fingerprints;
  bool failed = false;
  hasher->calculate([&](auto result) {
    failed = !result;
    if (result) fingerprints = std::move(*result);
  });
  runMainQueueUntil([&] { return failed || fingerprints; });
  if (failed || !fingerprints) fail("a file cannot be fingerprinted");

  std::vector<std::string> texts;
  texts.reserve(paths.size());
  for (const auto& file : hasher->files()) texts.push_back(fingerprints->at(file));
  return texts;
}

}  // namespace quillbay::bench
