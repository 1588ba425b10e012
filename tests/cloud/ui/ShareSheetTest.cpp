#include "ShareSheetTest.h"

#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QVBoxLayout>

namespace quillbay::cloud {

void processEvents() {
  QApplication::processEvents();
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QApplication::processEvents();
}

void press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(static_cast<QWidget*>(nullptr), key, modifiers);
  processEvents();
}

void repeat(Qt::Key key) {
  QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, {}, true);
  QApplication::sendEvent(QApplication::focusWidget(), &event);
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

SessionConfiguration linkWith(SessionLinkType linkType, std::optional<std::string> password) {
  return {std::nullopt, std::nullopt, linkType, std::move(password), false};
}

ShareSheetTest::ShareSheetTest() : window_(std::make_unique<QDialog>()) {
  platform::setPreferredLanguages({"en"});
}

ShareSheetTest::~ShareSheetTest() {
  controller_.reset();
  window_.reset();
  processEvents();
  platform::setPreferredLanguages({});
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
  window_->show();
  // There is no window manager to do it.
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  processEvents();
}

void ShareSheetTest::choose(SessionLinkType linkType) const {
  form().linkTypeButton().setFocus();
  press(Qt::Key_Home);
  for (int index = 0; index < linkType; ++index) press(Qt::Key_Down);
}

QMessageBox* ShareSheetTest::alert() {
  return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

}  // namespace quillbay::cloud
