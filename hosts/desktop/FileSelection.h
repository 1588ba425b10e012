#pragma once

#include <QuillbayPlatform/URL.h>

#include <QString>
#include <QStringList>
#include <QUrl>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quillbay::desktop {

/// The files to share, in the order in which they came, each once. Main thread only.
class FileSelection {
 public:
  /// Adds the files at `paths`. Returns a sentence for each that cannot be shared and why; those
  /// are left out.
  QStringList add(const std::vector<std::string>& paths);
  /// The same for what was dropped or chosen.
  QStringList add(const QList<QUrl>& urls);

  /// Takes the files at `rows` out.
  void remove(std::vector<std::size_t> rows);
  /// Puts back what the last removal took out.
  void undoRemoval();
  bool canUndoRemoval() const { return !removals_.empty(); }

  bool isEmpty() const { return files_.empty(); }
  std::size_t count() const { return files_.size(); }
  /// The name at `row` as it is to be shown.
  QString name(std::size_t row) const { return files_[row].name; }
  std::uint64_t byteCount(std::size_t row) const { return files_[row].byteCount; }
  std::vector<std::string> paths() const;

  /// How many and how large in all: "3 files, 1.2 MB".
  QString extent() const;

 private:
  struct File {
    std::string path;
    platform::URL url;
    QString name;
    std::uint64_t byteCount;
  };
  /// Files with the rows that they had, ascending.
  using Removal = std::vector<std::pair<std::size_t, File>>;

  /// Empty if the file was added or is there already.
  QString problemWhileAdding(const std::string& path);
  bool contains(const platform::URL& url) const;
  std::uint64_t totalByteCount() const;

  std::vector<File> files_;
  std::vector<Removal> removals_;
};

}  // namespace quillbay::desktop
