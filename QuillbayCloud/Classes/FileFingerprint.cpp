#include <QuillbayCloud/Classes/ActivityMonitor.h>
#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/SHA256.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::DispatchQueue;
using platform::URL;

// Larger reads gain nothing; smaller ones cost system calls.
constexpr std::size_t kChunkByteCount = std::size_t{128} * 1024;
constexpr std::chrono::milliseconds kReportInterval(100);

/// Files that are missing count as empty: they fail when they are read.
std::uint64_t byteCountOf(const std::vector<URL>& files) {
  std::uint64_t total = 0;
  for (const URL& fileURL : files) {
    const auto attributes = platform::fileAttributes(fileURL);
    if (attributes) total += attributes->byteCount.value_or(0);
  }
  return total;
}

/// Counts what is read, and reports it to a run's activity by the clock: reports cost the main
/// thread a wake-up each. Work queue.
class ReadMeter {
 public:
  ReadMeter(std::shared_ptr<RunActivity> activity, const std::vector<URL>& files)
      : activity_(std::move(activity)), totalByteCount_(activity_ ? byteCountOf(files) : 0) {
    if (!files.empty()) report(0);
  }

  void add(std::size_t fileIndex, std::size_t byteCount) {
    byteCount_ += byteCount;
    if (std::chrono::steady_clock::now() >= nextReport_) report(fileIndex);
  }

  std::uint64_t byteCount() const { return byteCount_; }

 private:
  void report(std::size_t fileIndex) {
    nextReport_ = std::chrono::steady_clock::now() + kReportInterval;
    if (!activity_) return;
    DispatchQueue::main().async([activity = activity_, fileIndex, byteCount = byteCount_,
                                 totalByteCount = totalByteCount_] {
      activity->fingerprinting(fileIndex, byteCount, totalByteCount);
    });
  }

  const std::shared_ptr<RunActivity> activity_;
  const std::uint64_t totalByteCount_;
  std::uint64_t byteCount_ = 0;
  std::chrono::steady_clock::time_point nextReport_;
};

template <class Read>
std::optional<std::string> fingerprint(const URL& fileURL, platform::SHA256& hash,
                                       std::span<std::byte> buffer, Read didRead) {
  auto file = platform::FileHandle::openForReading(fileURL);
  if (!file) return std::nullopt;
  auto byteCount = file->read(buffer);
  // Of a file that one read exhausts there is nothing left to read ahead.
  if (byteCount == buffer.size()) file->adviseSequential();
  std::uint64_t remaining = file->initialByteCount();
  while (byteCount && *byteCount > 0) {
    hash.update(buffer.first(*byteCount));
    didRead(*byteCount);
    const bool reachedSize = remaining > 0 && remaining <= *byteCount;
    remaining -= std::min<std::uint64_t>(remaining, *byteCount);
    // The end is known: another read, to find it, costs small files 3 % of their time. Files of the
    // system that tell no size, and those that grow, are read until nothing comes.
    if (reachedSize && *byteCount < buffer.size()) break;
    byteCount = file->read(buffer);
  }
  // Also after a failure, so that the hash starts anew with the next file.
  const auto digest = hash.finalize();
  if (!byteCount || !digest) return std::nullopt;
  return platform::lowercaseHexadecimal(*digest);
}

}  // namespace

struct FileFingerprint::Calculation {
  Fingerprints fingerprints;
  /// What was read of each file; nothing of one without a fingerprint.
  std::vector<std::optional<std::uint64_t>> byteCounts;
};

std::shared_ptr<FileFingerprint> FileFingerprint::create(std::vector<URL> files,
                                                         std::shared_ptr<RunActivity> activity) {
  return std::shared_ptr<FileFingerprint>(
      new FileFingerprint(std::move(files), std::move(activity)));
}

FileFingerprint::FileFingerprint(std::vector<URL> files, std::shared_ptr<RunActivity> activity)
    : files_(std::move(files)), activity_(std::move(activity)) {}

void FileFingerprint::calculate(Completion completion) {
  DispatchQueue::globalUserInitiated().async(
      [weakSelf = weak_from_this(), completion = std::move(completion)]() mutable {
        auto self = weakSelf.lock();
        auto calculation = self ? self->calculation() : Calculation();
        // Goes to the main queue in any case: what the completion holds must be released there.
        DispatchQueue::main().async([self = std::move(self), completion = std::move(completion),
                                     calculation = std::move(calculation)]() mutable {
          if (self && !self->isCancelled()) self->report(std::move(calculation), completion);
        });
      });
}

FileFingerprint::Calculation FileFingerprint::calculation() const {
  std::vector<std::byte> buffer(kChunkByteCount);
  platform::SHA256 hash;
  ReadMeter meter(activity_, files_);
  Calculation calculation;
  calculation.fingerprints.reserve(files_.size());
  calculation.byteCounts.resize(files_.size());
  for (std::size_t index = 0; index < files_.size(); ++index) {
    if (isCancelled()) continue;
    const URL& fileURL = files_[index];
    const std::uint64_t before = meter.byteCount();
    const auto didRead = [&](std::size_t byteCount) { meter.add(index, byteCount); };
    if (auto text = fingerprint(fileURL, hash, buffer, didRead)) {
      calculation.fingerprints.insert_or_assign(fileURL, std::move(*text));
      calculation.byteCounts[index] = meter.byteCount() - before;
    } else {
      calculation.fingerprints.erase(fileURL);
    }
  }
  return calculation;
}

void FileFingerprint::report(Calculation calculation, Completion& completion) const {
  if (activity_) activity_->fingerprinted(calculation.byteCounts);
  if (calculation.fingerprints.size() < files_.size()) {
    return completion(std::unexpected(FileHasherError::hashCalculationFailed()));
  }
  completion(std::move(calculation.fingerprints));
}

}  // namespace quillbay::cloud
