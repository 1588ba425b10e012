#include <QuillbayCloud/ui/ImageView.h>
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

namespace quillbay::cloud {
namespace {

QImage checker(int size) {
  QImage image(size, size, QImage::Format_RGB32);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) image.setPixelColor(x, y, (x + y) % 2 == 0 ? "black" : "white");
  }
  return image;
}

/// What the view shows on the screen with so many pixels for each unit of length.
QImage shown(const QImage& image, qreal pixelRatio = 1) {
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

QRect redArea(const QImage& image) {
  QRect area;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (image.pixelColor(x, y) == QColor(Qt::red)) area |= QRect(x, y, 1, 1);
    }
  }
  return area;
}

TEST(ImageView, ScalesDownInProportionNeverUpAndStaysInTheMiddle) {
  struct Row {
    const char* name;
    QSize image;
    QRect area;
  };
  const Row rows[] = {
      {"wide", {1600, 400}, {0, 30, 80, 20}},
      {"tall", {200, 800}, {30, 0, 20, 80}},
      {"small", {20, 10}, {30, 35, 20, 10}},
      {"a line", {1600, 1}, {0, 39, 80, 1}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    QImage image(row.image, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QRect area = redArea(shown(image));
    EXPECT_EQ(area.size(), row.area.size());
    EXPECT_LE((area.topLeft() - row.area.topLeft()).manhattanLength(), 1);
  }
  EXPECT_EQ(redArea(shown(QImage())), QRect()) << "none is no image";
}

TEST(ImageView, EveryPixelOfTheImageTellsInTheResult) {
  const QImage small = shown(checker(800));
  for (const QPoint& point : {QPoint(20, 20), QPoint(40, 41), QPoint(63, 30)}) {
    EXPECT_NEAR(small.pixelColor(point).lightness(), 127, 16) << "picked, not averaged";
  }
}

TEST(ImageView, IsSharpOnAScreenWithTwiceThePixels) {
  const QImage image = checker(160);
  const QImage result = shown(image, 2).convertToFormat(image.format());
  ASSERT_EQ(result.size(), image.size()) << "the screen has not twice the pixels";
  EXPECT_TRUE(result == image);
}

}  // namespace
}  // namespace quillbay::cloud
