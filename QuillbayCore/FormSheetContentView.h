#pragma once

#include <QuillbayPlatform/Export.h>

#include <QList>
#include <QWidget>

namespace quillbay::core {

/// The ground of a sheet's form: filled with the window's colour, so that a sheet
/// looks the same in a window, a dialog and a popover. Main thread.
class QUILLBAY_EXPORT FormSheetContentView : public QWidget {
 public:
  /// An empty ground without a parent.
  FormSheetContentView();

  /// Draws a ring around `control` while it has the focus, since some styles do not show the focus
  /// of every control. `control` is inside this view and lives as long.
  void addFocusRing(QWidget& control);

 protected:
  /// Draws the rings anew where the focus comes or goes.
  bool eventFilter(QObject* watched, QEvent* event) override;
  /// Fills the ground, then draws the ring.
  void paintEvent(QPaintEvent* event) override;

 private:
  QList<QWidget*> ringedControls_;
};

}  // namespace quillbay::core
