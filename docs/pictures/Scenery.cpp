#include "Scenery.h"

#include <QLinearGradient>
#include <QPainter>

namespace quillbay::pictures {

QPalette darkPalette() {
  QPalette palette(QColor(45, 45, 48));
  palette.setColor(QPalette::Base, QColor(30, 30, 32));
  palette.setColor(QPalette::Highlight, QColor(61, 142, 214));
  palette.setColor(QPalette::PlaceholderText, QColor(255, 255, 255, 140));
  return palette;
}

QImage landscape() {
  QImage image(480, 360, QImage::Format_RGB32);
  QPainter painter(&image);
  QLinearGradient sky(0, 0, 0, image.height());
  sky.setColorAt(0, QColor(70, 130, 200));
  sky.setColorAt(1, QColor(250, 205, 150));
  painter.fillRect(image.rect(), sky);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(255, 240, 200));
  painter.drawEllipse(QPoint(350, 150), 45, 45);
  painter.setBrush(QColor(60, 80, 100));
  painter.drawPolygon(QPolygon({{0, 300}, {140, 150}, {260, 300}}));
  painter.setBrush(QColor(40, 60, 75));
  painter.drawPolygon(QPolygon({{120, 360}, {330, 190}, {480, 340}, {480, 360}}));
  painter.drawRect(0, 295, 480, 65);
  return image;
}

}  // namespace quillbay::pictures
