#include "SharedFiles.h"

#include <utility>

#include "PlainText.h"

namespace quillbay::host {

SharedFiles::SharedFiles(std::vector<std::string> paths) : paths_(std::move(paths)) {
  urls_.reserve(paths_.size());
  states_.reserve(paths_.size());
  for (const std::string& path : paths_) {
    urls_.push_back(platform::URL::fileURL(path));
    states_.push_back(FileState::of(path));
  }
}

std::uint64_t SharedFiles::byteCount(std::span<const std::size_t> indices) const {
  std::uint64_t sum = 0;
  for (const std::size_t index : indices) sum += byteCount(index);
  return sum;
}

std::uint64_t SharedFiles::totalByteCount() const {
  std::uint64_t sum = 0;
  for (const FileState& state : states_) sum += state.byteCount;
  return sum;
}

std::string SharedFiles::displayName(std::size_t index, FailureAudience audience) const {
  if (audience == FailureAudience::terminal) return inQuotes(paths_[index]);
  return plainLine(urls_[index].lastPathComponent());
}

std::optional<SharedFiles::Suspect> SharedFiles::suspect(
    const cloud::SessionActivity& activity) const {
  std::optional<std::size_t> index;
  if (activity.file) {
    index = activity.file->index;
  } else if (!activity.filesWithoutFingerprint.empty()) {
    index = activity.filesWithoutFingerprint.front().index;
  }
  if (index) return Suspect{*index, changeOf(*index)};
  for (std::size_t candidate = 0; candidate < count(); ++candidate) {
    const FileChange change = changeOf(candidate);
    if (change != FileChange::none) return Suspect{candidate, change};
  }
  return std::nullopt;
}

FileChange SharedFiles::changeOf(std::size_t index) const {
  return host::changeOf(states_[index], FileState::of(paths_[index]));
}

}  // namespace quillbay::host
