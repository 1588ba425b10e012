#pragma once

#include <QuillbayPlatform/ui/ActivationGuard.h>

#include <QObject>

class QKeyEvent;
class QWidget;

namespace quillbay::desktop {

/// Keeps the second half of a double click, and a key that is held down, from pressing what has
/// just appeared under it: for one interval of `platform::ActivationGuard` after each `restart` the
/// window and its dialogs take no click, no Return, no Space on a button and no mnemonic. Text can
/// be typed all the time. Main thread only.
class WindowGuard : public QObject {
 public:
  /// `window` outlives the guard.
  explicit WindowGuard(QWidget& window);

  /// A page or a dialog appears, or buttons of a page change.
  void restart() { interval_.restart(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool isWithinWindow(const QWidget* widget) const;
  bool swallowsKey(const QWidget& widget, const QKeyEvent& key) const;

  QWidget& window_;
  platform::ActivationGuard interval_;
};

}  // namespace quillbay::desktop
