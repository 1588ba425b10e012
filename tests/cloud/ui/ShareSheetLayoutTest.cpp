

#include "Languages.h"
#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

struct Place {
  int leading, top, trailing, bottom;  // edges lie between pixels
};

/// As if people wrote from left to right.
Place placeOf(const QWidget& part) {
  const QWidget& view = *part.parentWidget();
  const QRect rect = QStyle::visualRect(view.layoutDirection(), view.rect(), part.geometry());
  return {rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height()};
}

class ShareSheetLayoutTest : public ShareSheetTest {
 protected:
  void expectConstraints() const {
    const int width = controller_->view().width();
    const int height = controller_->view().height();
    const Place header = placeOf(controller_->headerTextField());
    const Place branding = placeOf(controller_->brandingImageView());
    const Place box = placeOf(form());
    const Place help = placeOf(controller_->helpButton());
    const Place cancel = placeOf(controller_->cancelButton());
    const Place share = placeOf(controller_->shareButton());
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
  QImage logo(40, 20, QImage::Format_RGB32);
  // The pseudo-locale is longer than any language.
  std::vector<std::pair<const char*, Qt::LayoutDirection>> rows = {{"en_XA", Qt::LeftToRight},
                                                                   {"en", Qt::RightToLeft}};
  for (const char* const language : test::kLanguages) rows.emplace_back(language, Qt::LeftToRight);
  for (const auto& [language, direction] : rows) {
    SCOPED_TRACE(testing::Message() << language << direction);
    platform::setPreferredLanguages({language});
    window_->setLayoutDirection(direction);
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
      const int room = size.width() * 8 / 10;
      EXPECT_EQ(header.height(), header.heightForWidth(room)) << "two lines where there is room";
    }
    controller_->setBrandingImage(QImage());
    processEvents();
    expectAllTextsFit();
  }
}

}  // namespace
}  // namespace quillbay::cloud
