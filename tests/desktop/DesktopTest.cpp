#include "DesktopTest.h"

#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include "hosts/desktop/Localized.h"
#include "hosts/desktop/MainWindow.h"

namespace quillbay::desktop {
namespace {

constexpr int kGenerousMilliseconds = 60'000;

}  // namespace

DesktopTest::DesktopTest() { platform::setPreferredLanguages({"en"}); }

DesktopTest::~DesktopTest() { platform::setPreferredLanguages({}); }

bool DesktopTest::waitUntil(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, kGenerousMilliseconds);
}

void DesktopTest::open(const std::vector<std::string>& files) {
  window_ = std::make_unique<MainWindow>("instance-1", files);
  window_->show();
  // There is no window manager to do it.
  window_->activateWindow();
  ASSERT_TRUE(waitUntil([&] { return isFormVisible() && titleField().hasFocus(); }));
}

QPushButton* DesktopTest::button(const char* key) const {
  for (QWidget* const widget : QApplication::allWidgets()) {
    auto* const candidate = qobject_cast<QPushButton*>(widget);
    if (candidate == nullptr || !candidate->isVisible()) continue;
    if (candidate->text().remove('&') == localized(key)) return candidate;
  }
  return nullptr;
}

void DesktopTest::click(const char* key) const {
  QPushButton* const found = button(key);
  ASSERT_NE(found, nullptr) << key;
  QTest::mouseClick(found, Qt::LeftButton);
}

QLineEdit& DesktopTest::titleField() const {
  for (QLineEdit* const field : window_->findChildren<QLineEdit*>()) {
    if (field->accessibleName() == "Title") return *field;
  }
  throw std::logic_error("the sheet has no title");
}

bool DesktopTest::isFormVisible() const { return titleField().isVisible(); }

QString DesktopTest::shownLink() const {
  for (QLineEdit* const field : window_->findChildren<QLineEdit*>()) {
    if (field->isReadOnly() && field->isVisible()) return field->text();
  }
  return {};
}

QMessageBox* DesktopTest::message() {
  return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

bool DesktopTest::showsText(const char* key) const {
  for (QLabel* const label : window_->findChildren<QLabel*>()) {
    if (label->isVisible() && label->text() == localized(key)) return true;
  }
  return false;
}

}  // namespace quillbay::desktop
