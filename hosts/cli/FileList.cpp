#include "FileList.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <numeric>
#include <set>
#include <utility>

#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

std::string kindText(mode_t mode) {
  if (S_ISDIR(mode)) return "is a folder; pack it into an archive and share that";
  if (S_ISFIFO(mode)) return "is a pipe; only regular files can be shared";
  if (S_ISSOCK(mode)) return "is a socket; only regular files can be shared";
  return "is a device; only regular files can be shared";
}

}  // namespace

FileList::FileList(std::vector<std::string> paths)
    : paths_(std::move(paths)), byteCounts_(paths_.size()), identities_(paths_.size()) {
  urls_.reserve(paths_.size());
  for (const std::string& path : paths_) urls_.push_back(platform::URL::fileURL(path));
}

std::string FileList::name(std::size_t index) const { return host::inQuotes(paths_[index]); }

std::vector<std::string> FileList::findProblems() {
  std::vector<std::string> problems = repetitions();
  for (std::size_t index = 0; index < count(); ++index) {
    if (std::string text = problem(index); !text.empty()) problems.push_back(std::move(text));
  }
  std::vector<std::string> news;
  for (std::string& text : problems) {
    const bool isKnown = std::ranges::find(reported_, text) != reported_.end();
    if (!isKnown) news.push_back(std::move(text));
  }
  reported_.insert(reported_.end(), news.begin(), news.end());
  return news;
}

std::string FileList::problem(std::size_t index) {
  const std::string& path = paths_[index];
  struct stat status{};
  byteCounts_[index] = 0;
  identities_[index] = {};
  if (::stat(path.c_str(), &status) != 0) return name(index) + ": " + std::strerror(errno);
  if (!S_ISREG(status.st_mode)) return name(index) + " " + kindText(status.st_mode);

  identities_[index] = {true, status.st_dev, status.st_ino};
  byteCounts_[index] = static_cast<std::uint64_t>(status.st_size);
  // Without blocking and without a controlling terminal, should it have changed its kind.
  const host::FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return name(index) + ": " + std::strerror(errno);
  const std::size_t slash = path.rfind('/');
  const std::string baseName = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (!host::codePointCount(baseName))
    return name(index) + ": the name is not UTF-8 text; rename the file";
  return {};
}

std::vector<std::string> FileList::repetitions() const {
  std::map<platform::URL, std::vector<std::size_t>> places;
  for (std::size_t index = 0; index < count(); ++index) places[urls_[index]].push_back(index);
  std::vector<std::string> texts;
  for (const auto& [url, indices] : places) {
    if (indices.size() < 2) continue;
    texts.push_back(name(indices.front()) + " stands " + std::to_string(indices.size()) +
                    " times in the list; name each file once");
  }
  return texts;
}

std::vector<std::string> FileList::aliases() const {
  using Key = std::pair<std::uint64_t, std::uint64_t>;
  std::map<Key, std::map<platform::URL, std::size_t>> files;
  for (std::size_t index = 0; index < count(); ++index) {
    if (!identities_[index].isKnown) continue;
    files[{identities_[index].device, identities_[index].number}].try_emplace(urls_[index], index);
  }
  std::vector<std::string> texts;
  for (const auto& [file, places] : files) {
    if (places.size() < 2) continue;
    std::set<std::size_t> inOrder;
    for (const auto& [url, index] : places) inOrder.insert(index);
    std::string text;
    for (const std::size_t index : inOrder) text += (text.empty() ? "" : " and ") + name(index);
    texts.push_back(text + " are the same file; it is uploaded " + std::to_string(places.size()) +
                    " times");
  }
  return texts;
}

std::uint64_t FileList::totalByteCount() const {
  return std::accumulate(byteCounts_.begin(), byteCounts_.end(), std::uint64_t{0});
}

}  // namespace quillbay::cli
