#include "FileListModel.h"

#include "FileSelection.h"
#include "Localized.h"
#include "ShownText.h"

namespace quillbay::desktop {

void FileListModel::filesChanged() {
  beginResetModel();
  endResetModel();
}

void FileListModel::setUploaded(std::size_t doneCount) {
  if (isUploading_ && doneCount == doneCount_) return;
  isUploading_ = true;
  doneCount_ = doneCount;
  if (rowCount() > 0) emit dataChanged(index(0, state), index(rowCount() - 1, state));
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(files_.count());
}

int FileListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columnCount_;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (role == Qt::ToolTipRole && index.column() == name) return tooltip(files_.name(row));
  if (role == Qt::TextAlignmentRole && index.column() != name) {
    return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  if (index.column() == name) return files_.name(row);
  return index.column() == size ? byteCountText(files_.byteCount(row)) : stateText(row);
}

QString FileListModel::stateText(std::size_t row) const {
  if (!isUploading_) return {};
  const std::size_t place = files_.count() - 1 - row;
  if (place < doneCount_) return localized("files.uploaded");
  return place == doneCount_ ? localized("files.uploading") : localized("files.waiting");
}

}  // namespace quillbay::desktop
