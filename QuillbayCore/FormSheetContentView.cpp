#include <QuillbayCore/FormSheetContentView.h>
#include <QuillbayPlatform/ui/Contrast.h>

#include <QEvent>
#include <QPainter>

namespace quillbay::core {
namespace {

constexpr int kRingGap = 1;
constexpr int kRingWidth = 2;
constexpr qreal kRingRadius = 4;

}  // namespace

FormSheetContentView::FormSheetContentView() {
  setBackgroundRole(QPalette::Window);
  setAutoFillBackground(true);
}

void FormSheetContentView::addFocusRing(QWidget& control) {
  ringedControls_.append(&control);
  control.installEventFilter(this);
}

bool FormSheetContentView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  return QWidget::eventFilter(watched, event);
}

void FormSheetContentView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(
      QPen(platform::withContrast(palette().color(QPalette::Highlight),
                                  palette().color(QPalette::Window), platform::kOutlineContrast),
           kRingWidth));
  for (const QWidget* const control : ringedControls_) {
    if (!control->hasFocus()) continue;
    const QRectF area(control->mapTo(this, QPoint()), control->size());
    // The pen draws to both sides of its line.
    const qreal distance = kRingGap + (kRingWidth / 2.0);
    painter.drawRoundedRect(area.adjusted(-distance, -distance, distance, distance), kRingRadius,
                            kRingRadius);
  }
}

}  // namespace quillbay::core
