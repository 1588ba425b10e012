#pragma once

#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quillbay::cli {

/// The files of the command line as a person needs to hear of them. It decides nothing: whether
/// they can be shared, the library says.
class FileList {
 public:
  explicit FileList(std::vector<std::string> paths);

  std::size_t count() const { return paths_.size(); }
  const std::vector<platform::URL>& urls() const { return urls_; }
  /// The path as it was given, between quotes.
  std::string name(std::size_t index) const;

  /// Looks at the files as they are now. Returns a sentence for each that cannot be shared, and
  /// why, without those it has returned before.
  std::vector<std::string> findProblems();

  /// A sentence for each file that stands in the list under several paths: it can be shared, but
  /// will be uploaded once for each. As of the last `findProblems`.
  std::vector<std::string> aliases() const;

  /// As of the last `findProblems`; 0 for a file that could not be read.
  const std::vector<std::uint64_t>& byteCounts() const { return byteCounts_; }
  std::uint64_t totalByteCount() const;

 private:
  struct Identity {
    bool isKnown = false;
    std::uint64_t device = 0;
    std::uint64_t number = 0;
  };

  std::string problem(std::size_t index);
  std::vector<std::string> repetitions() const;

  std::vector<std::string> paths_;
  std::vector<platform::URL> urls_;
  std::vector<std::uint64_t> byteCounts_;
  std::vector<Identity> identities_;
  std::vector<std::string> reported_;
};

}  // namespace quillbay::cli
