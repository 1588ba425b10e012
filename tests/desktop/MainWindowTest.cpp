#include <QClipboard>
#include <QProgressBar>

#include "DesktopTest.h"

namespace quillbay::desktop {
namespace {

using MainWindowTest = DesktopTest;

TEST_F(MainWindowTest, TheLinkIsThereWhileBytesMoveAndOneKeyCopiesIt) {
  const auto gate = service_.hold(Call::store);
  openAndShare({first_, second_}, "run.uploading");
  EXPECT_EQ(shownLink(), FakeService::link);
  auto* const field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
  ASSERT_NE(field, nullptr) << "the focus is where the link appears";
  const std::tuple<int, Qt::Key, Qt::KeyboardModifiers, const char*> rows[] = {
      {0, Qt::Key_Return, {}, FakeService::link},
      {0, Qt::Key_C, Qt::ControlModifier, FakeService::link},
      {8, Qt::Key_C, Qt::ControlModifier, "https://"}};
  for (const auto& [selectedCount, key, modifiers, copied] : rows) {
    QApplication::clipboard()->clear();
    field->setSelection(0, selectedCount);
    press(key, modifiers);
    EXPECT_EQ(QApplication::clipboard()->text(), copied) << selectedCount << " " << key;
  }
  EXPECT_NE(button("run.copied"), nullptr) << "the button says so";
  EXPECT_TRUE(waitUntil([&] { return button("run.copy") != nullptr; })) << "but not for ever";
  gate->open();
  waitUntilShown("run.done");
  EXPECT_EQ(count("delete session-1"), 0) << "what is shared stays";
  EXPECT_EQ(service_.storedBytes("item-1"), "one");
  EXPECT_TRUE(service_.requests(Call::createSession).front().body.contains("Holiday"));
}

TEST_F(MainWindowTest, TheBarMovesAndScreenReadersHearTheLinkEachTenthAndTheEnd) {
  // The second file is uploaded first.
  const auto first = service_.hold(Call::uploadUrl);
  openAndShare({first_, second_}, "run.uploading");
  EXPECT_EQ(heard(), localized("run.link-ready"));
  const auto second = service_.hold(Call::uploadUrl, std::nullopt, 1);
  first->open();
  EXPECT_TRUE(waitUntil([&] { return heard() == localized("run.percent").arg(50); }));
  const auto& bar = *window_->findChild<QProgressBar*>();
  EXPECT_EQ(bar.value() * 2, bar.maximum());
  EXPECT_EQ(cell(0, FileListModel::state), localized("files.uploading").arg(0));
  EXPECT_EQ(cell(1, FileListModel::state), localized("files.uploaded"));
  second->open();
  EXPECT_TRUE(waitUntil([&] { return heard() == localized("run.done"); }));
}

TEST_F(MainWindowTest, TheLinkStaysUsableWhileTheNextTryIsAwaited) {
  refuse(Call::finalize, "busy", 503);
  openAndShare({first_, second_}, "run.uploading");
  ASSERT_TRUE(waitUntil([] { return button("run.retry") != nullptr; }));
  EXPECT_TRUE(showsText("busy"));
  EXPECT_EQ(heard(), localized("run.waiting").arg(1).arg(1).arg(5));
  QApplication::clipboard()->clear();
  press(Qt::Key_Return);
  EXPECT_EQ(QApplication::clipboard()->text(), FakeService::link);
  service_.setHook(Call::finalize, {});
  button("run.retry")->setFocus();
  press(Qt::Key_Space);
  EXPECT_TRUE(field(true)->hasFocus()) << "and not the button that cancels";
  waitUntilShown("run.done");
  EXPECT_EQ(count("create"), 1);
}

TEST_F(MainWindowTest, CancellingDeletesTheSessionAndClosingAsksFirst) {
  const std::tuple<Call, const char*, const char*, const char*> stages[] = {
      {Call::createSession, "run.creating", "close.early.title", "close.early.cancel"},
      {Call::store, "run.uploading", "close.title", "close.cancel"}};
  for (const auto& [stalled, text, question, cancel] : stages) {
    for (const bool closes : {false, true}) {
      SCOPED_TRACE(std::string(text) + (closes ? ", closing" : ", cancelling"));
      const auto before = count("delete session-1");
      const auto gate = service_.hold(stalled);
      openAndShare({first_, second_}, text);
      for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        EXPECT_FALSE(window_->close());
        ASSERT_TRUE(waitUntil([] { return message()->isActiveWindow(); }));
        EXPECT_EQ(message()->text(), localized(question));
        press(key);
        EXPECT_EQ(message(), nullptr);
        EXPECT_TRUE(showsText(text)) << "the safe answer";
      }
      if (closes) window_->close();
      closes ? click(cancel) : click("run.cancel");
      if (stalled == Call::createSession) {
        EXPECT_TRUE(showsText("run.cancelling"));
        gate->open();
      }
      const auto hasEnded = [&] { return closes ? !window_->isVisible() : isFormVisible(); };
      ASSERT_TRUE(waitUntil(hasEnded));
      EXPECT_EQ(count("delete session-1") - before, 1);
      EXPECT_EQ(titleField().text(), "Holiday");
      EXPECT_EQ(message(), nullptr) << "it was asked for";
      gate->open();
      service_.setHook(stalled, {});
    }
  }
}

TEST_F(MainWindowTest, AFailureIsToldOnThePageOfTheFormWithTheStateOfTheLink) {
  enum class LinkState { none, deleted, left };
  for (const auto& [refused, linkState] : {std::pair(Call::createSession, LinkState::none),
                                           std::pair(Call::finalize, LinkState::deleted),
                                           std::pair(Call::finalize, LinkState::left)}) {
    SCOPED_TRACE(static_cast<int>(linkState));
    const auto created = count("create");
    refuse(refused, "<b>No space</b> left");
    if (linkState == LinkState::left) refuse(Call::deleteSession, "no");
    useHistory(std::nullopt);
    openAndShare({first_}, "failure.title");
    EXPECT_TRUE(heard().startsWith(localized("failure.title")));
    EXPECT_TRUE(showsText("<b>No space</b> left")) << "a server's text is no markup";
    const QString leftover = localized("leftover.message").arg(FakeService::link);
    EXPECT_EQ(showsText("failure.link-deleted"), linkState == LinkState::deleted);
    EXPECT_EQ(showsText(leftover), linkState == LinkState::left);
    EXPECT_EQ(message(), nullptr);
    EXPECT_EQ(titleField().text(), "Holiday");

    for (const Call call : {refused, Call::deleteSession}) service_.setHook(call, {});
    press(Qt::Key_Return);
    waitUntilShown("run.done");
    EXPECT_EQ(count("create") - created, 2);
  }
}

TEST_F(MainWindowTest, WhateverIsPressedTwiceTheLinkIsSeen) {
  for (const bool isMouse : {true, false}) {
    SCOPED_TRACE(isMouse ? "mouse" : "keyboard");
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(0);
    open({first_});
    const QPushButton& shareButton = *buttonWithText("Share");
    const QPoint place = shareButton.mapTo(window_.get(), shareButton.rect().center());
    for (int presses = 0; presses < 4; ++presses) {
      QWindow* const screen = window_->windowHandle();
      isMouse ? QTest::mouseClick(screen, Qt::LeftButton, {}, place)
              : QTest::keyClick(screen, Qt::Key_Return);
      useSystemInterval();
      QApplication::processEvents();
    }
    waitUntilShown("run.done");
    EXPECT_EQ(shownLink(), FakeService::link);
    button("run.close")->setFocus();
    test::repeat(Qt::Key_Return);
    EXPECT_EQ(message(), nullptr) << "a key that is held down closes nothing";
    EXPECT_TRUE(window_->isVisible());
  }
  EXPECT_EQ(count("create"), 2);
  EXPECT_EQ(count("delete session-1"), 0);
}

TEST_F(MainWindowTest, APageTakesNothingAtFirstAndWhatEndsOrDeletesIsWhereNoButtonWas) {
  const auto places = [&](const QList<QAbstractButton*>& buttons) {
    QRegion region;
    for (const QAbstractButton* const button : buttons) {
      if (button->isVisible()) region += {button->mapTo(window_.get(), QPoint()), button->size()};
    }
    return region;
  };
  const auto gate = service_.hold(Call::store);
  open({first_});
  const QRegion onForm = places(window_->findChildren<QAbstractButton*>());
  QPushButton& shareButton = *buttonWithText("Share");
  share("run.uploading");
  shareButton.click();
  QPushButton& cancel = *button("run.cancel");
  cancel.setFocus();
  useSystemInterval();
  QTest::mouseClick(&cancel, Qt::LeftButton);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) QTest::keyClick(&cancel, key);
  const QRegion whileRunning = places({&cancel});
  gate->open();
  waitUntilShown("run.done");
  test::processEvents();
  const QRegion whenDone = places({button("run.delete"), button("run.close")});
  EXPECT_FALSE(whileRunning.intersects(onForm));
  EXPECT_FALSE(whenDone.intersects(onForm | whileRunning));
  EXPECT_NE(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);
  EXPECT_EQ(count("create"), 1) << "one run at a time";
}

