#include <QuillbayCloud/ui/HeaderTextField.h>
#include <QuillbayCloud/ui/ImageView.h>
#include <QuillbayPlatform/StringTable.h>

#include <QCheckBox>
#include <QStyle>

#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

/// A part's place as if people wrote from left to right; edges lie between pixels.
struct Place {
  explicit Place(const QWidget& part) {
    const QWidget& view = *part.parentWidget();
    const QRect rect = QStyle::visualRect(view.layoutDirection(), view.rect(), part.geometry());
    leading = rect.x();
    top = rect.y();
    trailing = rect.x() + rect.width();
    bottom = rect.y() + rect.height();
  }
  int leading, top, trailing, bottom;
};

class ShareSheetLayoutTest : public ShareSheetTest {
 protected:
  void expectConstraints() const {
    const int width = controller_->view().width();
    const int height = controller_->view().height();
    const Place header(controller_->headerTextField());
    const Place branding(controller_->brandingImageView());
    const Place box(form());
    const Place help(controller_->helpButton());
    const Place cancel(controller_->cancelButton());
    const Place share(controller_->shareButton());
    EXPECT_EQ(header.top, 16);
    EXPECT_LE(header.trailing - header.leading, 0.8 * width);
    EXPECT_EQ(header.leading + header.trailing, width) << "in the middle";
    EXPECT_EQ(branding.top, 12);
    EXPECT_EQ(branding.trailing, width - 12);
    EXPECT_EQ(box.leading, 16);
    EXPECT_EQ(box.trailing, width - 16);
    EXPECT_EQ(box.top, header.bottom + 24);
    EXPECT_EQ(help.leading, 16);
    EXPECT_EQ(share.trailing, width - 16);
    EXPECT_EQ(cancel.trailing, share.leading - 12);
    for (const Place& button : {help, cancel, share}) {
      EXPECT_EQ(button.top, box.bottom + 24);
      EXPECT_EQ(button.bottom, height - 16);
    }
  }

  /// Nothing that is written is cut, and nothing lies on anything else.
  void expectAllTextsFit() const {
    const HeaderTextField& header = controller_->headerTextField();
    EXPECT_GE(header.height(), header.heightForWidth(header.width()));
    for (const QWidget* const parent : {&controller_->view(), static_cast<QWidget*>(&form())}) {
      QRegion taken;
      for (const auto* const part : parent->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (part->size().isEmpty()) continue;
        SCOPED_TRACE(part->property("text").toString().toStdString());
        EXPECT_EQ(part->geometry() & parent->rect(), part->geometry());
        EXPECT_FALSE(taken.intersects(part->geometry()));
        taken += part->geometry();
        if (part == &header) continue;
        EXPECT_GE(part->width(), part->minimumSizeHint().width());
        EXPECT_GE(part->height(), part->minimumSizeHint().height());
      }
    }
    for (const auto* const field : form().findChildren<QLineEdit*>()) {
      const int textWidth = field->fontMetrics().horizontalAdvance(field->placeholderText());
      EXPECT_LT(textWidth, field->width() - 4);
    }
  }
};

TEST_F(ShareSheetLayoutTest, EveryPartStandsWhereItBelongsAtEverySizeAndNothingIsCut) {
  struct Row {
    const char* name;
    const char* language;
    Qt::LayoutDirection direction;
  };
  QImage logo(40, 20, QImage::Format_RGB32);
  for (const Row& row :
       {Row{"English", "en", Qt::LeftToRight}, Row{"German", "de", Qt::LeftToRight},
        Row{"from right to left", "en", Qt::RightToLeft}}) {
    SCOPED_TRACE(row.name);
    platform::setPreferredLanguages({row.language});
    window_->setLayoutDirection(row.direction);
    create();
    controller_->setBrandingImage(logo);
    show();
    for (const QSize& size :
         {window_->sizeHint(), QSize(900, 700), QSize(901, 701), window_->minimumSizeHint()}) {
      SCOPED_TRACE(size.width());
      window_->resize(size);
      processEvents();
      ASSERT_EQ(controller_->view().size(), size);
      expectConstraints();
      EXPECT_EQ(controller_->brandingImageView().size(), controller_->brandingImage().size());
      const HeaderTextField& header = controller_->headerTextField();
      if (size.width() < 900) continue;
      EXPECT_EQ(header.height(), header.heightForWidth(2000)) << "two lines where there is room";
    }
    controller_->setBrandingImage(QImage());
    processEvents();
    expectAllTextsFit();
  }
}

}  // namespace
}  // namespace quillbay::cloud
