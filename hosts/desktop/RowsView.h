#pragma once

#include <QTreeView>

namespace quillbay::desktop {

/// A list of rows with columns and no tree; thousands are as quick as one. What is too long is
/// shortened in the middle. Main thread only.
class RowsView : public QTreeView {
 public:
  /// `model` outlives the view. `stretchedColumn` takes the room that the others leave, and there
  /// is always some. Higher than `mostRows` rows it never wants to be.
  RowsView(QAbstractItemModel& model, int stretchedColumn, int mostRows);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 private:
  QSize sizeOf(int rows) const;
  int narrowestWidth() const;

  const int mostRows_;
};

}  // namespace quillbay::desktop
