#include "FileSelection.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <QLocale>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ranges>

#include "Localized.h"
#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::desktop {
namespace {

QString nameOf(const platform::URL& url) { return QString::fromStdString(url.lastPathComponent()); }

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
      problems.append(localized("problem.remote").arg(url.toDisplayString()));
    }
  }
  return problems;
}

QString FileSelection::problemWhileAdding(const std::string& path) {
  const platform::URL url = platform::URL::fileURL(path);
  const QString name = nameOf(url);
  const auto unreadable = [&name] {
    return localized("problem.unreadable").arg(name, QString::fromLocal8Bit(std::strerror(errno)));
  };

  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return unreadable();
  if (S_ISDIR(status.st_mode)) return localized("problem.folder").arg(name);
  if (!S_ISREG(status.st_mode)) return localized("problem.not-regular").arg(name);
  // Without blocking, should it have changed its kind.
  const host::FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return unreadable();
  if (!host::codePointCount(url.lastPathComponent())) return localized("problem.name").arg(name);

  if (std::ranges::find(files_, url, &File::url) == files_.end()) {
    files_.push_back({path, url, static_cast<std::uint64_t>(status.st_size)});
  }
  return {};
}

std::vector<std::string> FileSelection::paths() const { return valuesOf(files_, &File::path); }

std::vector<platform::URL> FileSelection::urls() const { return valuesOf(files_, &File::url); }

std::vector<std::uint64_t> FileSelection::byteCounts() const {
  return valuesOf(files_, &File::byteCount);
}

QString FileSelection::summary() const {
  if (isEmpty()) return {};
  std::uint64_t total = 0;
  for (const File& file : files_) total += file.byteCount;
  const QString size =
      QLocale().formattedDataSize(static_cast<qint64>(total), 1, QLocale::DataSizeSIFormat);
  const QString first = nameOf(files_.front().url);
  if (files_.size() == 1) return localized("files.one").arg(first, size);
  return localized("files.many").arg(first).arg(files_.size() - 1).arg(size);
}

QString FileSelection::names() const {
  QStringList names;
  for (const File& file : files_) names.append(nameOf(file.url));
  return names.join('\n');
}

}  // namespace quillbay::desktop
