#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillbay::desktop {

/// Files as rows: name, size and, while they are uploaded, the state. Main thread only.
class FileListModel : public QAbstractTableModel {
 public:
  enum Column { name, size, state, columnCount_ };

  struct File {
    /// As it is to be shown.
    QString name;
    std::uint64_t byteCount = 0;
  };

  /// A file that is on its way.
  struct Upload {
    std::size_t row = 0;
    int percent = 0;

    friend bool operator==(const Upload&, const Upload&) = default;
  };

  void setFiles(std::vector<File> files);
  /// `arrivedRows` only ever grows at its end. Changes no more rows than have changed.
  void setProgress(std::span<const std::size_t> arrivedRows, std::optional<Upload> upload);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  QString stateText(std::size_t row) const;
  void changed(std::size_t row);

  std::vector<File> files_;
  bool isUploading_ = false;
  std::vector<bool> haveArrived_;
  /// How many of the rows that have arrived are noted.
  std::size_t notedCount_ = 0;
  std::optional<Upload> upload_;
};

}  // namespace quillbay::desktop
