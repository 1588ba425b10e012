#include "WindowGuard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>

namespace quillbay::desktop {

WindowGuard::WindowGuard(QWidget& window) : window_(window) { qApp->installEventFilter(this); }

bool WindowGuard::eventFilter(QObject* watched, QEvent* event) {
  const auto* const widget = qobject_cast<QWidget*>(watched);
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Shortcut:
      return !interval_.isOpen() && isWithinWindow(widget);
    case QEvent::KeyPress:
      return isWithinWindow(widget) && swallowsKey(*widget, *static_cast<QKeyEvent*>(event));
    default:
      return false;
  }
}

bool WindowGuard::isWithinWindow(const QWidget* widget) const {
  // Across the borders of windows: dialogs are children too.
  while (widget != nullptr && widget != &window_) widget = widget->parentWidget();
  return widget != nullptr;
}

bool WindowGuard::swallowsKey(const QWidget& widget, const QKeyEvent& key) const {
  const bool isButton = qobject_cast<const QAbstractButton*>(&widget) != nullptr;
  switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return !interval_.isOpen() || key.isAutoRepeat();
    case Qt::Key_Space:
      return isButton && (!interval_.isOpen() || key.isAutoRepeat());
    case Qt::Key_Escape:
      // In a dialog it is the safe answer.
      return !interval_.isOpen() && qobject_cast<QDialog*>(widget.window()) == nullptr;
    default:
      return false;
  }
}

}  // namespace quillbay::desktop
