#include "ElidedLabel.h"

#include <QPainter>

#include "ShownText.h"

namespace quillbay::desktop {

ElidedLabel::ElidedLabel(const QString& text) : QLabel(text) {
  setTextFormat(Qt::PlainText);
  setToolTip(tooltip(text));
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 8, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
  painter.setPen(palette().color(foregroundRole()));
  painter.drawText(rect(), Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

}  // namespace quillbay::desktop
