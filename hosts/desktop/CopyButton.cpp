#include "CopyButton.h"

#include <QApplication>
#include <QClipboard>
#include <chrono>

#include "Localized.h"

namespace quillbay::desktop {
namespace {

constexpr std::chrono::seconds kCopiedDuration{2};

}  // namespace

CopyButton::CopyButton() : QPushButton(localized("run.copy")) {
  copiedTimer_.setSingleShot(true);
  connect(&copiedTimer_, &QTimer::timeout, this, [this] { setText(localized("run.copy")); });
  // It says something else for a while: it must not change its size.
  const QString copied = localized("run.copied");
  const int extra =
      fontMetrics().horizontalAdvance(copied) - fontMetrics().horizontalAdvance(text());
  setMinimumWidth(sizeHint().width() + qMax(0, extra));
}

void CopyButton::copy(const QString& link) {
  QApplication::clipboard()->setText(link);
  setText(localized("run.copied"));
  copiedTimer_.start(kCopiedDuration);
}

}  // namespace quillbay::desktop
