#pragma once

#include <gmock/gmock.h>

#include <QImage>
#include <QMessageBox>
#include <QTest>
#include <functional>

inline void PrintTo(const QString& text, std::ostream* stream) { *stream << text.toStdString(); }

namespace quillbay::test {

/// Runs the event loop until all that is pending, deletions included, has happened.
void processEvents();
/// Runs the event loop until `condition` holds; false if it does not within 10 s.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition);

/// A key as the keyboard sends it: to whatever has the focus, or to the popup in front.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
/// What the keyboard sends on while the key stays down.
void repeat(Qt::Key key);
/// Alt and the letter that is underlined in `text`.
void pressMnemonic(const QString& text);
/// With the mouse, in the middle.
void click(QWidget& widget);

/// Shows `window`, and waits until it has the keyboard.
void showActive(QWidget& window);
/// The message in front of the windows; null if there is none.
QMessageBox* message();

/// What the window of `widget` shows around it, up to `margin` device-independent pixels away.
QImage pixelsOf(const QWidget& widget, int margin = 0);

/// The contrast between the ground, which is the most frequent colour, and what is farthest from
/// it.
double contrastIn(const QImage& image);

/// How many pixels change between two images by a contrast of at least `contrast`.
int changedPixels(const QImage& before, const QImage& after, double contrast);

/// Views as a person uses them, in English. What has just appeared can be pressed at once: the
/// system's double-click interval is 0.
class UITest : public testing::Test {
 protected:
  UITest();
  ~UITest() override;
};

}  // namespace quillbay::test
