#include "hosts/desktop/MainWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <algorithm>

#include "DesktopTest.h"
#include "FakeService.h"
#include "Gate.h"
#include "hosts/desktop/Localized.h"

namespace quillbay::desktop {
namespace {

using test::FakeService;
using test::Gate;
using test::Reply;
using test::Request;
using Call = FakeService::Call;

class MainWindowTest : public DesktopTest {
 protected:
  MainWindowTest() { service_.install(); }
  ~MainWindowTest() override { window_.reset(); }

  /// Has the service answer a kind of call only when the gate opens.
  std::shared_ptr<Gate> stall(Call call) {
    auto gate = std::make_shared<Gate>();
    service_.setHook(call, [gate](const Request&, Reply ordinary) {
      ordinary.sendAfter = gate;
      return ordinary;
    });
    return gate;
  }

  void refuse(Call call, const std::string& message) {
    service_.setHook(call, [message](const Request&, const Reply&) {
      return Reply::json(R"({"message":")" + message + R"(","status":507})", 507);
    });
  }

  std::ptrdiff_t count(const std::string& name) const {
    const auto calls = service_.calls();
    return std::ranges::count(calls, name);
  }

  /// A title is typed, Return pressed.
  void share() {
    QTest::keyClicks(&titleField(), "Holiday");
    QTest::keyClick(&titleField(), Qt::Key_Return);
  }

  const std::string first_ = folder_.write("first", "one");
  const std::string second_ = folder_.write("second", "two");
  FakeService service_;
};

TEST_F(MainWindowTest, TheLinkStandsWhileBytesMoveAndOneKeyCopiesIt) {
  const auto gate = stall(Call::store);
  open({first_, second_});
  share();
  ASSERT_TRUE(waitUntil([&] { return shownLink() == FakeService::link; }));
  EXPECT_TRUE(showsText("run.uploading"));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_EQ(QApplication::clipboard()->text(), FakeService::link);
  EXPECT_NE(button("run.copied"), nullptr) << "the button says so";

  QApplication::clipboard()->clear();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), FakeService::link);
  gate->open();
  ASSERT_TRUE(waitUntil([&] { return showsText("run.done"); }));
  EXPECT_EQ(count("delete session-1"), 0) << "what is shared stays";
  EXPECT_EQ(service_.storedBytes("item-1"), "one");
}

TEST_F(MainWindowTest, CancellingDeletesTheSessionAndKeepsWhatWasEntered) {
  struct Row {
    const char* name;
    Call stalled;
    std::ptrdiff_t deletions;
  };
  for (const Row& row : {Row{"while the session is being created", Call::createSession, 1},
                         Row{"while bytes move", Call::store, 1}}) {
    SCOPED_TRACE(row.name);
    const auto before = count("delete session-1");
    const auto gate = stall(row.stalled);
    open({first_, second_});
    share();
    const auto called = [&] { return service_.requests(row.stalled).size() > 0; };
    ASSERT_TRUE(waitUntil([&] { return called() && button("run.cancel") != nullptr; }));
    if (row.stalled == Call::store) {
      ASSERT_TRUE(waitUntil([&] { return !shownLink().isEmpty(); }));
    }
    click("run.cancel");
    if (row.stalled == Call::createSession) gate->open();
    ASSERT_TRUE(waitUntil([&] { return isFormVisible(); }));
    EXPECT_EQ(count("delete session-1") - before, row.deletions);
    EXPECT_EQ(titleField().text(), "Holiday");
    EXPECT_EQ(message(), nullptr) << "it was asked for";
    gate->open();
    service_.setHook(row.stalled, {});
    window_.reset();
  }
}

TEST_F(MainWindowTest, ARefusedUploadTellsWhyAndCanBeTriedAgain) {
  refuse(Call::finalize, "<b>No space</b> left");
  open({first_});
  share();
  ASSERT_TRUE(waitUntil([&] { return message() != nullptr; }));
  EXPECT_EQ(message()->text(), localized("failure.title"));
  EXPECT_EQ(message()->informativeText(), "<b>No space</b> left");
  EXPECT_EQ(message()->textFormat(), Qt::PlainText) << "a server's text is no markup";
  EXPECT_TRUE(isFormVisible());
  EXPECT_EQ(titleField().text(), "Holiday");
  EXPECT_EQ(count("delete session-1"), 1) << "half a session helps nobody";

  service_.setHook(Call::finalize, {});
  QTest::keyClick(message(), Qt::Key_Return);
  ASSERT_TRUE(waitUntil([&] { return showsText("run.done"); }));
  EXPECT_EQ(count("create"), 2);
}

