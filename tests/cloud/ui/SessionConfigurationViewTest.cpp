#include <QuillbayCloud/ui/ImageView.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QClipboard>
#include <QGraphicsOpacityEffect>
#include <QInputMethodEvent>
#include <QVBoxLayout>

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

double opacity(const QWidget& widget) {
  const auto* const effect = qobject_cast<QGraphicsOpacityEffect*>(widget.graphicsEffect());
  return effect == nullptr || !effect->isEnabled() ? 1 : effect->opacity();
}

class SessionConfigurationViewTest : public ShareSheetTest {
 protected:
  void show(const SessionConfiguration& configuration = SessionConfiguration::default_()) {
    create(configuration);
    ShareSheetTest::show();
  }
};

TEST_F(SessionConfigurationViewTest, TheThirtyFirstCharacterIsCutHoweverItComes) {
  const QString almost = kThirty.first(29);
  struct Row {
    const char* name;
    QString before;
    int cursor;
    void (*enter)(QLineEdit& field, const QString& text);
    QString text;
    QString after;
  };
  const Row rows[] = {
      {"typed", "", 0, type, kThirty + "5", kThirty},
      {"pasted", "", 0, paste, kThirty + kThirty, kThirty},
      {"typed in the middle", kThirty, 2, type, "X", "abX" + kThirty.sliced(2, 27)},
      {"pasted in the middle", kThirty, 2, paste, "XYZ", "abXYZ" + kThirty.sliced(2, 25)},
      {"by an input method", kThirty, 2, commit, "日本", "ab日本" + kThirty.sliced(2, 26)},
      {"a family", almost, 29, paste, kFamily + kFamily, almost + kFamily},
      {"thirty families", "", 0, paste, kFamily.repeated(31), kFamily.repeated(30)},
      {"marks", almost, 29, paste, "e\u0301\u0323x", almost + "e\u0301\u0323"},
      {"a flag", almost, 29, paste, "🇩🇪🇫🇷", almost + "🇩🇪"},
      {"a skin tone", almost, 29, commit, "👍🏽👍🏽", almost + "👍🏽"},
      {"a last one that grows", almost + "👨", 31, commit, "\u200D👩", almost + "👨\u200D👩"},
  };
  show();
  for (QLineEdit* const field : form().findChildren<QLineEdit*>()) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.name);
      field->setText(row.before);
      field->setCursorPosition(row.cursor);
      row.enter(*field, row.text);
      EXPECT_EQ(field->text(), row.after);
    }
  }
}

TEST_F(SessionConfigurationViewTest, TheCutLeavesTheCursorAndCanBeUndone) {
  show();
  QLineEdit& field = form().titleTextField();
  paste(field, kThirty);
  field.setCursorPosition(2);
  type(field, "X");
  EXPECT_EQ(field.cursorPosition(), 3);
  QTest::keySequence(&field, QKeySequence::Undo);
  EXPECT_EQ(field.text(), kThirty);
}

TEST_F(SessionConfigurationViewTest, ADirectLinkDimsAndDisablesWhatItDoesNotHave) {
  show();
  for (const auto linkType : {SessionLinkType::directLink, SessionLinkType::directDownload}) {
    choose(linkType);
    for (int row = 0; row < 5; ++row) {
      const bool isDimmed = linkType == SessionLinkType::directLink && (row < 2 || row == 4);
      for (int column = row == 4 ? 1 : 0; column < 2; ++column) {
        SCOPED_TRACE(testing::Message() << linkType << ", row " << row << ", column " << column);
        EXPECT_EQ(opacity(cell(row, column)), isDimmed ? 0.4 : 1.0);
        EXPECT_EQ(cell(row, column).isEnabled(), !isDimmed);
      }
    }
  }
}

TEST(SessionConfigurationView, ThePasswordTakesTheFocusOnlyWhenALinkCanHaveOne) {
  struct State {
    const char* name;
    bool hasAppeared;
    SessionLinkType linkType;
    bool takesFocus;
  };
  const State states[] = {
      {"before it has appeared", false, SessionLinkType::directLink, false},
      {"page", true, SessionLinkType::page, true},
      {"direct link", true, SessionLinkType::directLink, false},
      {"download after a direct link", true, SessionLinkType::directDownload, true},
  };
  SessionConfigurationView form;
  const std::pair<const char*, std::function<void()>> ways[] = {
      {"click", [&] { click(form.passwordTextField()); }},
      {"Shift+Tab", [&] { press(Qt::Key_Backtab, Qt::ShiftModifier); }},
      {"mnemonic", [&] { pressMnemonic(form.label(1).text()); }},
  };
  form.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
  for (const State& state : states) {
    SCOPED_TRACE(state.name);
    form.linkTypeButton().setCurrentIndex(state.linkType);
    if (state.hasAppeared) form.didAppear();
    processEvents();
    for (const auto& [name, tryToFocus] : ways) {
      form.linkExpirationButton().setFocus();
      tryToFocus();
      EXPECT_EQ(form.passwordTextField().hasFocus(), state.takesFocus) << name;
    }
    EXPECT_EQ(form.passwordTextField().isEnabled(), state.takesFocus || !state.hasAppeared);
  }
}

TEST_F(SessionConfigurationViewTest, TheTitleGetsTheFocusUnlessALinkIsDirect) {
  for (const auto linkType : SessionLinkType::allCases) {
    SCOPED_TRACE(linkType);
    window_ = std::make_unique<QDialog>();
    auto* const fieldOfHost = new QLineEdit;
    (new QVBoxLayout(window_.get()))->addWidget(fieldOfHost);
    fieldOfHost->setFocus();
    show(linkWith(linkType));
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
    EXPECT_EQ(form().titleTextField().width(), 145);
    EXPECT_EQ(form().passwordTextField().width(), 145);
    EXPECT_GE(form().linkExpirationButton().width(), 145);
    EXPECT_GE(form().linkTypeButton().width(), 145);
  }
  EXPECT_EQ(form().sizeHint().height(), form().gridView().sizeHint().height() + 16 + 16);
}

}  // namespace
}  // namespace quillbay::cloud
