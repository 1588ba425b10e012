#include <QuillbayCloud/ui/ImageView.h>

#include <QAccessibleWidget>
#include <QPainter>
#include <utility>

namespace quillbay::cloud {
namespace {

class AccessibleImage : public QAccessibleWidget {
 public:
  explicit AccessibleImage(ImageView& view)
      : QAccessibleWidget(&view, QAccessible::Graphic), view_(view) {}

  QString text(QAccessible::Text kind) const override {
    const QString description = view_.image().text(ImageView::kDescriptionKey);
    const bool isDescribed = kind == QAccessible::Name && !description.isEmpty();
    return isDescribed ? description : QAccessibleWidget::text(kind);
  }

 private:
  const ImageView& view_;
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
  auto* const view = dynamic_cast<ImageView*>(object);
  return view == nullptr ? nullptr : new AccessibleImage(*view);
}

}  // namespace

ImageView::ImageView() {
  // A factory that is there already is not added again.
  QAccessible::installFactory(makeAccessible);
}

void ImageView::setImage(QImage image) {
  image_ = std::move(image);
  scaled_ = {};
  updateGeometry();
  update();
}

QSize ImageView::sizeHint() const { return image_.deviceIndependentSize().toSize(); }

void ImageView::paintEvent(QPaintEvent* /*event*/) {
  if (image_.isNull()) return;
  QSizeF size = image_.deviceIndependentSize();
  if (size.width() > width() || size.height() > height()) {
    size.scale(QSizeF(this->size()), Qt::KeepAspectRatio);
  }
  const qreal ratio = devicePixelRatioF();
  const QSize pixels = (size * ratio).toSize().expandedTo({1, 1});
  if (scaled_.size() != pixels) {
    // In one step from the original: scaling while painting reads four pixels for each, and loses
    // the rest of a large picture.
    scaled_ = image_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled_.setDevicePixelRatio(ratio);
  }
  const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
  QPainter(this).drawImage(corner, scaled_);
}

}  // namespace quillbay::cloud
