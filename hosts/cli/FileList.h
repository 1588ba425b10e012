#pragma once

#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hosts/common/FileWatch.h"

namespace quillbay::cli {

/// The files of the command line as they were when the command began, as a person needs to hear of
/// them. It decides nothing: whether they can be shared, the library says.
class FileList {
 public:
  /// Looks at the files.
  explicit FileList(std::vector<std::string> paths);

  std::size_t count() const { return paths_.size(); }
  const std::vector<platform::URL>& urls() const { return urls_; }
  /// The path as it was given, between quotes.
  std::string name(std::size_t index) const;

  /// A sentence for each file that cannot be shared, and why.
  std::vector<std::string> problems() const;

  /// A sentence for each file that stands in the list under several paths: it can be shared, but
  /// will be uploaded once for each.
  std::vector<std::string> aliases() const;

  /// 0 for what is no regular file.
  std::vector<std::uint64_t> byteCounts() const;
  std::uint64_t totalByteCount() const;

  /// What became of the files since then.
  const host::FileWatch& watch() const { return watch_; }

 private:
  std::string problem(std::size_t index) const;
  std::vector<std::string> repetitions() const;

  std::vector<std::string> paths_;
  std::vector<platform::URL> urls_;
  host::FileWatch watch_;
};

}  // namespace quillbay::cli
