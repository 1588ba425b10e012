#include "FileWatch.h"

#include <algorithm>
#include <utility>

namespace quillbay::host {

FileWatch::FileWatch(std::vector<std::string> paths) : paths_(std::move(paths)) {
  before_.reserve(paths_.size());
  for (const std::string& path : paths_) before_.push_back(FileState::of(path));
}

FileWatch::Suspect FileWatch::suspect(const RunJournal& journal) const {
  const auto step = journal.step();
  const std::size_t last = paths_.size() - 1;
  if (step != RunJournal::Step::fingerprinting && step != RunJournal::Step::creatingSession) {
    // Files are uploaded from the end of the list.
    const std::size_t index = last - std::min(journal.filesDone(), last);
    return {index, changeOf(index)};
  }
  for (std::size_t index = 0; index <= last; ++index) {
    const FileChange change = changeOf(index);
    if (change != FileChange::none) return {index, change};
  }
  return {0, FileChange::none};
}

FileChange FileWatch::changeOf(std::size_t index) const {
  return host::changeOf(before_[index], FileState::of(paths_[index]));
}

}  // namespace quillbay::host
