#pragma once

#include <QTreeView>

namespace quillbay::desktop {

class FileListModel;

/// Shows the files, a row each; thousands are as quick as one. Long names are shortened in the
/// middle. Main thread only.
class FileListView : public QTreeView {
 public:
  /// `model` outlives the view. Higher than `mostRows` rows it never wants to be.
  FileListView(FileListModel& model, int mostRows);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 private:
  QSize sizeOf(int rows) const;

  const int mostRows_;
};

}  // namespace quillbay::desktop
