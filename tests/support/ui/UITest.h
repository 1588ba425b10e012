#pragma once

#include <QuillbayPlatform/StringTable.h>
#include <gmock/gmock.h>

#include <QApplication>
#include <QHash>
#include <QImage>
#include <QMessageBox>
#include <QStyleHints>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <functional>

inline void PrintTo(const QString& text, std::ostream* stream) { *stream << text.toStdString(); }

namespace quillbay::test {

/// Runs the event loop until all that is pending, deletions included, has happened.
inline void processEvents() {
  QApplication::processEvents();
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QApplication::processEvents();
}
/// Runs the event loop until `condition` holds; false if it does not within 10 s.
[[nodiscard]] inline bool waitUntil(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, 10'000);
}

/// A key as the keyboard sends it: to whatever has the focus, or to the popup in front.
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
  QTest::keyClick(static_cast<QWidget*>(nullptr), key, modifiers);
  processEvents();
}
/// What the keyboard sends on while the key stays down.
inline void repeat(Qt::Key key) {
  QTest::simulateEvent(QApplication::focusWidget(), true, key, Qt::NoModifier, {}, true);
  processEvents();
}
/// Alt and the letter that is underlined in `text`.
inline void pressMnemonic(const QString& text) {
  const QKeyCombination keys = QKeySequence::mnemonic(text)[0];
  press(keys.key(), keys.keyboardModifiers());
}
/// With the mouse, in the middle.
inline void click(QWidget& widget) {
  QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {},
                    widget.mapTo(widget.window(), widget.rect().center()));
  processEvents();
}

/// Shows `window`, and waits until it has the keyboard.
inline void showActive(QWidget& window) {
  window.show();
  // There is no window manager to do it.
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  processEvents();
}
/// The message in front of the windows; null if there is none.
inline QMessageBox* message() {
  return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// What the window of `widget` shows around it, up to `margin` device-independent pixels away.
inline QImage pixelsOf(const QWidget& widget, int margin = 0) {
  QWidget& window = *widget.window();
  const QRect area(widget.mapTo(&window, QPoint()), widget.size());
  return window.grab(area.adjusted(-margin, -margin, margin, margin)).toImage();
}

inline double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return (0.2126 * linear(color.redF())) + (0.7152 * linear(color.greenF())) +
         (0.0722 * linear(color.blueF()));
}

/// From 1 to 21 (WCAG 2.1).
inline double contrastOf(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

/// The contrast between the ground, which is the most frequent colour, and what is farthest from
/// it.
inline double contrastIn(const QImage& image) {
  QHash<QRgb, int> counts;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
  }
  const QColor ground = std::max_element(counts.cbegin(), counts.cend()).key();
  double farthest = 1;
  for (const QRgb color : counts.keys()) farthest = std::max(farthest, contrastOf(color, ground));
  return farthest;
}

/// How many pixels change between two images by a contrast of at least `contrast`.
inline int changedPixels(const QImage& before, const QImage& after, double contrast) {
  int count = 0;
  for (int y = 0; y < before.height(); ++y) {
    for (int x = 0; x < before.width(); ++x) {
      if (contrastOf(before.pixelColor(x, y), after.pixelColor(x, y)) >= contrast) ++count;
    }
  }
  return count;
}

/// Views as a person uses them, in English. What has just appeared can be pressed at once: the
/// system's double-click interval is 0.
class UITest : public testing::Test {
 protected:
  UITest() {
    platform::setPreferredLanguages({"en"});
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(0);
  }
  ~UITest() override {
    processEvents();
    platform::setPreferredLanguages({});
    // Back to the system's own.
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
  }
};

}  // namespace quillbay::test
