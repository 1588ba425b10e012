#include <QuillbayCloud/ui/ImageView.h>

#include <QGuiApplication>
#include <QScreen>

#include "UITest.h"

namespace quillbay::cloud {
namespace {

/// What the view shows of red and black columns by turns, on the screen with so many pixels for
/// each unit of length.
QImage shown(const QSize& size, qreal pixelRatio) {
  QImage image(size, QImage::Format_RGB32);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, x % 2 == 0 ? "red" : "black");
  }
  ImageView view;
  view.setFixedSize(80, 80);
  view.setImage(image);
  for (const QScreen* const screen : QGuiApplication::screens()) {
    if (screen->devicePixelRatio() == pixelRatio) view.move(screen->geometry().center());
  }
  view.show();
  EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
  return view.grab().toImage();
}

TEST(ImageView, ScalesDownInProportionNeverUpAndStaysInTheMiddleWithEveryPixelCounted) {
  const std::tuple<const char*, QSize, qreal, QRect, int> rows[] = {
      {"wide", {1600, 400}, 1, {0, 30, 80, 20}, 128},
      {"tall", {200, 800}, 1, {30, 0, 20, 80}, 128},
      {"small", {20, 10}, 1, {30, 35, 20, 10}, 255},
      {"a line", {1600, 1}, 1, {0, 39, 80, 1}, 128},
      {"every pixel on a sharp screen", {160, 160}, 2, {0, 0, 160, 160}, 255},
  };
  const QColor ground = shown({}, 1).pixelColor(0, 0);
  for (const auto& [name, size, pixelRatio, expected, red] : rows) {
    SCOPED_TRACE(name);
    const QImage result = shown(size, pixelRatio);
    QRect area;
    for (int y = 0; y < result.height(); ++y) {
      for (int x = 0; x < result.width(); ++x) {
        if (result.pixelColor(x, y) != ground) area |= QRect(x, y, 1, 1);
      }
    }
    EXPECT_EQ(area.size(), expected.size());
    EXPECT_LE((area.topLeft() - expected.topLeft()).manhattanLength(), 1);
    // An even column, away from the edges.
    const QColor color = result.pixelColor(area.left() + 8, area.center().y());
    EXPECT_NEAR(color.red(), red, 16) << "picked, not averaged";
  }
}

}  // namespace
}  // namespace quillbay::cloud
