#pragma once

#include <QWidget>
#include <functional>

class QPushButton;

namespace quillbay::desktop {

/// What the window shows while there is nothing to share: an invitation to drop files, a
/// button to choose some, and one that leads to earlier shares. Main thread only.
class DropPage : public QWidget {
 public:
  struct Actions {
    std::function<void()> choose;
    std::function<void()> undoRemoval;
    std::function<void()> showShares;
  };

  explicit DropPage(const Actions& actions);

  /// Whether files were removed that can be put back.
  void setCanUndo(bool canUndo);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QPushButton& undoButton_;
};

}  // namespace quillbay::desktop
