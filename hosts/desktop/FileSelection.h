#pragma once

#include <QuillbayPlatform/URL.h>

#include <QString>
#include <QStringList>
#include <QUrl>
#include <cstdint>
#include <string>
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

  bool isEmpty() const { return files_.empty(); }
  std::vector<std::string> paths() const;
  std::vector<platform::URL> urls() const;
  std::vector<std::uint64_t> byteCounts() const;

  /// One line for people: the first name, how many more, how large in all.
  QString summary() const;
  /// All names, one a line.
  QString names() const;

 private:
  struct File {
    std::string path;
    platform::URL url;
    std::uint64_t byteCount;
  };

  /// Empty if the file was added or is there already.
  QString problemWhileAdding(const std::string& path);

  std::vector<File> files_;
};

}  // namespace quillbay::desktop