TEST_F(MainWindowTest, ALinkIsNotLostUnseen) {
  const std::tuple<const char*, bool, bool, const char*> rows[] = {
      {"copied before", false, true, nullptr},
      {"copied now", false, false, "run.copy"},
      {"given up", false, false, "uncopied.drop"},
      {"kept", false, false, "uncopied.back"},
      {"to be found again", true, false, nullptr}};
  for (const auto& [name, isRemembered, isCopiedBefore, answer] : rows) {
    SCOPED_TRACE(name);
    useHistory(isRemembered ? std::optional(folder_ / "history") : std::nullopt);
    QApplication::clipboard()->clear();
    openAndShare({first_}, "run.done");
    EXPECT_TRUE(showsText(isRemembered ? "run.remembered" : "run.not-remembered"));
    if (isCopiedBefore) press(Qt::Key_C, Qt::ControlModifier);
    click("run.close");
    EXPECT_EQ(message() != nullptr, answer != nullptr);
    if (answer != nullptr) click(answer, message());
    EXPECT_EQ(window_->isVisible(), QString("uncopied.back") == answer);
    const bool isCopied = isCopiedBefore || QString("run.copy") == answer;
    EXPECT_EQ(QApplication::clipboard()->text() == FakeService::link, isCopied);
  }
}

