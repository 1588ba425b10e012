#pragma once

#include <gmock/gmock.h>

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

/// Views as a person uses them, in English. What has just appeared can be pressed at once: the
/// system's double-click interval is 0.
class UITest : public testing::Test {
 protected:
  UITest();
  ~UITest() override;
};

}  // namespace quillbay::test
