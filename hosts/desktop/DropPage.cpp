#include "DropPage.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "Accessibility.h"
#include "Localized.h"

namespace quillbay::desktop {
namespace {

constexpr int kMargin = 24;
constexpr int kFrameInset = 16;
constexpr int kFrameRadius = 10;

/// Midway between text and ground: it is told from the ground at a contrast of 3:1 and more, on
/// light and on dark.
QColor frameColor(const QPalette& palette) {
  const QColor text = palette.color(QPalette::WindowText);
  const QColor ground = palette.color(QPalette::Window);
  const auto middle = [](int a, int b) { return (a + b) / 2; };
  return {middle(text.red(), ground.red()), middle(text.green(), ground.green()),
          middle(text.blue(), ground.blue())};
}

}  // namespace

DropPage::DropPage(const Actions& actions)
    : undoButton_(*new QPushButton(localized("files.undo"))) {
  setAccessibleRole(*this, QAccessible::Grouping);
  setAccessibleName(localized("drop.title"));
  auto* const title = new QLabel(localized("drop.title"));
  title->setTextFormat(Qt::PlainText);
  title->setAlignment(Qt::AlignCenter);
  title->setWordWrap(true);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.3);
  title->setFont(large);

  auto* const chooseButton = new QPushButton(localized("drop.choose"));
  chooseButton->setAutoDefault(true);
  chooseButton->setDefault(true);
  connect(chooseButton, &QPushButton::clicked, this, actions.choose);
  auto* const sharesButton = new QPushButton(localized("shares.show"));
  sharesButton->setAutoDefault(true);
  connect(sharesButton, &QPushButton::clicked, this, actions.showShares);
  undoButton_.hide();
  connect(&undoButton_, &QPushButton::clicked, this, actions.undoRemoval);

  auto* const layout = new QVBoxLayout(this);
  constexpr int kInset = kFrameInset + kMargin;
  layout->setContentsMargins(kInset, kInset, kInset, kInset);
  layout->setSpacing(kMargin);
  layout->addStretch();
  layout->addWidget(title);
  layout->addWidget(chooseButton, 0, Qt::AlignHCenter);
  layout->addWidget(&undoButton_, 0, Qt::AlignHCenter);
  layout->addStretch();
  layout->addWidget(sharesButton, 0, Qt::AlignHCenter);
  setFocusProxy(chooseButton);
}

void DropPage::setCanUndo(bool canUndo) { undoButton_.setVisible(canUndo); }

void DropPage::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(frameColor(palette()), 2, Qt::DashLine));
  painter.drawRoundedRect(
      QRectF(rect()).adjusted(kFrameInset, kFrameInset, -kFrameInset, -kFrameInset), kFrameRadius,
      kFrameRadius);
}

}  // namespace quillbay::desktop
