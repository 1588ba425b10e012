#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QRegularExpression>
#include <QTextDocumentFragment>
#include <QTranslator>

#include "DesktopTest.h"
#include "hosts/desktop/Language.h"
#include "hosts/desktop/ShownText.h"

namespace quillbay::desktop {
namespace {

using LanguageTest = DesktopTest;

TEST_F(LanguageTest, EverythingIsInOneLanguage) {
  // The first text is ours, the second one Qt's.
  const std::tuple<std::vector<std::string>, QString, QString, QString> rows[] = {
      {{"nl_NL"}, "Close", "Cancel", "."},
      {{"ar"}, "Close", "Cancel", "."},
      {{"nl", "de_AT", "en"}, "Schließen", "Abbrechen", ","},
      {{"es_ES"}, "Cerrar", "Cancelar", ","},
      {{"fr_CA"}, "Fermer", "Annuler", ","},
      {{"pl_PL"}, "Zamknij", "Anuluj", ","}};
  const QLocale before;
  for (const auto& [preferred, close, cancel, decimalPoint] : rows) {
    SCOPED_TRACE(preferred.front());
    platform::setPreferredLanguages(preferred);
    QTranslator translator;
    applyLanguage(translator);
    EXPECT_EQ(localized("run.close").remove('&'), close);
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), cancel);
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::LeftToRight);
    EXPECT_EQ(QLocale().decimalPoint(), decimalPoint);
  }
  QLocale::setDefault(before);
}

TEST_F(LanguageTest, TextsTakeTheFormOfTheirNumber) {
  const std::tuple<const char*, QString (*)(), const char*> rows[] = {
      {"es", [] { return extentText(2, 0); }, "2 archivos, 0 bytes"},
      {"fr", [] { return extentText(1, 0); }, "1 fichier, 0 octet"},
      {"fr", [] { return filesText("a", 3, 2); }, "a et 2 autres (2 octets)"},
      {"pl", [] { return extentText(22, 5); }, "22 pliki, 5 bajtów"},
      {"pl", [] { return filesText("a", 5, 3); }, "a i jeszcze 4 pliki (3 bajty)"},
  };
  for (const auto& [language, make, text] : rows) {
    platform::setPreferredLanguages({language});
    EXPECT_EQ(make(), text);
  }
}

/// What a part of a window says, apart from what was typed or came from the service.
QStringList textsOf(const QWidget& part) {
  QStringList texts = {part.accessibleName(), part.property("placeholderText").toString()};
  if (!part.inherits("QLineEdit")) texts.append(part.property("text").toString());
  if (part.isWindow()) texts.append(part.windowTitle());
  if (const auto* const box = qobject_cast<const QComboBox*>(&part)) {
    for (int index = 0; index < box->count(); ++index) texts.append(box->itemText(index));
  }
  if (const auto* const header = qobject_cast<const QHeaderView*>(&part)) {
    for (int section = 0; section < header->count(); ++section) {
      texts.append(header->model()->headerData(section, Qt::Horizontal).toString());
    }
  }
  return texts;
}

/// `text` without what tables in the language of brackets hold, without the product's name, and
/// without the word that Qt has for help.
QString restOf(QString text) {
  if (Qt::mightBeRichText(text)) text = QTextDocumentFragment::fromHtml(text).toPlainText();
  static const QRegularExpression fromTable(R"(\[[^\[\]]*\])");
  while (text.contains(fromTable)) text.remove(fromTable);
  return text.remove("Quillbay Cloud").remove("Help");
}

bool hasRoom(const QWidget& part) {
  if (part.inherits("QLineEdit")) return true;
  if (const auto* const header = qobject_cast<const QHeaderView*>(&part)) {
    for (int section = 0; section < header->count(); ++section) {
      if (header->sectionSize(section) < header->sectionSizeHint(section)) return false;
    }
  }
  const auto* const label = qobject_cast<const QLabel*>(&part);
  if (label != nullptr && label->wordWrap())
    return label->heightForWidth(part.width()) <= part.height();
  return part.width() >= part.minimumSizeHint().width();
}

QList<const QWidget*> visibleParts(const QWidget& window) {
  test::processEvents();
  QList<const QWidget*> parts = window.findChildren<const QWidget*>();
  parts.removeIf([](const QWidget* part) { return !part->isVisible(); });
  return parts << &window;
}

void expectTableTexts(const QWidget& window) {
  static const QRegularExpression letter("[a-zA-Z]");
  for (const QWidget* const part : visibleParts(window)) {
    for (const QString& text : textsOf(*part)) {
      EXPECT_FALSE(restOf(text).contains(letter)) << text.toStdString();
    }
  }
}

void expectRoom(const QWidget& window) {
  for (const QWidget* const part : visibleParts(window)) {
    EXPECT_TRUE(hasRoom(*part)) << part->metaObject()->className()
                                << textsOf(*part).join('|').toStdString();
  }
  EXPECT_LT(window.width(), 1000);
}

TEST_F(LanguageTest, EveryTextIsOfATableAndHasRoomToGrow) {
  platform::setPreferredLanguages({"en_XA"});
  const auto expectPage = [this](const char* key) {
    SCOPED_TRACE(key);
    EXPECT_TRUE(waitUntil([&] { return button(key, window_.get()) != nullptr; }));
    expectTableTexts(*window_);
    expectRoom(*window_);
  };
  open({});
  expectPage("drop.choose");
  const auto gate = service_.hold(Call::store);
  open({folder_.write("1", "one"), folder_.write("2", "two")});
  expectPage("files.add");
  share("run.uploading");
  expectPage("run.cancel");
  window_->close();
  // Its width is bound to the screen's.
  expectTableTexts(*message());
  message()->reject();
  gate->open();
  expectPage("run.again");
  click("shares.show");
  expectPage("shares.back");
}

}  // namespace
}  // namespace quillbay::desktop
