#pragma once

#include <QuillbayCloud/ui/HeaderTextField.h>
#include <QuillbayCloud/ui/ImageView.h>
#include <QuillbayCloud/ui/LocalizedText.h>
#include <QuillbayCloud/ui/SecureFirstRespondableTextField.h>
#include <QuillbayCloud/ui/SessionConfigurationView.h>
#include <QuillbayCloud/ui/ShareViewController.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "UITest.h"

namespace quillbay::cloud {

using test::click;
using test::message;
using test::press;
using test::processEvents;

SessionConfiguration linkWith(SessionLinkType linkType,
                              std::optional<std::string> password = std::nullopt);

/// The sheet in a dialog of the host: the window that most wants Return and Escape for itself.
class ShareSheetTest : public test::UITest {
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
  /// The controls of the form in the order of the keyboard.
  QList<QWidget*> formControls() const;
  /// The buttons below the form.
  QList<QWidget*> buttons() const;

  std::unique_ptr<QWidget> window_;
  std::shared_ptr<ShareViewController> controller_;
  std::vector<SessionConfiguration> confirmed_;
  int cancelCount_ = 0;
};

}  // namespace quillbay::cloud
