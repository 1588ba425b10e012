#include "ShareSheetTest.h"

namespace quillbay::cloud {

SessionConfiguration linkWith(SessionLinkType linkType, std::optional<std::string> password) {
  return {std::nullopt, std::nullopt, linkType, std::move(password), false};
}

ShareSheetTest::ShareSheetTest() : window_(std::make_unique<QDialog>()) { create(); }

ShareSheetTest::~ShareSheetTest() {
  controller_.reset();
  window_.reset();
}

void ShareSheetTest::create(const SessionConfiguration& configuration) {
  confirmed_.clear();
  cancelCount_ = 0;
  controller_ = ShareViewController::create({configuration, QImage()});
  controller_->setOnConfirm([this](auto confirmed) { confirmed_.push_back(std::move(confirmed)); });
  controller_->setOnCancel([this] { ++cancelCount_; });
}

void ShareSheetTest::show() const {
  if (window_->layout() == nullptr) (new QVBoxLayout(window_.get()))->setContentsMargins({});
  window_->layout()->addWidget(&controller_->view());
  test::showActive(*window_);
}

void ShareSheetTest::choose(SessionLinkType linkType) const {
  form().linkTypeButton().setFocus();
  press(Qt::Key_Home);
  for (int index = 0; index < linkType; ++index) press(Qt::Key_Down);
}

QList<QWidget*> ShareSheetTest::formControls() const {
  return {&form().titleTextField(), &form().passwordTextField(), &form().linkExpirationButton(),
          &form().linkTypeButton(), &form().generatesLongLinkButton()};
}

QList<QWidget*> ShareSheetTest::buttons() const {
  return {&controller_->helpButton(), &controller_->cancelButton(), &controller_->shareButton()};
}

}  // namespace quillbay::cloud
