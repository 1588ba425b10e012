#pragma once

#include <QLayout>
#include <array>
#include <memory>

namespace quillbay::cloud {

class HeaderTextField;

/// Where the parts of the share sheet stand. W and H are the sheet's width and height:
///
/// - the header 16 from the top, in the middle, at most 0.8 W wide;
/// - the branding image, in its own size, 12 from the top and from the trailing edge;
/// - the form from 16 to W - 16, 24 below the header;
/// - help (leading), Cancel and Share (trailing, 12 apart) from 24 below the form to H - 16, all
///   three of one height.
///
/// What height is left over goes to the form. Mirrored where people write from right to left.
class ShareSheetLayout : public QLayout {
 public:
  struct Parts {
    HeaderTextField& header;
    QWidget& brandingImage;
    QWidget& form;
    QWidget& help;
    QWidget& cancel;
    QWidget& share;
  };

  /// Takes over `sheet`, which gets the parts as its children, in the order above.
  ShareSheetLayout(QWidget& sheet, const Parts& parts);
  ~ShareSheetLayout() override;

  QSize sizeHint() const override;
  QSize minimumSize() const override;
  void setGeometry(const QRect& rect) override;

  void addItem(QLayoutItem* item) override;
  int count() const override { return static_cast<int>(items_.size()); }
  QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;

 private:
  int headerWidth(int sheetWidth) const;
  int buttonHeight() const;
  QSize sizeAround(QSize formSize) const;

  Parts parts_;
  QList<QLayoutItem*> items_;
};

}  // namespace quillbay::cloud
