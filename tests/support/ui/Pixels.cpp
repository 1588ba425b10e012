#include "Pixels.h"

#include <QHash>
#include <algorithm>
#include <cmath>

namespace quillbay::test {
namespace {

double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return (0.2126 * linear(color.redF())) + (0.7152 * linear(color.greenF())) +
         (0.0722 * linear(color.blueF()));
}

}  // namespace

double contrastOf(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QImage pixelsOf(const QWidget& widget, int margin) {
  QWidget& window = *widget.window();
  const QRect area(widget.mapTo(&window, QPoint()), widget.size());
  return window.grab(area.adjusted(-margin, -margin, margin, margin)).toImage();
}

double contrastIn(const QImage& image) {
  QHash<QRgb, int> counts;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
  }
  const QColor ground = std::max_element(counts.cbegin(), counts.cend()).key();
  double farthest = 1;
  for (const QRgb color : counts.keys()) farthest = std::max(farthest, contrastOf(color, ground));
  return farthest;
}

int changedPixels(const QImage& before, const QImage& after, double contrast) {
  int count = 0;
  for (int y = 0; y < before.height(); ++y) {
    for (int x = 0; x < before.width(); ++x) {
      if (contrastOf(before.pixelColor(x, y), after.pixelColor(x, y)) >= contrast) ++count;
    }
  }
  return count;
}

}  // namespace quillbay::test
