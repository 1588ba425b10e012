

#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

using test::changedPixels;
using test::contrastIn;
using test::pixelsOf;

constexpr double kText = 4.5;
constexpr double kOutline = 3;

struct Look {
  const char* style;
  bool isDark;
};

/// In two styles, with colours for the focus that cannot be seen on the ground as they are.
class ContrastTest : public ShareSheetTest, public testing::WithParamInterface<Look> {
 protected:
  ContrastTest() {
    QApplication::setStyle(GetParam().style);
    QPalette palette = QApplication::style()->standardPalette();
    palette.setColor(QPalette::Highlight, QColor(255, 230, 150));
    if (GetParam().isDark) {
      palette = QPalette(QColor(45, 45, 48));
      palette.setColor(QPalette::Highlight, QColor(0, 0, 100));
    }
    // The sheet follows when colours change.
    create();
    show();
    QApplication::setPalette(palette);
    processEvents();
  }
  ~ContrastTest() override {
    QApplication::setStyle("Fusion");
    QApplication::setPalette(QApplication::style()->standardPalette());
  }
};

TEST_P(ContrastTest, TextsCanBeRead) {
  QList<QWidget*> texts = formControls() + buttons();
  texts.removeOne(&form().titleTextField());  // It has the focus.
  texts.append(&controller_->headerTextField());
  for (int row = 0; row < 4; ++row) texts.append(&form().label(row));
  for (const QWidget* const text : texts) {
    EXPECT_GE(contrastIn(pixelsOf(*text)), kText) << text->accessibleName().toStdString();
  }
}

TEST_P(ContrastTest, OutlinesCanBeSeen) {
  const auto leftEdge = [](const QWidget& widget, int width) {
    return pixelsOf(widget, 1).copy(0, 0, width, widget.height() + 2);
  };
  EXPECT_GE(contrastIn(leftEdge(form().generatesLongLinkButton(), 3)), kOutline);
  EXPECT_GE(contrastIn(leftEdge(controller_->helpButton(), 6)), kOutline);
  const QLineEdit& field = form().passwordTextField();
  EXPECT_GE(contrastIn(pixelsOf(field, 3).copy(0, field.height() + 3, field.width(), 3)), kOutline);
}

TEST_P(ContrastTest, EveryControlShowsThatItHasTheFocus) {
  for (QWidget* const control : formControls() + buttons()) {
    QApplication::focusWidget()->clearFocus();
    const QImage before = pixelsOf(*control, 4);
    control->setFocus(Qt::TabFocusReason);
    EXPECT_GE(changedPixels(before, pixelsOf(*control, 4), kOutline), control->width())
        << control->accessibleName().toStdString() << control->metaObject()->className();
    form().titleTextField().setFocus();
  }
}

INSTANTIATE_TEST_SUITE_P(Looks, ContrastTest,
                         testing::Values(Look{"Fusion", false}, Look{"Fusion", true},
                                         Look{"Windows", false}, Look{"Windows", true}),
                         [](const auto& look) {
                           return look.param.style + std::string(look.param.isDark ? "Dark" : "");
                         });

}  // namespace
}  // namespace quillbay::cloud
