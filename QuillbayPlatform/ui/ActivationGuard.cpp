#include <QuillbayPlatform/ui/ActivationGuard.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QStyleHints>
#include <algorithm>

namespace quillbay::platform {
namespace {

constexpr int kShortestMilliseconds = 500;

int closedMilliseconds() {
  const int doubleClick = QGuiApplication::styleHints()->mouseDoubleClickInterval();
  return doubleClick == 0 ? 0 : std::max(doubleClick, kShortestMilliseconds);
}

bool isPressing(const QKeyEvent& event) {
  const int key = event.key();
  return key == Qt::Key_Space || key == Qt::Key_Select || key == Qt::Key_Return ||
         key == Qt::Key_Enter;
}

}  // namespace

bool ActivationGuard::isOpen() const {
  return !sinceRestart_.isValid() || sinceRestart_.elapsed() >= closedMilliseconds();
}

bool ActivationGuard::eventFilter(QObject* /*watched*/, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress: {
      const auto& key = *static_cast<QKeyEvent*>(event);
      return isPressing(key) && (key.isAutoRepeat() || !isOpen());
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Shortcut:
      return !isOpen();
    default:
      return false;
  }
}

}  // namespace quillbay::platform
