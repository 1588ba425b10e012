
#include <QClipboard>
#include <QInputMethodEvent>
#include <QPainter>

#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

const QString kThirty = "abcdefghijklmnopqrstuvwxyz1234";
const QString kFamily = "👨\u200D👩\u200D👧\u200D👦";

void type(QLineEdit& field, const QString& text) { QTest::keyClicks(&field, text); }

void paste(QLineEdit& field, const QString& text) {
  QApplication::clipboard()->setText(text);
  QTest::keySequence(&field, QKeySequence::Paste);
}

void commit(QLineEdit& field, const QString& text) {
  QInputMethodEvent event;
  event.setCommitString(text);
  QApplication::sendEvent(&field, &event);
}

void scroll(QWidget& widget) {
  const QPointF middle = widget.rect().center();
  QWheelEvent event(middle, widget.mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, {},
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&widget, &event);
}

/// With 40 % of its distance from the ground left.
QImage dimmed(const QImage& image, const QColor& ground) {
  QImage result = image;
  result.fill(ground);
  QPainter painter(&result);
  painter.setOpacity(0.4);
  painter.drawImage(0, 0, image);
  return result;
}

using SessionConfigurationViewTest = ShareSheetTest;

TEST_F(SessionConfigurationViewTest, TheThirtyFirstCharacterIsCutHoweverItComesAndItCanBeUndone) {
  const QString almost = kThirty.first(29);
  using Enter = void (*)(QLineEdit& field, const QString& text);
  // With the cursor as "|".
  const std::tuple<const char*, QString, int, Enter, QString, QString> rows[] = {
      {"typed", "", 0, type, kThirty + "5", kThirty + "|"},
      {"pasted", "", 0, paste, kThirty + kThirty, kThirty + "|"},
      {"typed in the middle", kThirty, 2, type, "X", "abX|" + kThirty.sliced(2, 27)},
      {"pasted in the middle", kThirty, 2, paste, "XYZ", "abXYZ|" + kThirty.sliced(2, 25)},
      {"by an input method", kThirty, 2, commit, "日本", "ab日本|" + kThirty.sliced(2, 26)},
      {"a family", almost, 29, paste, kFamily + kFamily, almost + kFamily + "|"},
      {"thirty families", "", 0, paste, kFamily.repeated(31), kFamily.repeated(30) + "|"},
      {"marks", almost, 29, paste, "e\u0301\u0323x", almost + "e\u0301\u0323|"},
      {"a flag", almost, 29, paste, "🇩🇪🇫🇷", almost + "🇩🇪|"},
      {"a skin tone", almost, 29, commit, "👍🏽👍🏽", almost + "👍🏽|"},
      {"a last one that grows", almost + "👨", 31, commit, "\u200D👩", almost + "👨\u200D👩|"},
  };
  show();
  for (QLineEdit* const field : form().findChildren<QLineEdit*>()) {
    const bool canUndo = field->echoMode() == QLineEdit::Normal;
    for (const auto& [name, before, cursor, enter, text, after] : rows) {
      SCOPED_TRACE(name);
      field->setText(before);
      field->setCursorPosition(cursor);
      enter(*field, text);
      const QString cut = field->text();
      EXPECT_EQ(field->text().insert(field->cursorPosition(), "|"), after);
      for (int round = 0; canUndo && round < 2; ++round) {
        QTest::keySequence(field, QKeySequence::Undo);
        EXPECT_EQ(field->text(), before);
        QTest::keySequence(field, QKeySequence::Redo);
        EXPECT_EQ(field->text(), cut);
      }
    }
  }
}

TEST_F(SessionConfigurationViewTest, AFrameIsAroundTheFormAndNoneAroundItsFields) {
  show();
  EXPECT_GT(test::contrastIn(test::pixelsOf(form()).copy(0, 0, 2, form().height())), 1.1);
  for (QLineEdit* const field : form().findChildren<QLineEdit*>()) {
    EXPECT_EQ(field->placeholderText(), "Optional");
    field->setPlaceholderText("");
    field->clearFocus();
    const QImage around = test::pixelsOf(*field, 2).copy(0, 2, field->width(), field->height());
    EXPECT_EQ(test::contrastIn(around), 1);
  }
}

TEST_F(SessionConfigurationViewTest, UnitsTakeTheFormOfTheirNumber) {
  platform::setPreferredLanguages({"pl"});
  create();
  QStringList texts;
  const QComboBox& menu = form().linkExpirationButton();
  for (int index = 0; index < menu.count(); ++index) texts.append(menu.itemText(index));
  EXPECT_EQ(texts, QStringList({"30 minut", "2 godziny", "24 godziny", "7 dni", "30 dni",
                                "12 miesięcy", "Nigdy"}));
}

TEST_F(SessionConfigurationViewTest, TheMenusOfferTheirChoicesAndDoNotChangeByScrollingOverThem) {
  show();
  const std::pair<QComboBox&, QStringList> rows[] = {
      {form().linkExpirationButton(),
       {"30 minutes", "2 hours", "24 hours", "7 days", "30 days", "12 months", "Never"}},
      {form().linkTypeButton(), {"Page", "Download", "Direct link"}},
  };
  for (const auto& [menu, texts] : rows) {
    EXPECT_EQ(menu.count(), texts.size());
    for (int index = 0; index < menu.count(); ++index) {
      menu.setCurrentIndex(index);
      scroll(menu);
      EXPECT_EQ(menu.currentText(), texts.value(index));
    }
    EXPECT_EQ(menu.focusPolicy(), Qt::StrongFocus) << "no focus from the wheel";
  }
}

