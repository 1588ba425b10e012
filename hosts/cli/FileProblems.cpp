#include "FileProblems.h"

#include <sys/stat.h>

#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

std::string kindText(unsigned mode) {
  if (S_ISDIR(mode)) return "is a folder; --zip packs folders";
  if (S_ISFIFO(mode)) return "is a pipe; only regular files can be shared";
  if (S_ISSOCK(mode)) return "is a socket; only regular files can be shared";
  return "is a device; only regular files can be shared";
}

std::string nameOf(const host::SharedFiles& files, std::size_t index) {
  return files.displayName(index, host::FailureAudience::terminal);
}

std::string problemOf(const host::SharedFiles& files, std::size_t index) {
  const host::FileState& state = files.state(index);
  const std::string name = nameOf(files, index);
  switch (state.problem) {
    case host::FileChange::vanished:
    case host::FileChange::unreadable:
      return name + ": " + std::strerror(state.systemErrorNumber);
    case host::FileChange::notRegular:
      return name + " " + kindText(state.mode);
    case host::FileChange::nameNotText:
      return name + ": the name is not UTF-8 text; rename the file";
    case host::FileChange::sizeUnknown:
      return name + " has content, but the system states no size for it; share a copy";
    default:
      return {};
  }
}

std::vector<std::string> repetitions(const host::SharedFiles& files) {
  std::map<platform::URL, std::vector<std::size_t>> places;
  for (std::size_t index = 0; index < files.count(); ++index) {
    places[files.urls()[index]].push_back(index);
  }
  std::vector<std::string> texts;
  for (const auto& [url, indices] : places) {
    if (indices.size() < 2) continue;
    texts.push_back(nameOf(files, indices.front()) + " is in the list " +
                    std::to_string(indices.size()) + " times; name each file once");
  }
  return texts;
}

}  // namespace

std::vector<std::string> fileProblems(const host::SharedFiles& files) {
  std::vector<std::string> texts = repetitions(files);
  for (std::size_t index = 0; index < files.count(); ++index) {
    if (std::string text = problemOf(files, index); !text.empty()) texts.push_back(std::move(text));
  }
  return texts;
}

std::vector<std::string> fileAliases(const host::SharedFiles& files) {
  using Key = std::pair<std::uint64_t, std::uint64_t>;
  std::map<Key, std::map<platform::URL, std::size_t>> placesOfFiles;
  for (std::size_t index = 0; index < files.count(); ++index) {
    const host::FileState& state = files.state(index);
    if (!S_ISREG(state.mode)) continue;
    placesOfFiles[{state.device, state.number}].try_emplace(files.urls()[index], index);
  }
  std::vector<std::string> texts;
  for (const auto& [file, places] : placesOfFiles) {
    if (places.size() < 2) continue;
    std::set<std::size_t> inOrder;
    for (const auto& [url, index] : places) inOrder.insert(index);
    std::string text;
    for (const std::size_t index : inOrder) {
      text += (text.empty() ? "" : " and ") + nameOf(files, index);
    }
    texts.push_back(text + " are the same file; it is uploaded " + std::to_string(places.size()) +
                    " times");
  }
  return texts;
}

}  // namespace quillbay::cli
