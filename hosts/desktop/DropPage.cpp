#include "DropPage.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "Localized.h"

namespace quillbay::desktop {
namespace {

constexpr int kMargin = 24;
constexpr int kFrameInset = 16;
constexpr int kFrameRadius = 10;

}  // namespace

DropPage::DropPage(std::function<void()> choose) {
  auto* const title = new QLabel(localized("drop.title"));
  title->setTextFormat(Qt::PlainText);
  title->setAlignment(Qt::AlignCenter);
  title->setWordWrap(true);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.3);
  title->setFont(large);

  auto* const button = new QPushButton(localized("drop.choose"));
  button->setAutoDefault(true);
  button->setDefault(true);
  connect(button, &QPushButton::clicked, this, std::move(choose));

  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kFrameInset + kMargin, kFrameInset + kMargin, kFrameInset + kMargin,
                             kFrameInset + kMargin);
  layout->setSpacing(kMargin);
  layout->addStretch();
  layout->addWidget(title);
  layout->addWidget(button, 0, Qt::AlignHCenter);
  layout->addStretch();
  setFocusProxy(button);
}

void DropPage::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(palette().color(QPalette::Mid), 2, Qt::DashLine));
  painter.drawRoundedRect(
      QRectF(rect()).adjusted(kFrameInset, kFrameInset, -kFrameInset, -kFrameInset), kFrameRadius,
      kFrameRadius);
}

}  // namespace quillbay::desktop