TEST_F(MainWindowTest, AFailureWithoutATextOfItsOwnGetsAPlainSentence) {
  service_.setHook(Call::createSession, [](const Request&, Reply) {
    return Reply::json(R"({"message":"","status":500})", 500);
  });
  open({first_});
  share();
  ASSERT_TRUE(waitUntil([&] { return message() != nullptr; }));
  EXPECT_EQ(message()->informativeText(), localized("failure.plain"));
  message()->reject();
}

TEST_F(MainWindowTest, ClosingWhileBytesMoveAsksFirst) {
  const auto gate = stall(Call::store);
  open({first_});
  share();
  ASSERT_TRUE(waitUntil([&] { return !shownLink().isEmpty(); }));

  EXPECT_FALSE(window_->close());
  ASSERT_TRUE(waitUntil([&] { return button("close.go-on") != nullptr; }));
  QTest::keyClick(message(), Qt::Key_Escape);
  ASSERT_TRUE(waitUntil([&] { return message() == nullptr; }));
  EXPECT_TRUE(showsText("run.uploading")) << "Escape goes on";

  EXPECT_FALSE(window_->close());
  ASSERT_TRUE(waitUntil([&] { return button("close.cancel") != nullptr; }));
  click("close.cancel");
  ASSERT_TRUE(waitUntil([&] { return !window_->isVisible(); }));
  EXPECT_EQ(count("delete session-1"), 1);
  EXPECT_TRUE(window_->hasAbandonedWork());
  gate->open();
}

TEST_F(MainWindowTest, ASessionThatCouldNotBeDeletedIsTold) {
  const auto gate = stall(Call::store);
  refuse(Call::deleteSession, "no");
  open({first_});
  share();
  ASSERT_TRUE(waitUntil([&] { return !shownLink().isEmpty(); }));
  window_->cancelAndClose();
  ASSERT_TRUE(waitUntil([&] { return message() != nullptr; }));
  EXPECT_TRUE(message()->informativeText().contains(FakeService::link));
  QTest::keyClick(message(), Qt::Key_Return);
  ASSERT_TRUE(waitUntil([&] { return !window_->isVisible(); }));
  gate->open();
}

TEST_F(MainWindowTest, FilesThatAreDroppedAreShared) {
  window_ = std::make_unique<MainWindow>("instance-1", std::vector<std::string>{});
  window_->show();
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(first_)),
                QUrl::fromLocalFile(QString::fromStdString(folder_.path()))});
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window_.get(), &enter);
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window_.get(), &drop);
  ASSERT_NE(message(), nullptr) << "the folder is refused";
  message()->reject();
  window_->activateWindow();
  ASSERT_TRUE(waitUntil([&] { return isFormVisible() && titleField().hasFocus(); }));
  QTest::keyClick(&titleField(), Qt::Key_Return);
  ASSERT_TRUE(waitUntil([&] { return showsText("run.done"); }));

  click("run.again");
  EXPECT_TRUE(showsText("drop.title"));
  EXPECT_TRUE(waitUntil([&] { return window_->findChildren<QLineEdit*>().isEmpty(); }));
}

TEST_F(MainWindowTest, EverythingOfARunHasANameAndIsReachedByKeyboard) {
  open({first_});
  share();
  ASSERT_TRUE(waitUntil([&] { return showsText("run.done"); }));
  QSet<QWidget*> missing;
  for (QWidget* const widget : window_->findChildren<QWidget*>()) {
    if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus) continue;
    missing.insert(widget);
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(interface, nullptr);
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << widget->metaObject()->className();
  }
  for (qsizetype presses = 2 * missing.size(); presses > 0 && !missing.isEmpty(); --presses) {
    missing.remove(QApplication::focusWidget());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  EXPECT_TRUE(missing.isEmpty());
}

}  // namespace
}  // namespace quillbay::desktop
