#include "Language.h"

#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <string>

#include "QuillbayDesktopStrings.h"

namespace quillbay::desktop {
namespace {

/// A tag such as "de_AT".
std::string chosenLanguage() {
  const auto tables = strings::QuillbayDesktop();
  for (const std::string& tag : platform::preferredLanguages()) {
    if (tables.contains(tag.substr(0, tag.find('_')))) return tag;
  }
  return "en";
}

}  // namespace

void applyLanguage(QTranslator& translator) {
  const std::string language = chosenLanguage();
  platform::setPreferredLanguages({language});
  const QLocale locale(QString::fromStdString(language));
  QLocale::setDefault(locale);
  const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
  if (translator.load(locale, "qtbase", "_", folder))
    QCoreApplication::installTranslator(&translator);
  QGuiApplication::setLayoutDirection(locale.textDirection());
}

}  // namespace quillbay::desktop
