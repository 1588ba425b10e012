#include "QRCodeView.h"

#include <QPainter>
#include <cstddef>

#include "Accessibility.h"
#include "Localized.h"
#include "hosts/common/MatrixCode.h"

namespace quillbay::desktop {
namespace {

constexpr int kModuleSize = 5;

QImage modulesOf(const QString& text) {
  const auto code = host::MatrixCode::of(text.toStdString());
  if (!code) return {};
  const int size = static_cast<int>(code->size());
  QImage image(size, size, QImage::Format_Grayscale8);
  image.fill(Qt::white);
  for (std::size_t row = 0; row < code->size(); ++row) {
    for (std::size_t column = 0; column < code->size(); ++column) {
      if (!code->isDark(row, column)) continue;
      image.setPixelColor(static_cast<int>(column), static_cast<int>(row), Qt::black);
    }
  }
  return image;
}

}  // namespace

QRCodeView::QRCodeView() {
  setAccessibleRole(*this, QAccessible::Graphic);
  setAccessibleName(localized("run.qr-code.name"));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void QRCodeView::setText(const QString& text) {
  modules_ = modulesOf(text);
  updateGeometry();
  update();
}

QSize QRCodeView::sizeHint() const { return modules_.size() * kModuleSize; }

void QRCodeView::paintEvent(QPaintEvent* /*event*/) { QPainter(this).drawImage(rect(), modules_); }

}  // namespace quillbay::desktop
