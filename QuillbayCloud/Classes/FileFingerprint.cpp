#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/FileHandle.h>
#include <QuillbayPlatform/SHA256.h>

#include <cstddef>
#include <span>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::DispatchQueue;
using platform::URL;

// Larger reads gain nothing; smaller ones cost system calls.
constexpr std::size_t kChunkByteCount = std::size_t{128} * 1024;

std::optional<std::string> fingerprint(const URL& fileURL, platform::SHA256& hash,
                                       std::span<std::byte> buffer) {
  auto file = platform::FileHandle::openForReading(fileURL);
  if (!file) return std::nullopt;
  auto byteCount = file->read(buffer);
  // Of a file that one read exhausts there is nothing left to read ahead.
  if (byteCount == buffer.size()) file->adviseSequential();
  while (byteCount && *byteCount > 0) {
    hash.update(buffer.first(*byteCount));
    byteCount = file->read(buffer);
  }
  // Also after a failure, so that the hash starts anew with the next file.
  const auto digest = hash.finalize();
  if (!byteCount || !digest) return std::nullopt;
  return platform::lowercaseHexadecimal(*digest);
}

}  // namespace

std::shared_ptr<FileFingerprint> FileFingerprint::create(std::vector<URL> files) {
  return std::shared_ptr<FileFingerprint>(new FileFingerprint(std::move(files)));
}

FileFingerprint::FileFingerprint(std::vector<URL> files) : files_(std::move(files)) {}

void FileFingerprint::calculate(Completion completion) {
  DispatchQueue::globalUserInitiated().async(
      [weakSelf = weak_from_this(), completion = std::move(completion)]() mutable {
        auto self = weakSelf.lock();
        auto result = self ? self->fingerprints() : Fingerprints();
        // Goes to the main queue in any case: what the completion holds must be released there.
        DispatchQueue::main().async([self = std::move(self), completion = std::move(completion),
                                     result = std::move(result)]() mutable {
          if (self && !self->isCancelled()) completion(std::move(result));
        });
      });
}

std::expected<FileFingerprint::Fingerprints, FileFingerprint::FileHasherError>
FileFingerprint::fingerprints() const {
  std::vector<std::byte> buffer(kChunkByteCount);
  platform::SHA256 hash;
  Fingerprints fingerprints;
  fingerprints.reserve(files_.size());
  for (const URL& fileURL : files_) {
    if (isCancelled()) continue;
    if (auto text = fingerprint(fileURL, hash, buffer)) {
      fingerprints.insert_or_assign(fileURL, std::move(*text));
    } else {
      fingerprints.erase(fileURL);
    }
  }
  if (fingerprints.size() < files_.size()) {
    return std::unexpected(FileHasherError::hashCalculationFailed());
  }
  return fingerprints;
}

}  // namespace quillbay::cloud
