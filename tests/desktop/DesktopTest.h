#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QGuiApplication>
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
using test::Gate;
using test::message;
using test::press;
using test::Reply;
using test::Request;
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

  /// Has the service answer a kind of call only when the gate opens.
  std::shared_ptr<Gate> stall(Call call) { return service_.hold(call); }
  void refuse(Call call, const std::string& text, int status = 413) {
    service_.answer(call, FakeService::refusal(status, text));
  }
  std::ptrdiff_t count(const std::string& call) const;

  /// Closes the window. Without a file no share can be remembered.
  void useHistory(const std::optional<std::filesystem::path>& file) {
    window_.reset();
    history_ = std::make_unique<host::History>(file);
  }

  /// Shows the window with these files, and waits until the sheet can be typed in.
  void open(const std::vector<std::string>& files);
  /// A title is typed, Return pressed; waits until the page has begun that has this text.
  void share(const char* key);
  void waitUntilShown(const char* key) const;
  /// What has just appeared takes nothing, as outside of tests.
  static void useSystemInterval() {
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
  }

  /// The visible button with the text of this key, in one window if given; null if there is none.
  static QPushButton* button(const char* key, const QWidget* window = nullptr) {
    return buttonWithText(localized(key), window);
  }
  static QPushButton* buttonWithText(const QString& text, const QWidget* window = nullptr);
  static void click(const char* key, const QWidget* window = nullptr);
  /// The first one that can, or cannot, be typed in; null if there is none.
  QLineEdit* field(bool isReadOnly) const;
  QLineEdit& titleField() const { return *field(false); }
  bool isFormVisible() const { return titleField().isVisible(); }
  QString shownLink() const { return field(true)->text(); }
  /// Whether a label on the page holds the text.
  bool showsText(const QString& text) const;
  bool showsText(const char* key) const { return showsText(localized(key)); }
  /// In the list in sight.
  QString cell(int row, int column) const;
  /// What a screen reader was last told.
  QString heard() const;

  const test::TemporaryFolder folder_;
  const std::string first_ = folder_.write("first", "one");
  const std::string second_ = folder_.write("second", "two");
  FakeService service_;
  std::unique_ptr<host::History> history_ =
      std::make_unique<host::History>(folder_ / "state/quillbay/history.sqlite");
  std::unique_ptr<MainWindow> window_;
};

}  // namespace quillbay::desktop
