#pragma once

#include <QImage>
#include <QWidget>

namespace quillbay::cloud {

/// Shows an image in the middle, scaled down in proportion where it does not fit, never up. Every
/// pixel of the screen is used, so a large image stays sharp at any scale. Main thread.
class ImageView : public QWidget {
 public:
  const QImage& image() const { return image_; }
  /// A null image shows nothing and takes no room.
  void setImage(QImage image);

  /// The image's own size.
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QImage image_;
  /// The image as it was last painted.
  QImage scaled_;
};

}  // namespace quillbay::cloud
