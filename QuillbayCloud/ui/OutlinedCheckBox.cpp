#include <QuillbayCloud/ui/OutlinedCheckBox.h>
#include <QuillbayPlatform/ui/Contrast.h>

#include <QPainter>
#include <QStyleOptionButton>

namespace quillbay::cloud {

void OutlinedCheckBox::paintEvent(QPaintEvent* event) {
  QCheckBox::paintEvent(event);
  QStyleOptionButton option;
  initStyleOption(&option);
  const QRect box = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
  QPainter painter(this);
  painter.setPen(platform::withContrast(palette().color(QPalette::PlaceholderText),
                                        palette().color(QPalette::Window),
                                        platform::kOutlineContrast));
  painter.drawRect(box.adjusted(0, 0, -1, -1));
}

}  // namespace quillbay::cloud
