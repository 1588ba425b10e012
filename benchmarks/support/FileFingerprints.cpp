#include "benchmarks/support/FileFingerprints.h"

#include <QuillbayCloud/Classes/ActivityMonitor.h>

#include <optional>
#include <utility>

#include "benchmarks/support/MainQueueRun.h"

namespace quillbay::bench {
namespace {

std::vector<platform::URL> fileURLs(const std::vector<std::string>& paths) {
  std::vector<platform::URL> files;
  files.reserve(paths.size());
  for (const auto& path : paths) files.push_back(platform::URL::fileURL(path));
  return files;
}

std::vector<std::string> calculate(const std::shared_ptr<cloud::FileFingerprint>& hasher) {
  std::optional<cloud::FileFingerprint::Fingerprints> fingerprints;
  bool failed = false;
  hasher->calculate([&](auto result) {
    failed = !result;
    if (result) fingerprints = std::move(*result);
  });
  runMainQueueUntil([&] { return failed || fingerprints; });
  if (failed || !fingerprints) fail("a file cannot be fingerprinted");

  std::vector<std::string> texts;
  texts.reserve(hasher->files().size());
  for (const auto& file : hasher->files()) texts.push_back(fingerprints->at(file));
  return texts;
}

}  // namespace

std::vector<std::string> fileFingerprints(const std::vector<std::string>& paths) {
  return calculate(cloud::FileFingerprint::create(fileURLs(paths)));
}

std::vector<std::string> observedFileFingerprints(const std::vector<std::string>& paths) {
  const auto urls = fileURLs(paths);
  cloud::ActivityMonitor::Files files;
  for (std::size_t index = 0; index < urls.size(); ++index) files.push_back({index, urls[index]});
  const auto monitor = cloud::ActivityMonitor::create(urls.size());
  int deliveryCount = 0;
  const auto observation = monitor->observe([&](const auto&) { ++deliveryCount; });
  auto texts =
      calculate(cloud::FileFingerprint::create(urls, monitor->beginRun(std::move(files), {})));
  if (deliveryCount == 0) fail("nothing was observed");
  return texts;
}

}  // namespace quillbay::bench
