#pragma once

#include <QWidget>

namespace quillbay::core {

/// The ground on which a sheet's form stands: filled with the window's colour, so that a sheet
/// looks the same in a window, a dialog and a popover. Main thread.
class FormSheetContentView : public QWidget {
 public:
  FormSheetContentView();
};

}  // namespace quillbay::core
