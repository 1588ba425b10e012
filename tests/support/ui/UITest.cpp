#include "UITest.h"

#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QHash>
#include <QStyleHints>
#include <algorithm>
#include <cmath>

namespace quillbay::test {
namespace {

double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return (0.2126 * linear(color.redF())) + (0.7152 * linear(color.greenF())) +
         (0.0722 * linear(color.blueF()));
}

/// From 1 to 21 (WCAG 2.1).
double contrastOf(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace

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

QImage pixelsOf(const QWidget& widget, int margin) {
  QWidget& window = *widget.window();
  const QRect area(widget.mapTo(&window, QPoint()), widget.size());
  return window.grab(area.adjusted(-margin, -margin, margin, margin)).toImage();
}

double contrastIn(const QImage& image) {
  QHash<QRgb, int> counts;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
  }
  const QColor ground = std::max_element(counts.cbegin(), counts.cend()).key();
  double farthest = 1;
  for (const QRgb color : counts.keys()) farthest = std::max(farthest, contrastOf(color, ground));
  return farthest;
}

int changedPixels(const QImage& before, const QImage& after, double contrast) {
  int count = 0;
  for (int y = 0; y < before.height(); ++y) {
    for (int x = 0; x < before.width(); ++x) {
      if (contrastOf(before.pixelColor(x, y), after.pixelColor(x, y)) >= contrast) ++count;
    }
  }
  return count;
}

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
