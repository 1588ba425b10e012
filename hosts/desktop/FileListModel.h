#pragma once

#include <QAbstractTableModel>
#include <cstddef>

namespace quillbay::desktop {

class FileSelection;

/// The files of a selection as rows: name, size and, while they are uploaded, the state. Main
/// thread only.
class FileListModel : public QAbstractTableModel {
 public:
  enum Column { name, size, state, columnCount_ };

  /// `files` outlives the model.
  explicit FileListModel(const FileSelection& files) : files_(files) {}

  /// Call it after each change of the files.
  void filesChanged();
  /// `doneCount` files have arrived, the last one of the list first, and the next is on its way.
  void setUploaded(std::size_t doneCount);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  QString stateText(std::size_t row) const;

  const FileSelection& files_;
  bool isUploading_ = false;
  std::size_t doneCount_ = 0;
};

}  // namespace quillbay::desktop
