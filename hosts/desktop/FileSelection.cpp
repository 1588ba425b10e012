#include "FileSelection.h"

#include <sys/stat.h>

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <ranges>

#include "Localized.h"
#include "ShownText.h"
#include "hosts/common/FileState.h"

namespace quillbay::desktop {
namespace {

QString problemText(const host::FileState& state, const QString& name) {
  using host::FileChange;
  const int errorNumber = state.systemErrorNumber;
  switch (state.problem) {
    case FileChange::notRegular:
      return localized(S_ISDIR(state.mode) ? "problem.folder" : "problem.not-regular").arg(name);
    case FileChange::nameNotText:
      return localized("problem.name").arg(name);
    case FileChange::sizeUnknown:
      return localized("problem.size").arg(name);
    case FileChange::vanished:
      return localized("problem.missing").arg(name);
    default:
      break;
  }
  if (errorNumber == EACCES || errorNumber == EPERM)
    return localized("problem.forbidden").arg(name);
  // By its number: the language of `strerror` need not be the program's.
  return localized("problem.unreadable").arg(name, QString::number(errorNumber));
}

}  // namespace

QStringList FileSelection::add(const std::vector<std::string>& paths) {
  QStringList problems;
  for (const std::string& path : paths) {
    if (const QString text = problemWhileAdding(path); !text.isEmpty()) problems.append(text);
  }
  return problems;
}

QStringList FileSelection::add(const QList<QUrl>& urls) {
  QStringList problems;
  for (const QUrl& url : urls) {
    if (url.isLocalFile()) {
      problems += add(std::vector{QFile::encodeName(url.toLocalFile()).toStdString()});
    } else {
      const std::string address = url.toDisplayString().toStdString();
      problems.append(localized("problem.remote").arg(shownShortName(address)));
    }
  }
  return problems;
}

QString FileSelection::problemWhileAdding(const std::string& path) {
  const platform::URL url = platform::URL::fileURL(path);
  const auto state = host::FileState::of(path);
  if (state.problem != host::FileChange::none) {
    return problemText(state, shownShortName(url.lastPathComponent()));
  }
  if (!contains(url)) {
    files_.push_back({path, url, shownName(url.lastPathComponent()), state.byteCount});
  }
  return {};
}

bool FileSelection::contains(const platform::URL& url) const {
  return std::ranges::find(files_, url, &File::url) != files_.end();
}

void FileSelection::remove(std::vector<std::size_t> rows) {
  if (rows.empty()) return;
  std::ranges::sort(rows);
  Removal removal;
  for (const std::size_t row : rows) removal.emplace_back(row, std::move(files_[row]));
  for (const std::size_t row : rows | std::views::reverse) {
    files_.erase(files_.begin() + static_cast<std::ptrdiff_t>(row));
  }
  removals_.push_back(std::move(removal));
}

void FileSelection::undoRemoval() {
  if (removals_.empty()) return;
  for (auto& [row, file] : removals_.back()) {
    // It may have been added again since, or others have gone.
    if (contains(file.url)) continue;
    const auto place = static_cast<std::ptrdiff_t>(std::min(row, files_.size()));
    files_.insert(files_.begin() + place, std::move(file));
  }
  removals_.pop_back();
}

std::vector<std::string> FileSelection::paths() const {
  const auto paths = files_ | std::views::transform(&File::path);
  return {paths.begin(), paths.end()};
}

std::uint64_t FileSelection::totalByteCount() const {
  std::uint64_t total = 0;
  for (const File& file : files_) total += file.byteCount;
  return total;
}

QString FileSelection::extent() const { return extentText(count(), totalByteCount()); }

}  // namespace quillbay::desktop
