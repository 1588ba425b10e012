#include <QuillbayCloud/ui/ShareViewController.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QLinearGradient>
#include <QPainter>
#include <QStyleFactory>

// Draws the share sheet as an image: for the documents, and to look at after a change.

namespace {

using namespace quillbay;

QPalette darkPalette() {
  QPalette palette(QColor(45, 45, 48));
  palette.setColor(QPalette::Base, QColor(30, 30, 32));
  palette.setColor(QPalette::Highlight, QColor(61, 142, 214));
  palette.setColor(QPalette::PlaceholderText, QColor(255, 255, 255, 140));
  return palette;
}

/// A landscape, as somebody may want to share.
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

}  // namespace

int main(int argumentCount, char** arguments) {
  QApplication app(argumentCount, arguments);
  QCommandLineParser options;
  options.addOption({"language", "Language of the texts.", "tag", "en"});
  options.addOption({"dark", "Light letters on dark ground."});
  options.addPositionalArgument("file", "The image to write.");
  options.process(app);

  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (options.isSet("dark")) QApplication::setPalette(darkPalette());
  platform::setPreferredLanguages({options.value("language").toStdString()});

  const auto sheet = cloud::ShareViewController::create(
      {cloud::SessionConfiguration("Lake at dawn", std::nullopt, std::nullopt, "secret", true),
       landscape()});
  QWidget& view = sheet->view();
  view.adjustSize();
  view.show();
  view.activateWindow();
  // The focus is set in a turn of its own.
  QApplication::processEvents();
  QApplication::processEvents();
  return view.grab().save(options.positionalArguments().value(0)) ? 0 : 1;
}
