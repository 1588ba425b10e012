#pragma once

#include <QuillbayCloud/model/SessionActivity.h>
#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "FailureAdvice.h"
#include "FileState.h"

namespace quillbay::host {

/// The files of a share as they were when it began, in the order in which the library gets them.
/// One thread at a time; looking at the files blocks on the file system.
class SharedFiles {
 public:
  SharedFiles() = default;
  /// Looks at the files at `paths`.
  explicit SharedFiles(std::vector<std::string> paths);

  std::size_t count() const { return paths_.size(); }
  const std::vector<std::string>& paths() const { return paths_; }
  const std::vector<platform::URL>& urls() const { return urls_; }
  /// As it was when the share began.
  const FileState& state(std::size_t index) const { return states_[index]; }

  /// 0 for what is no regular file.
  std::uint64_t byteCount(std::size_t index) const { return states_[index].byteCount; }
  std::uint64_t byteCount(std::span<const std::size_t> indices) const;
  std::uint64_t totalByteCount() const;

  /// The path as it was given, between quotes, for a terminal; the file's name for a window.
  std::string displayName(std::size_t index, FailureAudience audience) const;

  struct Suspect {
    std::size_t index;
    FileChange change;
  };
  /// The file that the failure of a run is about, and what became of it since the share began: the
  /// file of the activity, or else the first that has changed. Nothing if there is none.
  std::optional<Suspect> suspect(const cloud::SessionActivity& activity) const;

 private:
  FileChange changeOf(std::size_t index) const;

  std::vector<std::string> paths_;
  std::vector<platform::URL> urls_;
  std::vector<FileState> states_;
};

}  // namespace quillbay::host
