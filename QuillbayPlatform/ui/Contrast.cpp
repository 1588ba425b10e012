#include <QuillbayPlatform/ui/Contrast.h>

#include <algorithm>
#include <cmath>

namespace quillbay::platform {
namespace {

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return (0.2126 * linear(color.redF())) + (0.7152 * linear(color.greenF())) +
         (0.0722 * linear(color.blueF()));
}

/// `share` is from 0 (all `ground`) to 1 (all `color`).
QColor mixed(const QColor& ground, const QColor& color, float share) {
  const auto mix = [share](float from, float to) { return from + ((to - from) * share); };
  return QColor::fromRgbF(mix(ground.redF(), color.redF()), mix(ground.greenF(), color.greenF()),
                          mix(ground.blueF(), color.blueF()));
}

}  // namespace

double contrastRatio(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor withContrast(const QColor& wanted, const QColor& ground, double ratio) {
  constexpr int kSteps = 20;
  const QColor seen = mixed(ground, wanted, wanted.alphaF());
  const bool isDarkBetter = contrastRatio(Qt::black, ground) > contrastRatio(Qt::white, ground);
  const QColor extreme = isDarkBetter ? Qt::black : Qt::white;
  for (int step = 0; step < kSteps; ++step) {
    const QColor color = mixed(seen, extreme, static_cast<float>(step) / kSteps);
    if (contrastRatio(color, ground) >= ratio) return color;
  }
  return extreme;
}

}  // namespace quillbay::platform
