#include "UITest.h"

#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QStyleHints>

namespace quillbay::test {

void processEvents() {
  QApplication::processEvents();
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QApplication::processEvents();
}

bool waitUntil(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, 10'000);
}

void press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(static_cast<QWidget*>(nullptr), key, modifiers);
  processEvents();
}

void repeat(Qt::Key key) {
  QTest::simulateEvent(QApplication::focusWidget(), true, key, Qt::NoModifier, {}, true);
  processEvents();
}

void pressMnemonic(const QString& text) {
  const QKeyCombination keys = QKeySequence::mnemonic(text)[0];
  press(keys.key(), keys.keyboardModifiers());
}

void click(QWidget& widget) {
  QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {},
                    widget.mapTo(widget.window(), widget.rect().center()));
  processEvents();
}

void showActive(QWidget& window) {
  window.show();
  // There is no window manager to do it.
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  processEvents();
}

QMessageBox* message() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

UITest::UITest() {
  platform::setPreferredLanguages({"en"});
  QGuiApplication::styleHints()->setMouseDoubleClickInterval(0);
}

UITest::~UITest() {
  processEvents();
  platform::setPreferredLanguages({});
  // Back to the system's own.
  QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
}

}  // namespace quillbay::test
