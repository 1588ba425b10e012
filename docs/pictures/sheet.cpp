#include <QuillbayCloud/ui/ShareViewController.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QStyleFactory>

#include "Scenery.h"

// Draws the share sheet as an image: for the documents, and to look at after a change.

using namespace quillbay;

int main(int argumentCount, char** arguments) {
  QApplication app(argumentCount, arguments);
  QCommandLineParser options;
  options.addOption({"language", "Language of the texts.", "tag", "en"});
  options.addOption({"dark", "Light letters on dark ground."});
  options.addPositionalArgument("file", "The image to write.");
  options.process(app);

  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (options.isSet("dark")) QApplication::setPalette(pictures::darkPalette());
  platform::setPreferredLanguages({options.value("language").toStdString()});

  const auto sheet = cloud::ShareViewController::create(
      {cloud::SessionConfiguration("Lake at dawn", std::nullopt, std::nullopt, "secret", true),
       pictures::landscape()});
  QWidget& view = sheet->view();
  view.adjustSize();
  view.show();
  view.activateWindow();
  // The focus is set in a turn of its own.
  QApplication::processEvents();
  QApplication::processEvents();
  return view.grab().save(options.positionalArguments().value(0)) ? 0 : 1;
}
