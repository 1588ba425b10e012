#include <QuillbayCloud/ui/HeaderTextField.h>
#include <QuillbayCloud/ui/ShareSheetLayout.h>

#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace quillbay::cloud {
namespace {

constexpr int kContentInset = 16;
constexpr int kSectionSpacing = 24;
constexpr int kBrandingInset = 12;
constexpr int kButtonSpacing = 12;

}  // namespace

ShareSheetLayout::ShareSheetLayout(QWidget& sheet, const Parts& parts)
    : QLayout(&sheet), parts_(parts) {
  for (QWidget* const part : {static_cast<QWidget*>(&parts.header), &parts.brandingImage,
                              &parts.form, &parts.help, &parts.cancel, &parts.share}) {
    addWidget(part);
  }
}

ShareSheetLayout::~ShareSheetLayout() { qDeleteAll(items_); }

QSize ShareSheetLayout::sizeHint() const { return sizeAround(parts_.form.sizeHint()); }

QSize ShareSheetLayout::minimumSize() const { return sizeAround(parts_.form.minimumSizeHint()); }

QSize ShareSheetLayout::sizeAround(QSize formSize) const {
  const int buttonsWidth = parts_.help.sizeHint().width() + kButtonSpacing +
                           parts_.cancel.sizeHint().width() + kButtonSpacing +
                           parts_.share.sizeHint().width();
  const int width = std::max(formSize.width(), buttonsWidth) + (2 * kContentInset);
  const int headerHeight = parts_.header.heightForWidth(headerWidth(width));
  return {width, kContentInset + headerHeight + kSectionSpacing + formSize.height() +
                     kSectionSpacing + buttonHeight() + kContentInset};
}

int ShareSheetLayout::headerWidth(int sheetWidth) const {
  const int width = std::min(parts_.header.naturalWidth(), sheetWidth * 4 / 5);
  // Of the sheet's parity: else the middle would lie half a pixel beside the sheet's.
  return width - ((sheetWidth - width) % 2);
}

int ShareSheetLayout::buttonHeight() const {
  return std::max({parts_.help.sizeHint().height(), parts_.cancel.sizeHint().height(),
                   parts_.share.sizeHint().height()});
}

void ShareSheetLayout::setGeometry(const QRect& rect) {
  QLayout::setGeometry(rect);
  const auto place = [&](QWidget& part, int x, int y, int width, int height) {
    part.setGeometry(QStyle::visualRect(parentWidget()->layoutDirection(), rect,
                                        {rect.x() + x, rect.y() + y, width, height}));
  };
  const int width = rect.width();
  const int headerWidth = this->headerWidth(width);
  const int headerHeight = parts_.header.heightForWidth(headerWidth);
  place(parts_.header, (width - headerWidth) / 2, kContentInset, headerWidth, headerHeight);

  const QSize branding = parts_.brandingImage.sizeHint();
  place(parts_.brandingImage, width - kBrandingInset - branding.width(), kBrandingInset,
        branding.width(), branding.height());

  const int buttonHeight = this->buttonHeight();
  const int buttonTop = rect.height() - kContentInset - buttonHeight;
  const int formTop = kContentInset + headerHeight + kSectionSpacing;
  place(parts_.form, kContentInset, formTop, width - (2 * kContentInset),
        buttonTop - kSectionSpacing - formTop);

  place(parts_.help, kContentInset, buttonTop, parts_.help.sizeHint().width(), buttonHeight);
  const int shareWidth = parts_.share.sizeHint().width();
  const int shareLeft = width - kContentInset - shareWidth;
  place(parts_.share, shareLeft, buttonTop, shareWidth, buttonHeight);
  const int cancelWidth = parts_.cancel.sizeHint().width();
  place(parts_.cancel, shareLeft - kButtonSpacing - cancelWidth, buttonTop, cancelWidth,
        buttonHeight);
}

void ShareSheetLayout::addItem(QLayoutItem* item) { items_.append(item); }

QLayoutItem* ShareSheetLayout::itemAt(int index) const { return items_.value(index); }

QLayoutItem* ShareSheetLayout::takeAt(int index) {
  return index >= 0 && index < count() ? items_.takeAt(index) : nullptr;
}

}  // namespace quillbay::cloud