TEST_F(MainWindowTest, WhatIsSharedCanBeDeletedAfterAQuestion) {
  refuse(Call::deleteSession, "no");
  openAndShare({first_}, "run.done");
  for (const char* const outcome : {"run.not-deleted", "deleted.title"}) {
    click("run.delete");
    ASSERT_NE(message(), nullptr);
    EXPECT_EQ(message()->defaultButton(), button("delete.keep"));
    click("run.delete", message());
    waitUntilShown(outcome);
    service_.setHook(Call::deleteSession, {});
  }
  EXPECT_TRUE(isFormVisible());
  EXPECT_EQ(count("delete session-1"), 2);
}

TEST_F(MainWindowTest, TerminationIsBoundedAndTellsWhatIsLeft) {
  for (const bool isStalled : {true, false}) {
    SCOPED_TRACE(isStalled ? "nothing answers, and a question is open" : "done, never copied");
    const auto store = service_.hold(Call::store);
    const auto deletion = service_.hold(Call::deleteSession);
    if (!isStalled) store->open();
    openAndShare({first_}, isStalled ? "run.uploading" : "run.done");
    window_->close();
    window_->terminate();
    ASSERT_TRUE(waitUntil([&] { return !window_->isVisible(); }));
    EXPECT_TRUE(window_->lastWords().contains(FakeService::link));
    for (const auto& gate : {store, deletion}) gate->open();
  }
}

TEST_F(MainWindowTest, EverythingHasANameAndIsReachedByKeyboard) {
  openAndShare({first_}, "run.done");
  click("run.qr-code");
  for (const int expectedGraphics : {1, 0}) {
    QSet<QWidget*> missing;
    int graphics = 0;
    for (QWidget* const widget : window_->findChildren<QWidget*>()) {
      QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(widget);
      const bool isGraphic = interface->role() == QAccessible::Graphic;
      const bool isReached = widget->focusPolicy() != Qt::NoFocus && widget->isEnabled();
      if (!widget->isVisible() || (!isReached && !isGraphic)) continue;
      graphics += isGraphic ? 1 : 0;
      if (!isGraphic) missing.insert(widget);
      EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty())
          << widget->metaObject()->className();
    }
    EXPECT_EQ(graphics, expectedGraphics) << "the QR code";
    for (qsizetype presses = 2 * missing.size(); presses > 0 && !missing.isEmpty(); --presses) {
      missing.remove(QApplication::focusWidget());
      press(Qt::Key_Tab);
    }
    EXPECT_TRUE(missing.isEmpty());
    if (expectedGraphics == 1) click("shares.show");
  }
}

}  // namespace
}  // namespace quillbay::desktop
