#include "DesktopTest.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QLabel>

namespace quillbay::desktop {

std::ptrdiff_t DesktopTest::count(const std::string& call) const {
  const auto calls = service_.calls();
  return std::ranges::count(calls, call);
}

void DesktopTest::open(const std::vector<std::string>& files) {
  window_ = std::make_unique<MainWindow>(Arguments{"instance-1", {}, files}, *history_);
  test::showActive(*window_);
  if (files.empty()) return;
  ASSERT_TRUE(waitUntil([&] { return isFormVisible() && titleField().hasFocus(); }));
}

void DesktopTest::share(const char* key) {
  QTest::keyClicks(&titleField(), "Holiday");
  press(Qt::Key_Return);
  waitUntilShown(key);
}

void DesktopTest::waitUntilShown(const char* key) const {
  ASSERT_TRUE(waitUntil([&] { return showsText(key); })) << key;
}

QPushButton* DesktopTest::buttonWithText(const QString& text, const QWidget* window) {
  for (QWidget* const widget : QApplication::allWidgets()) {
    auto* const candidate = qobject_cast<QPushButton*>(widget);
    if (candidate == nullptr || !candidate->isVisible()) continue;
    if (window != nullptr && candidate->window() != window) continue;
    if (candidate->text().remove('&') == QString(text).remove('&')) return candidate;
  }
  return nullptr;
}

void DesktopTest::click(const char* key, const QWidget* window) {
  QPushButton* const found = button(key, window);
  ASSERT_NE(found, nullptr) << key;
  test::click(*found);
}

QLineEdit* DesktopTest::field(bool isReadOnly) const {
  for (QLineEdit* const field : window_->findChildren<QLineEdit*>()) {
    if (field->isReadOnly() == isReadOnly) return field;
  }
  return nullptr;
}

bool DesktopTest::showsText(const QString& text) const {
  return std::ranges::any_of(window_->findChildren<QLabel*>(), [&](const QLabel* label) {
    return label->isVisible() && label->text().contains(text);
  });
}

QString DesktopTest::cell(int row, int column) const {
  for (const auto* const list : window_->findChildren<QAbstractItemView*>()) {
    if (list->isVisible()) return list->model()->index(row, column).data().toString();
  }
  return {};
}

QString DesktopTest::heard() const {
  for (QWidget* const widget : window_->findChildren<QWidget*>()) {
    const auto* const interface = QAccessible::queryAccessibleInterface(widget);
    const bool isAlert = interface->role() == QAccessible::AlertMessage;
    if (isAlert && widget->isVisible()) return interface->text(QAccessible::Name);
  }
  return {};
}

}  // namespace quillbay::desktop
