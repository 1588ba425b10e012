#include <QuillbayCloud/ui/HelpButton.h>
#include <QuillbayPlatform/ui/Contrast.h>

#include <QDialogButtonBox>
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

QPalette::ColorRole HelpButton::diskRole() const {
  if (isDown()) return QPalette::Mid;
  return underMouse() ? QPalette::Midlight : QPalette::Button;
}

void HelpButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QRectF disk(0, 0, kDiameter, kDiameter);
  disk.moveCenter(QRectF(rect()).center());

  const auto outline = [this](QPalette::ColorRole role) {
    return platform::withContrast(palette().color(role), palette().color(QPalette::Window),
                                  platform::kOutlineContrast);
  };
  painter.setPen(QPen(outline(QPalette::Mid), 1));
  painter.setBrush(palette().color(diskRole()));
  painter.drawEllipse(disk.adjusted(0.5, 0.5, -0.5, -0.5));
  if (hasFocus()) {
    painter.setPen(QPen(outline(QPalette::Highlight), kRingWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(disk.adjusted(-1, -1, 1, 1));
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

}  // namespace quillbay::cloud
