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

inline SessionConfiguration linkWith(SessionLinkType linkType,
                                     std::optional<std::string> password = std::nullopt) {
  return {std::nullopt, std::nullopt, linkType, std::move(password), false};
}

/// The sheet in a dialog of the host: the window that most wants Return and Escape for itself.
class ShareSheetTest : public test::UITest {
 protected:
  ShareSheetTest() { create(); }

  /// Begins anew, in place of the sheet before.
  void create(const SessionConfiguration& configuration = SessionConfiguration::default_()) {
    confirmed_.clear();
    cancelCount_ = 0;
    controller_ = ShareViewController::create({configuration, QImage()});
    controller_->setOnConfirm(
        [this](auto confirmed) { confirmed_.push_back(std::move(confirmed)); });
    controller_->setOnCancel([this] { ++cancelCount_; });
  }
  /// Until all that follows has been done.
  void show() const {
    if (window_->layout() == nullptr) (new QVBoxLayout(window_.get()))->setContentsMargins({});
    window_->layout()->addWidget(&controller_->view());
    test::showActive(*window_);
  }

  SessionConfigurationView& form() const { return controller_->configurationView(); }
  QWidget& cell(int row, int column) const {
    return *form().gridView().itemAtPosition(row, column)->widget();
  }
  /// The controls of the form in the order of the keyboard.
  QList<QWidget*> formControls() const {
    return {&form().titleTextField(), &form().passwordTextField(), &form().linkExpirationButton(),
            &form().linkTypeButton(), &form().generatesLongLinkButton()};
  }
  /// The buttons below the form.
  QList<QWidget*> buttons() const {
    return {&controller_->helpButton(), &controller_->cancelButton(), &controller_->shareButton()};
  }

  std::unique_ptr<QWidget> window_ = std::make_unique<QDialog>();
  std::shared_ptr<ShareViewController> controller_;
  std::vector<SessionConfiguration> confirmed_;
  int cancelCount_ = 0;
};

}  // namespace quillbay::cloud
