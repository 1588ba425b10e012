#include "QRCodeView.h"

#include <qrencode.h>

#include <QPainter>
#include <memory>

#include "Accessibility.h"
#include "Localized.h"

namespace quillbay::desktop {
namespace {

constexpr int kQuietModules = 4;
constexpr int kModuleSize = 5;

struct QRCodeFree {
  void operator()(QRcode* code) const { QRcode_free(code); }
};

QImage modulesOf(const QString& text) {
  const std::unique_ptr<QRcode, QRCodeFree> code(
      QRcode_encodeString8bit(text.toUtf8().constData(), 0, QR_ECLEVEL_M));
  if (!code) return {};
  const int size = code->width + (2 * kQuietModules);
  QImage image(size, size, QImage::Format_Grayscale8);
  image.fill(Qt::white);
  for (int y = 0; y < code->width; ++y) {
    for (int x = 0; x < code->width; ++x) {
      const bool isDark = (code->data[(y * code->width) + x] & 1) != 0;
      if (isDark) image.setPixelColor(kQuietModules + x, kQuietModules + y, Qt::black);
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
