#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "FileState.h"
#include "RunJournal.h"

namespace quillbay::host {

/// The files of a run as they were when it began. One thread at a time; looking at the files
/// blocks on the file system.
class FileWatch {
 public:
  /// Looks at the files at `paths`, in the order in which the library gets them.
  explicit FileWatch(std::vector<std::string> paths);

  const FileState& before(std::size_t index) const { return before_[index]; }

  struct Suspect {
    std::size_t index;
    FileChange change;
  };
  /// The file that a failure at the journal's step is about, and what became of it since the run
  /// began: the one being uploaded, or before the first upload the first that has changed. There
  /// must be a file.
  Suspect suspect(const RunJournal& journal) const;

 private:
  FileChange changeOf(std::size_t index) const;

  std::vector<std::string> paths_;
  std::vector<FileState> before_;
};

}  // namespace quillbay::host
