#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

class QLineEdit;
class QMessageBox;
class QPushButton;

namespace quillbay::desktop {

class MainWindow;

/// The window on a screen, used as a person would.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  /// Runs the event loop until `condition` holds; false if it does not within a generous time.
  [[nodiscard]] static bool waitUntil(const std::function<bool()>& condition);

  /// Shows the window with these files, and waits until the sheet can be typed in.
  void open(const std::vector<std::string>& files);
  /// The visible button with the text of this key; null if there is none.
  QPushButton* button(const char* key) const;
  void click(const char* key) const;
  /// The field of the sheet for the title.
  QLineEdit& titleField() const;
  bool isFormVisible() const;
  /// What stands in the field of the link; empty while there is none.
  QString shownLink() const;
  /// The message in front of the window; null if there is none.
  static QMessageBox* message();
  bool showsText(const char* key) const;

  const test::TemporaryFolder folder_;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace quillbay::desktop
