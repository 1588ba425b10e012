#include "FileList.h"

#include <sys/stat.h>

#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

std::string kindText(unsigned mode) {
  if (S_ISDIR(mode)) return "is a folder; pack it into an archive and share that";
  if (S_ISFIFO(mode)) return "is a pipe; only regular files can be shared";
  if (S_ISSOCK(mode)) return "is a socket; only regular files can be shared";
  return "is a device; only regular files can be shared";
}

}  // namespace

FileList::FileList(std::vector<std::string> paths) : paths_(std::move(paths)), watch_(paths_) {
  urls_.reserve(paths_.size());
  for (const std::string& path : paths_) urls_.push_back(platform::URL::fileURL(path));
}

std::string FileList::name(std::size_t index) const { return host::inQuotes(paths_[index]); }

std::vector<std::string> FileList::problems() const {
  std::vector<std::string> texts = repetitions();
  for (std::size_t index = 0; index < count(); ++index) {
    if (std::string text = problem(index); !text.empty()) texts.push_back(std::move(text));
  }
  return texts;
}

std::string FileList::problem(std::size_t index) const {
  const host::FileState& state = watch_.before(index);
  switch (state.problem) {
    case host::FileChange::vanished:
    case host::FileChange::unreadable:
      return name(index) + ": " + std::strerror(state.systemErrorNumber);
    case host::FileChange::notRegular:
      return name(index) + " " + kindText(state.mode);
    case host::FileChange::nameNotText:
      return name(index) + ": the name is not UTF-8 text; rename the file";
    case host::FileChange::sizeUnknown:
      return name(index) + " has content, but the system states no size for it; share a copy";
    default:
      return {};
  }
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
    const host::FileState& state = watch_.before(index);
    if (!S_ISREG(state.mode)) continue;
    files[{state.device, state.number}].try_emplace(urls_[index], index);
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

std::vector<std::uint64_t> FileList::byteCounts() const {
  std::vector<std::uint64_t> byteCounts;
  for (std::size_t index = 0; index < count(); ++index) {
    byteCounts.push_back(watch_.before(index).byteCount);
  }
  return byteCounts;
}

std::uint64_t FileList::totalByteCount() const {
  std::uint64_t byteCount = 0;
  for (std::size_t index = 0; index < count(); ++index) byteCount += watch_.before(index).byteCount;
  return byteCount;
}

}  // namespace quillbay::cli
