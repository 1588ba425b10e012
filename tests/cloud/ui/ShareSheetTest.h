#pragma once

#include <QuillbayCloud/ui/LocalizedText.h>
#include <QuillbayCloud/ui/SecureFirstRespondableTextField.h>
#include <QuillbayCloud/ui/SessionConfigurationView.h>
#include <QuillbayCloud/ui/ShareViewController.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <vector>

inline void PrintTo(const QString& text, std::ostream* stream) { *stream << text.toStdString(); }

namespace quillbay::cloud {

/// Runs the event loop until all that is pending, deletions included, has happened.
void processEvents();

/// A key as the keyboard sends it: to whatever has the focus, or to the popup in front.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
/// What the keyboard sends on while the key stays down.
void repeat(Qt::Key key);
/// Alt and the letter that is underlined in `text`.
void pressMnemonic(const QString& text);
/// With the mouse, in the middle.
void click(QWidget& widget);

SessionConfiguration linkWith(SessionLinkType linkType,
                              std::optional<std::string> password = std::nullopt);

/// The sheet in a dialog of the host: the window that most wants Return and Escape for itself.
class ShareSheetTest : public testing::Test {
 protected:
  ShareSheetTest();
  ~ShareSheetTest() override;

  /// Begins anew, in place of the sheet before.
  void create(const SessionConfiguration& configuration = SessionConfiguration::default_());
  /// Until all that follows has been done.
  void show() const;

  SessionConfigurationView& form() const { return controller_->configurationView(); }
  QWidget& cell(int row, int column) const {
    return *form().gridView().itemAtPosition(row, column)->widget();
  }
  /// With the keyboard.
  void choose(SessionLinkType linkType) const;
  static QMessageBox* alert();

  std::unique_ptr<QWidget> window_;
  std::shared_ptr<ShareViewController> controller_;
  std::vector<SessionConfiguration> confirmed_;
  int cancelCount_ = 0;
};

}  // namespace quillbay::cloud
