#include "FileSelection.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <ranges>

#include "Localized.h"
#include "ShownText.h"
#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::desktop {
namespace {

/// In the program's language, which need not be that of `strerror`.
QString unreadableText(const QString& name, int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
      return localized("problem.missing").arg(name);
    case EACCES:
    case EPERM:
      return localized("problem.forbidden").arg(name);
    default:
      return localized("problem.unreadable").arg(name, QString::number(errorNumber));
  }
}

template <class File, class Value>
std::vector<Value> valuesOf(const std::vector<File>& files, Value File::* member) {
  const auto values = files | std::views::transform(member);
  return {values.begin(), values.end()};
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
  const QString name = shownShortName(url.lastPathComponent());
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return unreadableText(name, errno);
  if (S_ISDIR(status.st_mode)) return localized("problem.folder").arg(name);
  if (!S_ISREG(status.st_mode)) return localized("problem.not-regular").arg(name);
  // Without blocking, should it have changed its kind.
  const host::FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return unreadableText(name, errno);
  if (!host::codePointCount(url.lastPathComponent())) return localized("problem.name").arg(name);

  if (!contains(url)) {
    files_.push_back({path, url, shownName(url.lastPathComponent()),
                      static_cast<std::uint64_t>(status.st_size)});
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

std::vector<std::string> FileSelection::paths() const { return valuesOf(files_, &File::path); }

std::vector<platform::URL> FileSelection::urls() const { return valuesOf(files_, &File::url); }

std::uint64_t FileSelection::totalByteCount() const {
  std::uint64_t total = 0;
  for (const File& file : files_) total += file.byteCount;
  return total;
}

QString FileSelection::extent() const {
  const QString size = byteCountText(totalByteCount());
  if (files_.size() == 1) return localized("files.extent.one").arg(size);
  return localized("files.extent.many").arg(files_.size()).arg(size);
}

QString FileSelection::summary() const {
  if (isEmpty()) return {};
  const QString size = byteCountText(totalByteCount());
  const QString first = files_.front().name;
  if (files_.size() == 1) return localized("files.one").arg(first, size);
  return localized("files.many").arg(first, QString::number(files_.size() - 1), size);
}

}  // namespace quillbay::desktop
