#pragma once

#include <QImage>
#include <QWidget>

namespace quillbay::cloud {

/// Shows an image in the middle, scaled down in proportion where it does not fit, never up. Every
/// pixel of the screen is used, so a large image stays sharp at any scale. For screen readers it is
/// a graphic with the image's own description as its name, or else the widget's accessible name.
/// Main thread.
class ImageView : public QWidget {
 public:
  /// The text of an image (`QImage::text`) that describes it.
  static constexpr const char* kDescriptionKey = "Description";

  ImageView();

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
