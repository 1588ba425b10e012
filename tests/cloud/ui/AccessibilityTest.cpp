
#include <QAccessible>

#include "Languages.h"
#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

QString spoken(QWidget& widget, QAccessible::Text kind) {
  QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&widget);
  return interface == nullptr ? QString() : interface->text(kind);
}

class AccessibilityTest : public ShareSheetTest {
 protected:
  /// What a user can act on, whether the keyboard reaches it or not.
  QSet<QWidget*> enabledControls() const {
    QSet<QWidget*> controls;
    for (QWidget* const widget : controller_->view().findChildren<QWidget*>()) {
      const bool isControl = widget->focusPolicy() != Qt::NoFocus ||
                             widget->inherits("QAbstractButton") || widget->inherits("QLineEdit");
      if (isControl && widget->isVisible() && widget->isEnabled()) controls.insert(widget);
    }
    return controls;
  }
};

TEST_F(AccessibilityTest, EveryControlHasANameAndEveryRowItsLabel) {
  show();
  for (QWidget* const control : enabledControls()) {
    EXPECT_NE(spoken(*control, QAccessible::Name), "") << control->metaObject()->className();
  }
  EXPECT_EQ(spoken(form().titleTextField(), QAccessible::Name), "Title");
  EXPECT_EQ(spoken(form().passwordTextField(), QAccessible::Name), "Password");
  for (int row = 0; row < 4; ++row) {
    const auto relations =
        QAccessible::queryAccessibleInterface(&cell(row, 1))->relations(QAccessible::Label);
    ASSERT_EQ(relations.size(), 1) << row;
    EXPECT_EQ(relations[0].first->object(), &form().label(row)) << row;
  }
}

TEST_F(AccessibilityTest, ThePreviewIsAGraphicNamedByItsDescription) {
  ImageView& preview = form().imageView();
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&preview)->role(), QAccessible::Graphic);
  EXPECT_EQ(spoken(preview, QAccessible::Name), "Quillbay Cloud");
  QImage image(1, 1, QImage::Format_RGB32);
  image.setText("Description", "A lake");
  preview.setImage(image);
  EXPECT_EQ(spoken(preview, QAccessible::Name), "A lake");
}

TEST_F(AccessibilityTest, TabGoesThroughAllEnabledControlsInOrderAndBack) {
  for (const auto linkType : {SessionLinkType::page, SessionLinkType::directLink}) {
    SCOPED_TRACE(linkType);
    create(linkWith(linkType));
    show();
    QList<QWidget*> order = formControls() + buttons();
    order.removeIf([](const QWidget* control) { return !control->isEnabled(); });
    EXPECT_EQ(QSet<QWidget*>(order.begin(), order.end()), enabledControls());

    order.first()->setFocus();
    for (qsizetype index = 1; index <= order.size(); ++index) {
      press(Qt::Key_Tab);
      EXPECT_EQ(QApplication::focusWidget(), order[index % order.size()]) << index;
    }
    for (qsizetype index = order.size() - 1; index >= 0; --index) {
      press(Qt::Key_Backtab, Qt::ShiftModifier);
      EXPECT_EQ(QApplication::focusWidget(), order[index]) << index;
    }
  }
}

TEST_F(AccessibilityTest, EveryLetterLeadsToOneControlAlone) {
  for (const char* const language : test::kLanguages) {
    SCOPED_TRACE(language);
    platform::setPreferredLanguages({language});
    create();
    show();
    for (int row = 0; row < 4; ++row) {
      controller_->shareButton().setFocus();
      test::pressMnemonic(form().label(row).text());
      EXPECT_TRUE(cell(row, 1).hasFocus()) << row;
    }
    test::pressMnemonic(form().generatesLongLinkButton().text());
    EXPECT_TRUE(test::waitUntil([&] { return form().generatesLongLinkButton().isChecked(); }));
    test::pressMnemonic(controller_->cancelButton().text());
    EXPECT_TRUE(test::waitUntil([&] { return cancelCount_ == 1; }));
    test::pressMnemonic(controller_->shareButton().text());
    EXPECT_TRUE(test::waitUntil([&] { return confirmed_.size() == 1; }));
  }
}

}  // namespace
}  // namespace quillbay::cloud
