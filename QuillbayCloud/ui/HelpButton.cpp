#include <QuillbayCloud/ui/HelpButton.h>

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>

namespace quillbay::cloud {
namespace {

constexpr int kDiameter = 24;
// Room around the disk for the ring that shows the focus.
constexpr int kRingWidth = 2;

/// The word that the platform writes on its help buttons, in the user's language.
QString platformHelpText() {
  const QDialogButtonBox box(QDialogButtonBox::Help);
  return box.button(QDialogButtonBox::Help)->text().remove('&');
}

}  // namespace

HelpButton::HelpButton() {
  setFocusPolicy(Qt::StrongFocus);
  const QString name = platformHelpText();
  setAccessibleName(name);
  setToolTip(name);
}

QSize HelpButton::sizeHint() const {
  const int size = kDiameter + (2 * kRingWidth);
  return {size, size};
}

void HelpButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QRectF disk(0, 0, kDiameter, kDiameter);
  disk.moveCenter(QRectF(rect()).center());

  const bool isActive = isDown() || underMouse();
  painter.setPen(QPen(palette().color(QPalette::Mid), 1));
  painter.setBrush(palette().color(isActive ? QPalette::Midlight : QPalette::Button));
  painter.drawEllipse(disk.adjusted(0.5, 0.5, -0.5, -0.5));
  if (hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), kRingWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(disk);
  }

  QFont bold = font();
  bold.setBold(true);
  painter.setFont(bold);
  painter.setPen(palette().color(QPalette::ButtonText));
  painter.drawText(disk, Qt::AlignCenter, QStringLiteral("?"));
}

void HelpButton::enterEvent(QEnterEvent* event) {
  QAbstractButton::enterEvent(event);
  update();
}

void HelpButton::leaveEvent(QEvent* event) {
  QAbstractButton::leaveEvent(event);
  update();
}

void HelpButton::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!isReturn) return QAbstractButton::keyPressEvent(event);
  // As on every other button that has the focus.
  if (!event->isAutoRepeat()) click();
}

}  // namespace quillbay::cloud
