#include "FileListModel.h"

#include <utility>

#include "Localized.h"
#include "ShownText.h"

namespace quillbay::desktop {

void FileListModel::setFiles(std::vector<File> files) {
  beginResetModel();
  files_ = std::move(files);
  haveArrived_.assign(files_.size(), false);
  endResetModel();
}

void FileListModel::setProgress(std::span<const std::size_t> arrivedRows,
                                std::optional<Upload> upload) {
  if (!std::exchange(isUploading_, true) && !files_.empty()) {
    emit dataChanged(index(0, state), index(rowCount() - 1, state));
  }
  for (const std::size_t row : arrivedRows.subspan(notedCount_)) {
    haveArrived_[row] = true;
    changed(row);
  }
  notedCount_ = arrivedRows.size();
  if (upload == upload_) return;
  const auto before = std::exchange(upload_, upload);
  if (before) changed(before->row);
  if (upload) changed(upload->row);
}

void FileListModel::changed(std::size_t row) {
  const QModelIndex cell = index(static_cast<int>(row), state);
  emit dataChanged(cell, cell);
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(files_.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columnCount_;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  const File& file = files_[row];
  if (role == Qt::ToolTipRole && index.column() == name) return tooltip(file.name);
  if (role == Qt::TextAlignmentRole && index.column() != name) {
    return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  if (index.column() == name) return file.name;
  return index.column() == size ? byteCountText(file.byteCount) : stateText(row);
}

QString FileListModel::stateText(std::size_t row) const {
  if (!isUploading_) return {};
  if (haveArrived_[row]) return localized("files.uploaded");
  if (!upload_ || upload_->row != row) return localized("files.waiting");
  return localized("files.uploading").arg(upload_->percent);
}

}  // namespace quillbay::desktop
