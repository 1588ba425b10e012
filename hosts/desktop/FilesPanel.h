#pragma once

#include <QWidget>
#include <functional>

#include "FileListModel.h"

class QLabel;
class QPushButton;

namespace quillbay::desktop {

class FileSelection;
class RowsView;

/// The files on the page of the sheet: how many, a list, and buttons to add, to remove and to put
/// back, and one that leads to earlier shares. The Delete key removes the selected ones. Main
/// thread only.
class FilesPanel : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void()> add;
    std::function<void()> undoRemoval;
    /// Files have been taken out of the selection.
    std::function<void()> removed;
    std::function<void()> showShares;
  };

  /// `files` outlives the panel.
  FilesPanel(FileSelection& files, Actions actions);

  /// Call it after each change of the files.
  void filesChanged();

 private:
  void removeSelected();
  void updateButtons();

  FileSelection& files_;
  const Actions actions_;
  FileListModel model_;
  // Children of this widget, made in the constructor.
  QLabel& extent_;
  RowsView& list_;
  QPushButton& removeButton_;
  QPushButton& undoButton_;
};

}  // namespace quillbay::desktop