TEST_F(SessionConfigurationViewTest, ADirectLinkDimsOnceAndDisablesWhatItDoesNotHave) {
  create({"Holiday", std::nullopt, SessionLinkType::page, std::nullopt, true});
  show();
  QHash<const QWidget*, QImage> images;
  for (const auto linkType : {SessionLinkType::directDownload, SessionLinkType::directLink,
                              SessionLinkType::directDownload}) {
    form().linkTypeButton().setFocus();
    press(Qt::Key_Home);
    for (int index = 0; index < linkType; ++index) press(Qt::Key_Down);
    for (int row = 0; row < 5; ++row) {
      const bool isWithout = linkType == SessionLinkType::directLink && (row < 2 || row == 4);
      for (int column = row == 4 ? 1 : 0; column < 2; ++column) {
        SCOPED_TRACE(testing::Message() << linkType << ", row " << row << ", column " << column);
        const QWidget& part = cell(row, column);
        EXPECT_EQ(part.isEnabled(), !isWithout);
        if (&part == &form().linkTypeButton()) continue;
        const QImage image = test::pixelsOf(part);
        const QImage whole = images.value(&part, image);
        images.insert(&part, whole);
        const QColor ground = form().palette().color(QPalette::Window);
        EXPECT_EQ(test::changedPixels(image, isWithout ? dimmed(whole, ground) : whole, 1.05), 0);
      }
    }
  }
}

TEST_F(SessionConfigurationViewTest, ThePasswordTakesTheFocusOnlyWhenALinkCanHaveOne) {
  SessionConfigurationView alone;
  const std::pair<const char*, std::function<void()>> ways[] = {
      {"click", [&] { click(alone.passwordTextField()); }},
      {"Shift+Tab", [&] { press(Qt::Key_Backtab, Qt::ShiftModifier); }},
      {"mnemonic", [&] { test::pressMnemonic(alone.label(1).text()); }},
  };
  const auto expectFocusIsTaken = [&](bool isTaken) {
    for (const auto& [name, tryToFocus] : ways) {
      alone.linkExpirationButton().setFocus();
      tryToFocus();
      EXPECT_EQ(alone.passwordTextField().hasFocus(), isTaken) << name;
    }
  };
  test::showActive(alone);
  expectFocusIsTaken(false);
  for (const auto linkType :
       {SessionLinkType::page, SessionLinkType::directLink, SessionLinkType::directDownload}) {
    SCOPED_TRACE(linkType);
    alone.linkTypeButton().setCurrentIndex(linkType);
    const bool wasEnabled = alone.passwordTextField().isEnabled();
    alone.didAppear();
    EXPECT_EQ(alone.passwordTextField().isEnabled(), wasEnabled) << "in the next turn only";
    processEvents();
    expectFocusIsTaken(linkType != SessionLinkType::directLink);
  }
}

TEST_F(SessionConfigurationViewTest, TheTitleGetsTheFocusUnlessALinkIsDirect) {
  for (const auto linkType : SessionLinkType::allCases) {
    SCOPED_TRACE(linkType);
    window_ = std::make_unique<QDialog>();
    auto* const fieldOfHost = new QLineEdit;
    (new QVBoxLayout(window_.get()))->addWidget(fieldOfHost);
    fieldOfHost->setFocus();
    create(linkWith(linkType));
    show();
    const bool isDirect = linkType == SessionLinkType::directLink;
    EXPECT_EQ(form().titleTextField().hasFocus(), !isDirect);
    EXPECT_EQ(fieldOfHost->hasFocus(), isDirect);
    controller_.reset();
  }
}

TEST_F(SessionConfigurationViewTest, TheSpacingsAreExactAtEverySize) {
  show();
  for (const QSize& size : {window_->sizeHint(), QSize(600, 500)}) {
    SCOPED_TRACE(size.width());
    window_->resize(size);
    processEvents();
    const QGridLayout& grid = form().gridView();
    for (int row = 0; row < 5; ++row) {
      SCOPED_TRACE(row);
      const QRect label = grid.cellRect(row, 0);
      const QRect control = grid.cellRect(row, 1);
      EXPECT_EQ(control.left() - label.right() - 1, 8);
      EXPECT_EQ(cell(row, 1).geometry().left(), control.left());
      if (row == 4) continue;
      EXPECT_EQ(cell(row, 0).geometry().right(), label.right());
      EXPECT_EQ(grid.cellRect(row + 1, 1).top() - control.bottom() - 1, 14);
    }
    const QRect preview = form().imageView().geometry();
    EXPECT_EQ(grid.cellRect(0, 0).topLeft(), QPoint(16, 16));
    EXPECT_EQ(grid.cellRect(4, 0).bottom() + 1, 16 + grid.sizeHint().height());
    EXPECT_EQ(preview.left() - grid.cellRect(0, 1).right() - 1, 24);
    EXPECT_EQ(preview.topRight(), QPoint(form().width() - 16 - 1, 16));
    EXPECT_EQ(preview.size(), QSize(80, 80));
    for (const int row : {0, 1}) EXPECT_EQ(cell(row, 1).width(), 145);
    for (const int row : {2, 3}) EXPECT_GE(cell(row, 1).width(), 145);
  }
  EXPECT_EQ(form().sizeHint().height(), form().gridView().sizeHint().height() + 16 + 16);
}

}  // namespace
}  // namespace quillbay::cloud
