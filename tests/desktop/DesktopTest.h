#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleHints>

#include "FakeService.h"
#include "TemporaryFolder.h"
#include "UITest.h"
#include "hosts/common/History.h"
#include "hosts/desktop/FileListModel.h"
#include "hosts/desktop/Localized.h"
#include "hosts/desktop/MainWindow.h"

namespace quillbay::desktop {

using test::FakeService;
using test::message;
using test::press;
using test::waitUntil;
using Call = FakeService::Call;

/// The window on a screen, used as a person would, before a service that does what the test says.
class DesktopTest : public test::UITest {
 protected:
  DesktopTest() {
    service_.install();
    // Of programs that a test starts.
    qputenv("XDG_STATE_HOME", (folder_ / "state").c_str());
  }
  ~DesktopTest() override { window_.reset(); }

  void refuse(Call call, const std::string& text, int status = 413) {
    service_.answer(call, FakeService::refusal(status, text));
  }
  std::ptrdiff_t count(const std::string& call) const {
    const auto calls = service_.calls();
    return std::ranges::count(calls, call);
  }

  /// Closes the window. Without a file no share can be remembered.
  void useHistory(const std::optional<std::filesystem::path>& file) {
    window_.reset();
    history_ = std::make_unique<host::History>(file);
  }

  /// Shows the window with these files, and waits until the sheet can be typed in.
  void open(const std::vector<std::string>& files) {
    window_ = std::make_unique<MainWindow>(Arguments{"instance-1", {}, files}, *history_);
    test::showActive(*window_);
    if (files.empty()) return;
    ASSERT_TRUE(waitUntil([&] { return isFormVisible() && titleField().hasFocus(); }));
  }
  /// A title is typed, Return pressed; waits until the page has begun that has this text.
  void share(const char* key) {
    QTest::keyClicks(&titleField(), "Holiday");
    press(Qt::Key_Return);
    waitUntilShown(key);
  }
  void openAndShare(const std::vector<std::string>& files, const char* key) {
    open(files);
    share(key);
  }
  void waitUntilShown(const char* key) const {
    ASSERT_TRUE(waitUntil([&] { return showsText(key); })) << key;
  }
  /// What has just appeared takes nothing, as outside of tests.
  static void useSystemInterval() {
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
  }

  /// The visible button with the text of this key, in one window if given; null if there is none.
  static QPushButton* button(const char* key, const QWidget* window = nullptr) {
    return buttonWithText(localized(key), window);
  }
  static QPushButton* buttonWithText(const QString& text, const QWidget* window = nullptr) {
    for (QWidget* const widget : QApplication::allWidgets()) {
      auto* const candidate = qobject_cast<QPushButton*>(widget);
      if (candidate == nullptr || !candidate->isVisible()) continue;
      if (window != nullptr && candidate->window() != window) continue;
      if (candidate->text().remove('&') == QString(text).remove('&')) return candidate;
    }
    return nullptr;
  }
  static void click(const char* key, const QWidget* window = nullptr) {
    QPushButton* const found = button(key, window);
    ASSERT_NE(found, nullptr) << key;
    test::click(*found);
  }
  /// The first one that can, or cannot, be typed in; null if there is none.
  QLineEdit* field(bool isReadOnly) const {
    for (QLineEdit* const field : window_->findChildren<QLineEdit*>()) {
      if (field->isReadOnly() == isReadOnly) return field;
    }
    return nullptr;
  }
  QLineEdit& titleField() const { return *field(false); }
  bool isFormVisible() const { return titleField().isVisible(); }
  QString shownLink() const { return field(true)->text(); }
  /// Whether a label on the page holds the text.
  bool showsText(const QString& text) const {
    return std::ranges::any_of(window_->findChildren<QLabel*>(), [&](const QLabel* label) {
      return label->isVisible() && label->text().contains(text);
    });
  }
  bool showsText(const char* key) const { return showsText(localized(key)); }
  /// In the list in sight.
  QString cell(int row, int column) const {
    for (const auto* const list : window_->findChildren<QAbstractItemView*>()) {
      if (list->isVisible()) return list->model()->index(row, column).data().toString();
    }
    return {};
  }
  /// What a screen reader was last told.
  QString heard() const {
    for (QWidget* const widget : window_->findChildren<QWidget*>()) {
      const auto* const interface = QAccessible::queryAccessibleInterface(widget);
      const bool isAlert = interface->role() == QAccessible::AlertMessage;
      if (isAlert && widget->isVisible()) return interface->text(QAccessible::Name);
    }
    return {};
  }

  const test::TemporaryFolder folder_;
  const std::string first_ = folder_.write("first", "one");
  const std::string second_ = folder_.write("second", "two");
  FakeService service_;
  std::unique_ptr<host::History> history_ =
      std::make_unique<host::History>(folder_ / "state/quillbay/history.sqlite");
  std::unique_ptr<MainWindow> window_;
};

}  // namespace quillbay::desktop
